// Hosts that call the entries out of turn: handles closed twice, made up, overwritten or from
// an ended search, null pointers in every pointer argument, and calls on an agent without a
// store or around its life. Each gets its entry's failure status, and nothing behind a handle
// that is not live is touched.
#include "store/MailMsg.h"
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include <algorithm>
#include <memory>

namespace {
// Every object entry on `object`: each answers -4 and writes nothing.
void expectNoObject(const AgentEntryTable &e, AgentHandle object) {
  char buffer[64];
  uint32_t got = 7, used = 7, count = 7, position = 7;
  EXPECT_EQ(StatusBadSignature, e.readObject(object, buffer, sizeof buffer, &got));
  EXPECT_EQ(StatusBadSignature,
            e.getObjectProperties(object, buffer, sizeof buffer, &used, &count));
  EXPECT_EQ(StatusBadSignature, e.seekObject(object, 0, 0));
  EXPECT_EQ(StatusBadSignature, e.tellObject(object, &position));
  EXPECT_EQ(StatusBadSignature, e.closeObject(object));
  EXPECT_EQ((std::vector<uint32_t>{7, 7, 7, 7}),
            (std::vector<uint32_t>{got, used, count, position}));
}

// An agent without a store, whether its key names no client or its life has ended, answers
// every entry as empty and leaves the handles it is given alone.
void expectNoStore(const AgentEntryTable &e) {
  RecordBuffer buffer;
  AgentHandle handle = 77;
  int32_t time = 0, small = 5, large = 5;
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &handle, buffer.get(), &time));
  EXPECT_EQ(StatusNoMoreObjects, e.findNextObjectHandle(handle, buffer.get(), &time));
  EXPECT_EQ(StatusOk, e.closeFindObjectHandle(handle));
  EXPECT_EQ(StatusMailFileFailed, e.openObject(&handle, buffer.get(), &time));
  EXPECT_EQ(77u, handle);
  EXPECT_EQ(StatusBadSignature, e.closeObject(handle));
  EXPECT_EQ(StatusOpenFailed, e.RunObject(buffer.get()));
  EXPECT_EQ(0, e.getObjectIcon(0, &small, &large));
  EXPECT_EQ(0, small + large);
  EXPECT_EQ(1, e.Validate(0));
  EXPECT_EQ(0, e.propPageClose());
}

class HostCallsTest : public AgentStoreTest {
protected:
  void SetUp() override {
    AgentStoreTest::SetUp();
    mailbox("In", eudoraMessage("one") + eudoraMessage("two"));
    AgentHandle search = 0;
    ASSERT_EQ(StatusOk, findFirst(search, record));
    EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  }
  AgentHandle open() {
    AgentHandle object = 0;
    EXPECT_EQ(StatusOk, openRecord(entries(), record, object));
    return object;
  }
  // The search entries on `search`: no more objects, and closing deletes nothing.
  void expectNoSearch(AgentHandle search) {
    KeptRecord kept;
    EXPECT_EQ(StatusNoMoreObjects, findNext(search, kept));
    EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  }
  KeptRecord record;
};

TEST_F(HostCallsTest, HandlesThatAreNotLive) {
  startLogging();
  const AgentHandle closed = open();
  EXPECT_EQ(StatusOk, entries().closeObject(closed)); // its memory is gone
  AgentHandle search = 0;
  KeptRecord kept;
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  // Memory that looks like a message, signature and all, is still no object.
  auto fake = std::make_unique<uint32_t[]>(64);
  std::fill(fake.get(), fake.get() + 64, kMessageSignature);
  const AgentHandle made = reinterpret_cast<AgentHandle>(fake.get());
  for (const AgentHandle handle :
       {closed, search, AgentHandle{0}, AGENT_INVALID_HANDLE, AgentHandle{0x1234}, made}) {
    expectNoObject(entries(), handle);
    expectNoSearch(handle);
  }
  // A live search is no object, and a live object no search.
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  expectNoObject(entries(), search);
  const AgentHandle other = open();
  expectNoSearch(other);
  // A live object whose signature was overwritten is refused, and logged, until it is back.
  uint32_t &signature = reinterpret_cast<CMailMsg *>(other)->signature;
  signature = 0x12345678;
  expectNoObject(entries(), other);
  EXPECT_TRUE(CapturedLog::contains(".\\mhmail|Bad signature: 0x12345678"));
  signature = kMessageSignature;
  EXPECT_EQ(StatusOk, entries().closeObject(other));
  // A search that a 122 of findNextObjectHandle ended.
  RecordBuffer small(8);
  int32_t time = 0;
  EXPECT_EQ(StatusBufferTooSmall, entries().findNextObjectHandle(search, small.get(), &time));
  expectNoSearch(search);
  // An exhausted search stays live until it is closed.
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  ASSERT_EQ(StatusOk, findNext(search, kept));
  EXPECT_EQ(StatusNoMoreObjects, findNext(search, kept));
  EXPECT_EQ(StatusNoMoreObjects, findNext(search, kept));
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
}

