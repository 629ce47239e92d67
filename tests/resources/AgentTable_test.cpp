// The agent's compiled string table and dialog templates: every string id present in order,
// and each dialog's size and controls in tab order. (What the texts say and how the pages and
// the viewer behave: the store, agent and settings suites.)
#include "tests/resources/AgentModule.h"

#include "platform/Window.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

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

TEST(AgentDialogs, EachDialogHasItsSizeAndItsControlsInTabOrder) {
  const std::vector<int32_t> page = {1002, 1000, 1001, 1005, 1003, 1004};
  const auto withButtons = [](std::vector<int32_t> ids, bool attachments) {
    if (attachments)
      ids.push_back(1007);
    ids.insert(ids.end(), {IDOK, IDCANCEL});
    return ids;
  };
  const struct {
    UINT id;
    uint32_t style;
    int16_t cx, cy;
    std::vector<int32_t> items;
  } dialogs[] = {
      {129, 0x40000040, 186, 95, {IDOK, IDCANCEL}}, // child, set font, hidden
      {130, 0x40000040, 276, 151, withButtons(page, true)},
      {131, 0x40000040, 302, 159, withButtons(page, false)},
      {134, 0x40000040, 300, 151, withButtons(page, false)},
      {135, 0x40000040, 304, 162, withButtons(page, false)},
      {133, 0x90CE0244, 392, 265,
       {1008, -1, 1009, -1, 1010, -1, 1011, -1, 1012, -1, 1013, -1, 1014, 1015}},
  };
  for (const auto &d : dialogs) {
    SCOPED_TRACE(d.id);
    const DialogTemplate *dialog = findDialog(&agentTestModule, d.id);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->style, d.style) << std::hex << dialog->style;
    EXPECT_EQ(dialog->cx, d.cx);
    EXPECT_EQ(dialog->cy, d.cy);
    std::vector<int32_t> ids;
    for (uint32_t i = 0; i < dialog->itemCount; ++i) {
      ids.push_back(dialog->items[i].id);
      // A page's OK and Cancel are hidden, so that Enter and Esc end nothing.
      if (ids.back() == IDOK || ids.back() == IDCANCEL) {
        EXPECT_EQ(0u, dialog->items[i].style & WS_VISIBLE);
      }
    }
    EXPECT_EQ(d.items, ids);
  }
}

} // namespace
