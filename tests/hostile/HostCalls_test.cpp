// Hosts that call the entries out of turn: handles closed twice, made up or from an ended
// search, null pointers in every pointer argument, and calls around the agent's life. Each
// gets its entry's failure status, and nothing behind a handle that is not live is touched.
#include "tests/hostile/HostileStore.h"

#include "tests/support/AgentSession.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

class HostCallsTest : public HostileStoreTest {
protected:
  void SetUp() override {
    HostileStoreTest::SetUp();
    writeFile(mail + "/In.mbx", eudoraMessage("one") + eudoraMessage("two"));
    writeFile(mail + "/In.toc", "");
    AgentHandle search = 0;
    ASSERT_EQ(StatusOk, findFirst(search, record));
    EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  }

  AgentHandle open() {
    RecordBuffer buffer(record.path, record.offset, record.length, record.checksum);
    AgentHandle object = 0;
    int32_t time = 0;
    EXPECT_EQ(StatusOk, entries().openObject(&object, buffer.get(), &time));
    return object;
  }

  // Every object entry on `object`: each answers -4.
  void expectNoObject(AgentHandle object) {
    const AgentEntryTable &e = entries();
    char buffer[64];
    uint32_t got = 7, used = 7, count = 7, position = 7;
    EXPECT_EQ(StatusBadSignature, e.readObject(object, buffer, sizeof buffer, &got));
    EXPECT_EQ(StatusBadSignature,
              e.getObjectProperties(object, buffer, sizeof buffer, &used, &count));
    EXPECT_EQ(StatusBadSignature, e.seekObject(object, 0, 0));
    EXPECT_EQ(StatusBadSignature, e.tellObject(object, &position));
    EXPECT_EQ(StatusBadSignature, e.closeObject(object));
    // Nothing was written either.
    EXPECT_EQ(7u, got);
    EXPECT_EQ(7u, used);
    EXPECT_EQ(7u, count);
    EXPECT_EQ(7u, position);
  }

  // The search entries on `search`: no more objects, and closing deletes nothing.
  void expectNoSearch(AgentHandle search) {
    KeptRecord kept;
    EXPECT_EQ(StatusNoMoreObjects, findNext(search, kept));
    EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  }

  KeptRecord record;
};

TEST_F(HostCallsTest, ObjectHandlesThatAreNotLive) {
  const AgentHandle object = open();
  EXPECT_EQ(StatusOk, entries().closeObject(object));
  expectNoObject(object); // closed before: its memory is gone
  expectNoObject(0);
  expectNoObject(AGENT_INVALID_HANDLE);
  expectNoObject(0x1234);
  // Memory that looks like a message, signature and all, is still no object.
  auto fake = std::make_unique<uint32_t[]>(64);
  for (int at = 0; at < 64; ++at)
    fake[at] = 0xDEADBEEF;
  expectNoObject(reinterpret_cast<AgentHandle>(fake.get()));
  // A live search is no object, and a live object no search.
  AgentHandle search = 0;
  KeptRecord kept;
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  expectNoObject(search);
  const AgentHandle other = open();
  expectNoSearch(other);
  EXPECT_EQ(StatusOk, entries().closeObject(other));
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
}

TEST_F(HostCallsTest, SearchHandlesThatAreNotLive) {
  AgentHandle search = 0;
  KeptRecord kept;
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  EXPECT_EQ(StatusOk, entries().closeFindObjectHandle(search));
  expectNoSearch(search); // closed before
  expectNoSearch(0);
  expectNoSearch(AGENT_INVALID_HANDLE);
  expectNoSearch(0x1234);
  auto fake = std::make_unique<uint64_t[]>(64);
  expectNoSearch(reinterpret_cast<AgentHandle>(fake.get()));

  // A search that a 122 of findNextObjectHandle ended.
  ASSERT_EQ(StatusOk, findFirst(search, kept));
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
  EXPECT_EQ(0, e.terminateAgent());
  EXPECT_EQ(0, e.terminateAgent());

  // After the last termination, and with more terminations than initialisations.
  for (int extra = 0; extra < 3; ++extra)
    EXPECT_EQ(0, e.terminateAgent());
  RecordBuffer buffer;
  AgentHandle handle = 9;
  int32_t time = 0;
  EXPECT_EQ(StatusNoMoreObjects, e.findFirstObjectHandle(0, &handle, buffer.get(), &time));
  EXPECT_EQ(StatusNoMoreObjects, e.findNextObjectHandle(handle, buffer.get(), &time));
  EXPECT_EQ(StatusOk, e.closeFindObjectHandle(handle));
  EXPECT_EQ(StatusMailFileFailed, e.openObject(&handle, buffer.get(), &time));
  EXPECT_EQ(StatusBadSignature, e.closeObject(handle));
  EXPECT_EQ(StatusOpenFailed, e.RunObject(buffer.get()));

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
  AgentHandle search = 0;
  KeptRecord kept;
  ASSERT_EQ(StatusOk, findFirst(search, kept));
  AgentHandle abandoned = 0;
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
  expectNoObject(object);
}

} // namespace
