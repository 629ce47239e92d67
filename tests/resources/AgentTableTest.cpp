// The agent's compiled string table and dialog templates hold, to the byte, what the agent,
// its settings pages and its viewer rely on.
#include "tests/resources/AgentModule.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

std::string agentString(UINT id) { return textOf(findString(&agentTestModule, id)); }

const DialogTemplate &agentDialog(UINT id) {
  const DialogTemplate *dialog = findDialog(&agentTestModule, id);
  if (dialog == nullptr) {
    ADD_FAILURE() << "no dialog " << id;
    static const DialogTemplate none{};
    return none;
  }
  return *dialog;
}

struct ExpectedItem {
  int32_t id;
  const char *className;
  const char *text;
  int16_t x, y, cx, cy;
  uint32_t style;
};

void expectItems(const DialogTemplate &dialog, const std::vector<ExpectedItem> &expected) {
  ASSERT_EQ(dialog.itemCount, expected.size()) << "dialog " << dialog.id;
  for (size_t i = 0; i < expected.size(); ++i) {
    const DialogItem &item = dialog.items[i];
    const ExpectedItem &want = expected[i];
    SCOPED_TRACE(testing::Message() << "dialog " << dialog.id << ", item " << i);
    EXPECT_EQ(item.id, want.id);
    EXPECT_STREQ(item.className, want.className);
    EXPECT_STREQ(item.text, want.text);
    EXPECT_EQ(item.x, want.x);
    EXPECT_EQ(item.y, want.y);
    EXPECT_EQ(item.cx, want.cx);
    EXPECT_EQ(item.cy, want.cy);
    EXPECT_EQ(item.style, want.style) << std::hex << item.style;
    EXPECT_EQ(item.exStyle, 0u);
  }
}

void expectPageFrame(const DialogTemplate &page, int16_t cx, int16_t cy) {
  SCOPED_TRACE(testing::Message() << "page " << page.id);
  EXPECT_EQ(page.style, 0x40000040u) << std::hex << page.style;  // child, set font, hidden
  EXPECT_EQ(page.exStyle, 0x00010000u);                          // control parent
  EXPECT_EQ(page.extended, 1);
  EXPECT_STREQ(page.caption, "");
  EXPECT_STREQ(page.fontName, "MS Sans Serif");
  EXPECT_EQ(page.pointSize, 8);
  EXPECT_EQ(page.charset, 1);
  EXPECT_EQ(page.cx, cx);
  EXPECT_EQ(page.cy, cy);
}

