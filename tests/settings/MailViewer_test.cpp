// RunObject and the View Email window: the message a record names, shown with the mailbox
// released, and the window's layout as the person resizes it. (A record whose message changed
// or went: the table of changes in hostile/MappedMailbox.)
#include "tests/settings/SettingsFixture.h"
#include "tests/support/ClientStores.h"
#include "tests/support/Reference.h"
#include <algorithm>
#include <cctype>
#include <map>
#include <tuple>
#include <unistd.h>

namespace {
const std::string kHeaders = "x\r\nTo: ann@example.org\r\nFrom: bob@example.org\r\n"
                             "Cc: cy@example.org\r\nDate: Mon, 2 Mar 1998 10:00:00 +0000\r\n"
                             "Subject: Hello\r\n\r\n";

enum : int { kDone = 1008, kTo = 1009, kCc, kFrom, kDate, kLocation, kSubject, kBody };

class ViewerTest : public SettingsTest, public ::testing::WithParamInterface<Client> {
protected:
  void SetUp() override { start(GetParam().key); }
  // A mailbox of the client holding a message with `body` and one behind it, and the record
  // that names the first.
  RecordBuffer storeMessage(const std::string &body) {
    std::string client = GetParam().name;
    client[0] = static_cast<char>(std::tolower(client[0]));
    const std::string message = kHeaders + body;
    const Mailbox box = framed(client, {message, "next"});
    writeFile(mailbox, box.bytes);
    return RecordBuffer(mailbox, box.ranges[0].offset, box.ranges[0].length,
                        referenceChecksum(message));
  }
  const std::string mailbox = dir.file("Mail/In box");
};

TEST_P(ViewerTest, ShowsTheSevenTextsWhileTheMailboxIsReleasedAndBodiesUpToAZeroByte) {
  RecordBuffer record = storeMessage("first line\nsecond line\r\nthird");
  const size_t windowsBefore = childWindows(0).size();
  std::map<int, std::string> shown;
  bool mappedWhileShown = true;
  user.onModal = [&](TukWindow dialog) {
    EXPECT_EQ("View Email", windowText(dialog));
    for (const int id : {kTo, kCc, kFrom, kDate, kLocation, kSubject, kBody})
      shown[id] = field(dialog, id);
    mappedWhileShown = isMappedInThisProcess(mailbox);
    EXPECT_EQ(0, tukWindowClick(control(dialog, kDone)));
  };
  EXPECT_EQ(StatusOk, entries().RunObject(record.get()));
  ASSERT_EQ(1u, user.count(TUK_USER_MODAL_DIALOG));
  EXPECT_FALSE(mappedWhileShown);
  const bool pegasus = GetParam().name == std::string("Pegasus");
  EXPECT_EQ((std::map<int, std::string>{{kTo, "ann@example.org"},
                                        {kFrom, "bob@example.org"},
                                        {kCc, "cy@example.org"},
                                        {kDate, "Mon, 2 Mar 1998 10:00:00 +0000"},
                                        {kSubject, "Hello"},
                                        {kLocation, mailbox},
                                        {kBody, pegasus ? "first line\r\nsecond line\r\r\nthird"
                                                        : "first line\nsecond line\r\nthird"}}),
            shown);
  EXPECT_EQ(0u, user.count(TUK_USER_MESSAGE_BOX));
  EXPECT_EQ(windowsBefore, childWindows(0).size()); // nothing stays behind
  EXPECT_TRUE(CapturedLog::contains("RunObject called"));
  // Bodies reach the box up to a zero byte, with CR LF line ends only for Pegasus.
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"", "", ""},
      {"no line end", "no line end", "no line end"},
      {"a\nb\n", "a\nb\n", "a\r\nb\r\n"},
      {std::string("up to\n\0hidden", 13), "up to\n", "up to\r\n"}};
  for (const auto &[stored, seen, seenByPegasus] : cases) {
    SCOPED_TRACE(seen);
    RecordBuffer record = storeMessage(stored);
    std::string body = "<not shown>";
    user.onModal = [&](TukWindow dialog) { body = field(dialog, kBody); };
    EXPECT_EQ(StatusOk, entries().RunObject(record.get()));
    EXPECT_EQ(pegasus ? seenByPegasus : seen, body);
  }
}

