// The index's writes: agents, mailboxes and objects with their text.
#include "host/IndexDb.h"

#include "host/IndexStatements.h"
#include "host/MessageLoader.h"

std::vector<std::string> IndexDb::agentKeys() {
  Statement &select = prepared(statements_->agentKeys, "SELECT key FROM agents ORDER BY id");
  std::vector<std::string> keys;
  while (select.step())
    keys.push_back(select.text(0));
  return keys;
}

int64_t IndexDb::agentId(const std::string &agentKey) {
  Statement &select = prepared(statements_->findAgent, "SELECT id FROM agents WHERE key = ?");
  if (select.bind(1, agentKey).step())
    return select.integer(0);
  Statement &insert = prepared(statements_->insertAgent, "INSERT INTO agents(key) VALUES(?)");
  if (!insert.bind(1, agentKey).run())
    return 0;
  return sqlite3_last_insert_rowid(connection_->handle());
}

int64_t IndexDb::treeState(int64_t agent) {
  Statement &select =
      prepared(statements_->treeState, "SELECT tree_state FROM agents WHERE id = ?");
  return select.bind(1, agent).step() ? select.integer(0) : 0;
}

void IndexDb::setTreeState(int64_t agent, int64_t state) {
  prepared(statements_->setTreeState, "UPDATE agents SET tree_state = ? WHERE id = ?")
      .bind(1, state)
      .bind(2, agent)
      .run();
}

void IndexDb::setIndexedAt(int64_t agent, int64_t seconds) {
  prepared(statements_->setIndexedAt, "UPDATE agents SET indexed_at = ? WHERE id = ?")
      .bind(1, seconds)
      .bind(2, agent)
      .run();
}

std::vector<StoredMailbox> IndexDb::mailboxes(int64_t agent) {
  Statement &select = prepared(statements_->mailboxes, R"sql(
    SELECT m.id, m.path, m.file_state, (SELECT count(*) FROM objects WHERE mailbox = m.id),
           (SELECT record FROM objects WHERE mailbox = m.id ORDER BY stamp DESC LIMIT 1)
    FROM mailboxes m WHERE m.agent = ? ORDER BY m.id)sql");
  std::vector<StoredMailbox> found;
  select.bind(1, agent);
  while (select.step()) {
    StoredMailbox mailbox;
    mailbox.id = select.integer(0);
    mailbox.path = select.text(1);
    mailbox.fileState = select.integer(2);
    mailbox.objectCount = select.integer(3);
    mailbox.record = select.blob(4);
    found.push_back(std::move(mailbox));
  }
  return found;
}

int64_t IndexDb::addMailbox(int64_t agent, const std::string &path) {
  Statement &insert =
      prepared(statements_->insertMailbox, "INSERT INTO mailboxes(agent, path) VALUES(?, ?)");
  if (!insert.bind(1, agent).bind(2, path).run())
    return 0;
  return sqlite3_last_insert_rowid(connection_->handle());
}

void IndexDb::setFileState(int64_t mailbox, int64_t state) {
  prepared(statements_->setFileState, "UPDATE mailboxes SET file_state = ? WHERE id = ?")
      .bind(1, state)
      .bind(2, mailbox)
      .run();
}

void IndexDb::removeMailbox(int64_t mailbox) {
  prepared(statements_->deleteMailbox, "DELETE FROM mailboxes WHERE id = ?").bind(1, mailbox).run();
}

std::vector<StoredObject> IndexDb::objects(int64_t mailbox) {
  Statement &select =
      prepared(statements_->objects, "SELECT id, offset, length, checksum, record, hash "
                                     "FROM objects WHERE mailbox = ? ORDER BY id");
  std::vector<StoredObject> found;
  select.bind(1, mailbox);
  while (select.step()) {
    StoredObject object;
    object.id = select.integer(0);
    object.offset = static_cast<uint32_t>(select.integer(1));
    object.length = static_cast<uint32_t>(select.integer(2));
    object.checksum = static_cast<uint32_t>(select.integer(3));
    object.record = select.blob(4);
    object.hash = static_cast<uint64_t>(select.integer(5));
    found.push_back(std::move(object));
  }
  return found;
}

