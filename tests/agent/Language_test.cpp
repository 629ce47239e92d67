// Language modules and header name overrides, as a host sees them through the entries.
#include "cmn/Registry.h"
#include "tests/support/AgentSession.h"
#include "tests/support/AgentStore.h"
#include "tests/support/Reference.h"
#include <cstdlib>

namespace {
class LanguageTest : public AgentStoreTest {
protected:
  // Opens the whole of `text` as one message and returns (subject, time).
  std::pair<std::string, int32_t> open(const std::string &text) {
    // A mailbox of its own each time: the agent keeps the last one mapped, and Windows lets
    // no one rewrite a mapped file.
    const std::string path = dir.file("In" + std::to_string(++opened_) + ".mbx");
    writeFile(path, text);
    RecordBuffer record(path, 0, static_cast<uint32_t>(text.size()), referenceChecksum(text));
    AgentHandle object = 0;
    int32_t time = 0;
    EXPECT_EQ(StatusOk, entries().openObject(&object, record.get(), &time));
    uint32_t used = 0, count = 0;
    std::vector<unsigned char> block(4096);
    EXPECT_EQ(StatusOk, entries().getObjectProperties(object, block.data(), 4096, &used, &count));
    entries().closeObject(object);
    // The first property is the subject: its value follows the name "…" in the block.
    const uint32_t nameLength = block[4];
    const size_t valueAt = (8 + nameLength + 3) & ~size_t{3};
    const uint32_t valueLength = block[valueAt];
    return {std::string(reinterpret_cast<char *>(&block[valueAt + 4]), valueLength - 1), time};
  }
  std::vector<std::string> propertyNames() {
    std::vector<char> table(512);
    uint32_t needed = 0, count = 0;
    EXPECT_EQ(StatusOk, entries().getPropertyTemplates(table.data(), 512, &needed, &count));
    const char *const *names = reinterpret_cast<const char *const *>(table.data());
    return std::vector<std::string>(names, names + count);
  }

private:
  int opened_ = 0;
};

TEST_F(LanguageTest, LanguageModulesSupplyNamesMonthsAndHeadersElseTheBuiltInStringsStay) {
  EXPECT_STREQ("Eudora E-Mail", startAgent(kEudoraKey, nullptr, "DE").agentName);
  EXPECT_EQ((std::vector<std::string>{"betreff", "titel", "ort", "an", "von", "kopie", "autor"}),
            propertyNames());
  const auto german = open("x\nBetreff: Hallo\nDatum: 15 M\xC3\xA4r 1998 10:00:00\n\nText");
  EXPECT_EQ("Hallo", german.first);
  EXPECT_EQ(889956000, german.second); // 15 March 1998, 10:00 UTC
  // English header names are no longer searched.
  EXPECT_EQ("", open("x\nSubject: Hello\n\n").first);
  // A new life in English looks its strings up in the agent again.
  EXPECT_STREQ("Eudora Mail", startAgent(kEudoraKey).agentName);
  EXPECT_EQ("Hello", open("x\nSubject: Hello\n\n").first);
  // A missing module leaves the built-in strings. "en" is not "EN": a module of that name is
  // tried, found missing, and passed over.
  for (const char *language : {"FR", "en"}) {
    EXPECT_STREQ("Pegasus Mail", startAgent("MHPegasus", nullptr, language).agentName);
    EXPECT_EQ("subject", propertyNames()[0]);
  }
}

TEST_F(LanguageTest, RegistryOverrideChangesTheSearchNotThePropertyName) {
  const std::string overrides = std::string(kEudoraKey) + "\\EN";
  ASSERT_NE(0, SetRegValue(overrides.c_str(), "Subject", CString("Topic:")));
  ASSERT_NE(0, SetRegValue(overrides.c_str(), "Date", CString("Sent:")));
  startAgent(kEudoraKey);
  const auto found = open("x\nSubject: old\nTopic: new\nSent: 2 Jan 1999 00:00:01\n\n");
  EXPECT_EQ("new", found.first);
  EXPECT_EQ(915235201, found.second);
  EXPECT_EQ("subject", propertyNames()[0]);
}

TEST_F(LanguageTest, TimeOfAMessageIsItsDateInLocalTime) {
  const std::string dated = "x\nDate: Thu, 15 Jan 1998 10:30:45 -0500\n\n";
  EXPECT_EQ(884860245, open(dated).second); // the zone plays no part
  // A date that can't be read is 1 February 1971, 00:00:00.
  const std::string undated = "x\nDate: not a date\n\n";
  EXPECT_EQ(34214400, open(undated).second);
  setenv("TZ", "XST-3", 1); // three hours east of UTC, no daylight saving
  EXPECT_EQ(884860245 - 3 * 3600, open(dated).second);
  EXPECT_EQ(34214400 - 3 * 3600, open(undated).second);
}
} // namespace
