// The agent's compiled string table: every string id present, in order. (What the texts say,
// and the pages and the viewer made from the dialog templates: the store, agent and settings
// suites.)
#include "tests/resources/AgentModule.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(AgentStrings, IdsOneToSeventyAreThereInOrder) {
  ASSERT_EQ(agentResourceTable.stringCount, 70u);
  for (uint32_t i = 0; i < agentResourceTable.stringCount; ++i) {
    const ResourceString &entry = agentResourceTable.strings[i];
    EXPECT_EQ(entry.id, i + 1);
    EXPECT_EQ(entry.length, std::strlen(entry.text)) << "id " << entry.id;
    EXPECT_EQ(findString(&agentTestModule, entry.id), &entry);
  }
  EXPECT_EQ(findString(&agentTestModule, 0), nullptr);
  EXPECT_EQ(findString(&agentTestModule, 71), nullptr);
}

} // namespace