INSTANTIATE_TEST_SUITE_P(Clients, ViewerTest, ::testing::ValuesIn(allClients()),
                         [](const auto &info) { return std::string(info.param.name); });

// The window's layout: every control's rectangle, by position in the dialog.
using Layout = std::vector<TukRect>;

Layout layoutOf(TukWindow dialog) {
  Layout layout;
  for (const TukWindow child : childWindows(dialog))
    layout.push_back(windowInfo(child).rect);
  layout.push_back(windowInfo(dialog).rect);
  return layout;
}

bool sameRect(const TukRect &a, const TukRect &b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

bool sameLayout(const Layout &a, const Layout &b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameRect);
}

class ViewerLayoutTest : public SettingsTest {
protected:
  void SetUp() override { start(allClients()[0].key); }
};

TEST_F(ViewerLayoutTest, TheWindowGrowsAndShrinksByTheRulesButNeverBelowItsFirstSize) {
  const std::string message = kHeaders + "body";
  writeFile(dir.file("In.mbx"), message);
  RecordBuffer record(dir.file("In.mbx"), 0, static_cast<uint32_t>(message.size()),
                      referenceChecksum(message));
  bool ran = false;
  user.onModal = [&](TukWindow dialog) {
    ran = true;
    const Layout first = layoutOf(dialog);
    const TukRect window = first.back();
    // 392 by 265 dialog units in a sizing frame with a caption, centred on the screen.
    EXPECT_EQ(596, window.right - window.left);
    EXPECT_EQ(457, window.bottom - window.top);
    EXPECT_EQ((1280 - 596) / 2, window.left);
    // The controls in tab order: To, CC, From, Date, Location, Subject, each behind its label.
    const std::vector<int32_t> tabOrder = {kDone, -1,    kTo, -1,        kCc, -1,       kFrom,
                                           -1,    kDate, -1,  kLocation, -1,  kSubject, kBody};
    std::vector<int32_t> ids;
    for (const TukWindow child : childWindows(dialog))
      ids.push_back(windowInfo(child).id);
    EXPECT_EQ(tabOrder, ids);
    ASSERT_EQ(0, tukWindowResize(dialog, 596 + 120, 457 + 80));
    const Layout grown = layoutOf(dialog);
    const std::vector<TukWindow> controls = childWindows(dialog);
    for (size_t i = 0; i < controls.size(); ++i) {
      const int id = windowInfo(controls[i]).id;
      SCOPED_TRACE(id);
      TukRect expected = first[i];
      if (id == kDone) {
        expected.left += 120; // keeps its distance from the right edge
        expected.right += 120;
      } else if (id == kBody) {
        expected.right += 120;
        expected.bottom += 80;
      } else if (id != -1) {
        expected.right += 120; // header boxes stretch; the labels stay
      }
      EXPECT_TRUE(sameRect(expected, grown[i]));
    }
    // Minimised and restored: as it was.
    ASSERT_EQ(0, tukWindowMinimize(dialog));
    ASSERT_EQ(0, tukWindowRestore(dialog));
    EXPECT_TRUE(sameLayout(grown, layoutOf(dialog)));
    // Dragged smaller than at the start: it stops at its first size, laid out as then.
    ASSERT_EQ(0, tukWindowResize(dialog, 200, 150));
    EXPECT_TRUE(sameLayout(first, layoutOf(dialog)));
    EXPECT_EQ(0, tukWindowPressKey(control(dialog, kBody), TUK_KEY_ESCAPE));
  };
  EXPECT_EQ(StatusOk, entries().RunObject(record.get()));
  EXPECT_TRUE(ran);
}
} // namespace
