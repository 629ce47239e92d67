// The damaged-store fixture: a private registry, the loaded agent and a lenient host walk.
#include "tests/hostile/HostileStore.h"

#include "cmn/Registry.h"
#include "tests/support/AgentSession.h"

#include <cstdlib>
#include <cstring>

const char kEudoraKey[] = "Software\\Tuk\\Agents\\MHEudora";
const char kInternetKey[] = "Software\\Tuk\\Agents\\MHInternet";
const char kNetscapeKey[] = "Software\\Tuk\\Agents\\MHNetscape";
const char kPegasusKey[] = "Software\\Tuk\\Agents\\MHPegasus";

std::string eudoraMessage(const std::string &subject, const std::string &body) {
  return "From ???@??? Mon\r\nSubject: " + subject + "\r\nDate: 15 Jan 1998 10:00:00\r\n\r\n" +
         body;
}

namespace {

KeptRecord keep(const ObjectRecord *record) {
  return {record->path, record->offset, record->length, record->checksum, record->mailboxStamp};
}

} // namespace

void HostileStoreTest::SetUp() {
  setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
  setenv("TZ", "UTC", 1);
  mail = dir.file("mail");
  makeDirs(mail);
  startAgent(kEudoraKey);
}

void HostileStoreTest::TearDown() {
  if (started_)
    entries().terminateAgent();
}

void HostileStoreTest::startAgent(const char *key, LogSink sink) {
  if (started_)
    entries().terminateAgent();
  ASSERT_NE(0, SetRegValue(key, "MailPath", CString(mail.c_str())));
  agent_.init(key, "EN", sink);
  started_ = true;
}

int32_t HostileStoreTest::findFirst(AgentHandle &search, KeptRecord &record) {
  RecordBuffer buffer;
  int32_t time = 0;
  const int32_t status = entries().findFirstObjectHandle(0, &search, buffer.get(), &time);
  if (status == StatusOk)
    record = keep(buffer.get());
  return status;
}

int32_t HostileStoreTest::findNext(AgentHandle search, KeptRecord &record) {
  RecordBuffer buffer;
  int32_t time = 0;
  const int32_t status = entries().findNextObjectHandle(search, buffer.get(), &time);
  if (status == StatusOk)
    record = keep(buffer.get());
  return status;
}

StoreWalk HostileStoreTest::walk(size_t limit) {
  StoreWalk result;
  AgentHandle search = 0;
  KeptRecord record;
  result.firstStatus = result.lastStatus = findFirst(search, record);
  if (result.firstStatus != StatusOk)
    return result;
  result.records.push_back(record);
  while (result.records.size() < limit &&
         (result.lastStatus = findNext(search, record)) == StatusOk)
    result.records.push_back(record);
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  return result;
}

int32_t HostileStoreTest::reopen(const KeptRecord &record, std::string *body) {
  RecordBuffer buffer(record.path, record.offset, record.length, record.checksum, record.stamp);
  AgentHandle object = 0;
  int32_t time = 0;
  const int32_t status = entries().openObject(&object, buffer.get(), &time);
  if (status != StatusOk)
    return status;
  char piece[4096];
  uint32_t got = 0;
  while (entries().readObject(object, piece, sizeof piece, &got) == StatusOk)
    if (body)
      body->append(piece, got);
  EXPECT_EQ(StatusOk, entries().closeObject(object));
  return status;
}