TEST_F(HostCallsTest, NullInEveryPointerArgument) {
  const AgentEntryTable &e = entries();
  RecordBuffer buffer;
  RecordBuffer kept(record.path, record.offset, record.length, record.checksum);
  AgentHandle handle = 5;
  int32_t time = 0;
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, nullptr, buffer.get(), &time));
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &handle, nullptr, &time));
  EXPECT_EQ(5u, handle);
  ASSERT_EQ(StatusOk, e.findFirstObjectHandle(0, &handle, buffer.get(), nullptr));
  EXPECT_EQ(StatusNoMoreObjects, e.findNextObjectHandle(handle, nullptr, &time));
  buffer->size = static_cast<uint32_t>(buffer.capacity());
  EXPECT_EQ(StatusOk, e.findNextObjectHandle(handle, buffer.get(), nullptr));
  EXPECT_EQ(StatusOk, e.closeFindObjectHandle(handle));
  EXPECT_EQ(0, e.keepObject(nullptr, 0));
  EXPECT_EQ(StatusMailFileFailed, e.openObject(nullptr, kept.get(), &time));
  EXPECT_EQ(StatusMailFileFailed, e.openObject(&handle, nullptr, &time));
  ASSERT_EQ(StatusOk, e.openObject(&handle, kept.get(), nullptr));
  uint32_t got = 0, used = 0, count = 0;
  char bytes[512];
  EXPECT_EQ(StatusEndOfData, e.readObject(handle, nullptr, 100, &got));
  EXPECT_EQ(StatusOk, e.readObject(handle, bytes, 2, nullptr));
  EXPECT_EQ(StatusPropertiesTooLarge, e.getObjectProperties(handle, nullptr, 100, &used, &count));
  EXPECT_EQ(StatusOk, e.getObjectProperties(handle, bytes, sizeof bytes, nullptr, nullptr));
  EXPECT_EQ(StatusOk, e.tellObject(handle, nullptr));
  EXPECT_EQ(StatusOk, e.closeObject(handle));
  EXPECT_EQ(0, e.propPageInit(0, 0, nullptr));
  EXPECT_EQ(0, e.getObjectIcon(0, nullptr, nullptr));
  EXPECT_NE(StatusOk, e.RunObject(nullptr));
  uint32_t needed = 0;
  EXPECT_NE(StatusOk, e.getPropertyTemplates(nullptr, 0, &needed, &count));
  EXPECT_NE(StatusOk, e.getPropertyTemplates(bytes, sizeof bytes, nullptr, &count));
  EXPECT_NE(StatusOk, e.getPropertyTemplates(bytes, sizeof bytes, &needed, nullptr));
}

TEST_F(HostCallsTest, AKeyWithoutAClientTagMakesAnAgentWithoutAStore) {
  EXPECT_STREQ("", startAgent("Software\\Tuk\\Agents\\Unknown").agentName);
  expectNoStore(entries());
}

// The agent's own initAgent, in this process: the module's life without a loader around it.
TEST(HostCallsLife, InitAgentWithNullsAndCallsAfterTheLastTermination) {
  TempDir dir;
  setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
  EXPECT_EQ(0, initAgent(nullptr, nullptr));
  const AgentParams empty = {nullptr, nullptr, nullptr, 0, 0, 0};
  AgentResult result = {};
  EXPECT_EQ(0, initAgent(&empty, &result));
  ASSERT_NE(nullptr, result.entryTable);
  const AgentEntryTable &e = *result.entryTable;
  // After the last termination, and with more terminations than initialisations.
  for (int termination = 0; termination < 5; ++termination)
    EXPECT_EQ(0, e.terminateAgent());
  expectNoStore(e);
  // A new life after too many terminations counts as any other: two initialisations make
  // one agent, which the second termination ends.
  const AgentParams eudora = {"MHEudora", nullptr, "EN", 0, 0, 0};
  EXPECT_EQ(0, initAgent(&eudora, &result));
  EXPECT_EQ(0, initAgent(&eudora, &result));
  EXPECT_STREQ("Eudora Mail", result.agentName);
  char names[512];
  uint32_t needed = 0, count = 0;
  EXPECT_EQ(0, e.terminateAgent());
  EXPECT_EQ(StatusOk, e.getPropertyTemplates(names, sizeof names, &needed, &count));
  EXPECT_EQ(0, e.terminateAgent());
  EXPECT_EQ(-1, e.getPropertyTemplates(names, sizeof names, &needed, &count));
}

TEST_F(HostCallsTest, SearchesAndObjectsAcrossTheEndOfALife) {
  AgentHandle search = 0, abandoned = 0;
  KeptRecord kept;
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  ASSERT_EQ(StatusOk, findFirst(abandoned, kept));
  const AgentHandle object = open();
  startAgent(kEudoraKey); // the last termination, then a new life
  // Searches end with the life that started them (and are released with it); an object is
  // the host's until it closes it.
  expectNoSearch(search);
  expectNoSearch(abandoned);
  char buffer[8];
  uint32_t got = 0;
  EXPECT_EQ(StatusOk, entries().readObject(object, buffer, sizeof buffer, &got));
  EXPECT_EQ(StatusOk, entries().closeObject(object));
  expectNoObject(entries(), object);
}
} // namespace