TEST(AgentStrings, IdsOneToSeventyAreAllPresentInOrderWithTheirLengths) {
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

TEST(AgentStrings, TextsAreByteExact) {
  const char *const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (UINT i = 0; i < 12; ++i)
    EXPECT_EQ(agentString(6 + i), months[i]);
  const struct {
    UINT id;
    const char *text;
  } cases[] = {
      {1, "\nSubject:"},
      {25, "Eudora Mail"},
      {26, "/Attach"},
      {27, "/eudora.ini"},
      {29, "AutoReceiveAttachmentsDirectory"},
      {38, "Netscape Mail"},
      {41, "Outlook Express/Internet Mail"},
      {43, "Pegasus Mail"},
      {62, "The mail message could not be found.\nEither the message has been deleted or the "
           "mailbox has been compacted.\nPlease reindex your mail and issue the search request "
           "again."},
      {64, "The Netscape mail directory specified does not exist.\nAdditionally, the Netscape "
           "executable (netscape.exe)\nis not present in the Netscape executable directory."},
      {70, "The Eudora mail directory specified does not exist.\nAdditionally, the Eudora Mail "
           "executable (eudora.exe)\nis not present in the Eudora Mail executable directory."},
  };
  for (const auto &c : cases)
    EXPECT_EQ(agentString(c.id), c.text) << "id " << c.id;
}

TEST(AgentDialogs, EudoraPageHoldsItsControlsInTabOrder) {
  const DialogTemplate &page = agentDialog(130);
  expectPageFrame(page, 276, 151);
  expectItems(page, {
                        {1002, "STATIC", "&Mail Directory", 10, 25, 44, 8, 0x50020000},
                        {1000, "EDIT", "", 83, 21, 81, 16, 0x50810080},
                        {1001, "BUTTON", "Browse...", 183, 20, 61, 16, 0x50010000},
                        {1005, "STATIC", "&Application Directory", 10, 60, 66, 8, 0x50020000},
                        {1003, "EDIT", "", 83, 55, 81, 16, 0x50810080},
                        {1004, "BUTTON", "Browse...", 183, 55, 61, 16, 0x50010000},
                        {1007, "BUTTON", "Index Attachments", 10, 90, 75, 10, 0x50010003},
                        {1, "BUTTON", "OK", 110, 130, 50, 14, 0x40010001},
                        {2, "BUTTON", "Cancel", 35, 130, 50, 14, 0x40010000},
                    });
}

TEST(AgentDialogs, OtherPagesLackTheCheckBoxAndMoveTheHiddenButtons) {
  const DialogTemplate &eudora = agentDialog(130);
  ASSERT_EQ(eudora.itemCount, 9u);
  const struct {
    UINT id;
    int16_t cx, cy, okX, okY, cancelX, cancelY;
  } pages[] = {{134, 300, 151, 220, 121, 159, 121},
               {131, 302, 159, 217, 130, 152, 131},
               {135, 304, 162, 236, 134, 169, 134}};
  for (const auto &p : pages) {
    const DialogTemplate &page = agentDialog(p.id);
    expectPageFrame(page, p.cx, p.cy);
    std::vector<ExpectedItem> expected;
    for (uint32_t i = 0; i < 6; ++i) {
      const DialogItem &item = eudora.items[i];
      expected.push_back(ExpectedItem{item.id, item.className, item.text, item.x, item.y, item.cx,
                                      item.cy, item.style});
    }
    expected.push_back({1, "BUTTON", "OK", p.okX, p.okY, 50, 14, 0x40010001});
    expected.push_back({2, "BUTTON", "Cancel", p.cancelX, p.cancelY, 50, 14, 0x40010000});
    expectItems(page, expected);
  }
}

TEST(AgentDialogs, BasePageIsAHiddenChildWithHiddenButtons) {
  const DialogTemplate &page = agentDialog(129);
  EXPECT_EQ(page.style, 0x40000040u) << std::hex << page.style;
  EXPECT_EQ(page.cx, 186);
  EXPECT_EQ(page.cy, 95);
  EXPECT_STREQ(page.fontName, "MS Sans Serif");
  expectItems(page, {{1, "BUTTON", "OK", 129, 7, 50, 14, 0x40010001},
                     {2, "BUTTON", "Cancel", 129, 24, 50, 14, 0x40010000}});
}

TEST(AgentDialogs, ViewEmailWindowHoldsItsControlsInTabOrder) {
  const DialogTemplate &view = agentDialog(133);
  EXPECT_EQ(view.style, 0x90CE0244u) << std::hex << view.style;
  EXPECT_EQ(view.exStyle, 0u);
  EXPECT_EQ(view.extended, 0);
  EXPECT_STREQ(view.caption, "View Email");
  EXPECT_STREQ(view.fontName, "MS Sans Serif");
  EXPECT_EQ(view.pointSize, 8);
  EXPECT_EQ(view.cx, 392);
  EXPECT_EQ(view.cy, 265);
  const uint32_t label = 0x50020000, field = 0x50810880;
  expectItems(view, {
                        {1008, "BUTTON", "&Done", 335, 7, 50, 14, 0x50010000},
                        {-1, "STATIC", "&To", 7, 19, 10, 8, label},
                        {1009, "EDIT", "", 41, 16, 274, 15, field},
                        {-1, "STATIC", "&CC", 7, 53, 10, 8, label},
                        {1010, "EDIT", "", 41, 50, 274, 15, field},
                        {-1, "STATIC", "&From", 7, 36, 16, 8, label},
                        {1011, "EDIT", "", 41, 33, 274, 15, field},
                        {-1, "STATIC", "D&ate", 7, 70, 16, 8, label},
                        {1012, "EDIT", "", 41, 67, 274, 15, field},
                        {-1, "STATIC", "&Location", 7, 105, 28, 8, label},
                        {1013, "EDIT", "", 41, 101, 274, 15, field},
                        {-1, "STATIC", "&Subject", 7, 87, 25, 8, label},
                        {1014, "EDIT", "", 41, 84, 274, 15, field},
                        {1015, "EDIT", "", 7, 127, 378, 131, 0x50A10804},
                    });
}

}  // namespace
