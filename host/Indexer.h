// Bringing the index of one agent's store up to date.
//
// First run: every object the walk gives is opened, its body read with its header block, both
// read as a person reads them (MessageLoader), and its record, times, decoded fields and text
// are stored. Later runs ask keepObject once per stored mailbox (all records of a mailbox
// share its stamp) and compare the mailbox file's state: an unchanged mailbox is not read
// again. The store is walked only when a mailbox changed or the tree below the mail directory
// did (a mailbox may have been added); then the bytes of each record are hashed: a stored
// object whose bytes stand at the same place or turn up at another (a message further on in
// a mailbox after a deletion, a mailbox renamed or moved) keeps its id and is not read again;
// only new records are opened, and stored records that the walk did not give again are
// dropped.
#pragma once

#include "host/IndexDb.h"
#include "host/MessageLoader.h"
#include "host/StoreTree.h"
#include "host/Terminal.h"
#include "include/tuk/AgentAbi.h"

#include <cstdint>
#include <string>
#include <vector>

struct MailboxReport {
  std::string path;
  uint64_t added = 0, unchanged = 0, removed = 0, failed = 0;
  uint64_t moved = 0; // found again at another place: kept, not read
  uint64_t raw = 0;   // of those added: indexed from the raw body, the MIME being unreadable
};

struct IndexSummary {
  uint64_t added = 0, unchanged = 0, moved = 0, removed = 0, failed = 0, raw = 0;
  uint64_t mailboxesRead = 0, mailboxesUnchanged = 0;
  uint64_t bytes = 0;  // of the messages read
  bool walked = false; // whether the store was walked
  uint64_t walkedObjects = 0;
  std::vector<MailboxReport> mailboxes; // those read, in the order of the walk
};

// Updates `agent`'s objects in `db`, inside the caller's transaction, which it commits and
// begins again every few seconds. Database errors stop the run; the caller finds them in
// db.ok().
void updateIndex(const AgentEntryTable &entries, Framing framing, IndexDb &db, int64_t agent,
                 const StoreTree &tree, ProgressBar &progress, IndexSummary &summary);