int64_t IndexDb::addObject(int64_t mailbox, const RecordBuffer &record, int32_t agentTime,
                           uint64_t hash, const ReadMessage &message, const std::string &body) {
  Statement &insert =
      prepared(statements_->insertObject,
               "INSERT INTO objects(mailbox, offset, length, checksum, time, stamp, record, date, "
               "decoded, message_id, in_reply_to, refs, hash, subject, sender) "
               "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert.bind(1, mailbox)
      .bind(2, record->offset)
      .bind(3, record->length)
      .bind(4, record->checksum)
      .bind(5, agentTime)
      .bind(6, record->mailboxStamp)
      .bindBlob(7, record.bytes(), record.filledSize());
  if (message.hasDate)
    insert.bind(8, message.date);
  if (!insert.bind(9, message.decoded ? 1 : 0)
           .bindStatic(10, message.messageId.data(), message.messageId.size())
           .bindStatic(11, message.inReplyTo.data(), message.inReplyTo.size())
           .bindStatic(12, message.references.data(), message.references.size())
           .bind(13, static_cast<int64_t>(hash))
           .bindStatic(14, message.subject.data(), message.subject.size())
           .bindStatic(15, message.from.data(), message.from.size())
           .run())
    return 0;
  const int64_t id = sqlite3_last_insert_rowid(connection_->handle());
  prepared(statements_->widenRun,
           "INSERT INTO id_runs(run, newest) VALUES(?, ?) "
           "ON CONFLICT(run) DO UPDATE SET newest = max(newest, excluded.newest)")
      .bind(1, id >> kIdRunBits)
      .bind(2, message.hasDate ? message.date : kNoDate)
      .run();
  Statement &text = prepared(statements_->insertText,
                             "INSERT INTO texts(rowid, body, subject, \"from\", \"to\", cc, "
                             "attachment) VALUES(?, ?, ?, ?, ?, ?, ?)");
  return insertText(text, id, message, body) ? id : 0;
}

bool IndexDb::insertText(Statement &insert, int64_t object, const ReadMessage &message,
                         const std::string &body) {
  const std::string attachments = attachmentNames(message);
  return insert.bind(1, object)
      .bindStatic(2, body.data(), body.size())
      .bindStatic(3, message.subject.data(), message.subject.size())
      .bindStatic(4, message.from.data(), message.from.size())
      .bindStatic(5, message.to.data(), message.to.size())
      .bindStatic(6, message.cc.data(), message.cc.size())
      .bindStatic(7, attachments.data(), attachments.size())
      .run();
}

void IndexDb::replaceRecord(int64_t object, const RecordBuffer &record) {
  prepared(statements_->replaceRecord, "UPDATE objects SET stamp = ?, record = ? WHERE id = ?")
      .bind(1, record->mailboxStamp)
      .bindBlob(2, record.bytes(), record.filledSize())
      .bind(3, object)
      .run();
}

void IndexDb::moveObject(int64_t object, int64_t mailbox, const RecordBuffer &record) {
  prepared(statements_->moveObject, "UPDATE objects SET mailbox = ?, offset = ?, stamp = ?, "
                                    "record = ? WHERE id = ?")
      .bind(1, mailbox)
      .bind(2, record->offset)
      .bind(3, record->mailboxStamp)
      .bindBlob(4, record.bytes(), record.filledSize())
      .bind(5, object)
      .run();
}

void IndexDb::removeObject(int64_t object) {
  prepared(statements_->deleteObject, "DELETE FROM objects WHERE id = ?").bind(1, object).run();
}

int64_t IndexDb::staleTexts() {
  // One row of texts_docsize per row of the full-text table.
  Statement select(*connection_, "SELECT (SELECT count(*) FROM texts_docsize) - "
                                 "(SELECT count(*) FROM objects)");
  return select.step() ? select.integer(0) : 0;
}

int64_t IndexDb::objectCount() {
  Statement select(*connection_, "SELECT count(*) FROM objects");
  return select.step() ? select.integer(0) : 0;
}

void IndexDb::beginTextRebuild() {
  connection_->exec("DROP TABLE IF EXISTS texts_new");
  createTexts("texts_new");
}

void IndexDb::eachObject(const std::string &agentKey,
                         const std::function<void(const IndexedObject &)> &take) {
  Statement select(*connection_, R"sql(
    SELECT o.id, o.record FROM objects o JOIN mailboxes m ON m.id = o.mailbox
      JOIN agents a ON a.id = m.agent WHERE a.key = ? ORDER BY o.id)sql");
  select.bind(1, agentKey);
  IndexedObject object;
  object.agentKey = agentKey;
  while (select.step()) {
    object.id = select.integer(0);
    object.record = select.blob(1);
    take(object);
  }
}

void IndexDb::addRebuiltText(int64_t object, const ReadMessage &message, const std::string &body) {
  insertText(prepared(statements_->insertRebuiltText,
                      "INSERT INTO texts_new(rowid, body, subject, \"from\", \"to\", cc, "
                      "attachment) VALUES(?, ?, ?, ?, ?, ?, ?)"),
             object, message, body);
}

void IndexDb::forgetObject(int64_t object) {
  prepared(statements_->forgetObject, "UPDATE mailboxes SET file_state = 0 WHERE id = "
                                      "(SELECT mailbox FROM objects WHERE id = ?)")
      .bind(1, object)
      .run();
  removeObject(object);
}

void IndexDb::finishTextRebuild() {
  // A table goes only while no statement of the connection is running; and the statements of
  // the old table go with it.
  statements_.reset(new Statements);
  connection_->exec("DROP TABLE texts; ALTER TABLE texts_new RENAME TO texts");
}
