// The four clients' settings pages, driven as a host and a person drive them: open the page
// in a frame, type, browse, press keys, then the check step, the store step or a close.
#include "tests/settings/SettingsFixture.h"
#include <tuple>

namespace {
class ClientPageTest : public SettingsTest, public ::testing::WithParamInterface<Client> {
protected:
  void SetUp() override {
    makeDirs(exeDir);
    makeDirs(mailDir);
    writeFile(exeDir + "/" + GetParam().program, "MZ");
    start(GetParam().key);
  }
  const Client &client() const { return GetParam(); }
  const std::string exeDir = dir.file("Program Files/Client");
  const std::string mailDir = dir.file("Mail");
};

TEST_P(ClientPageTest, OpensHiddenInTheFrameShowingTheStoredDirectories) {
  SetRegValue(client().key.c_str(), "MailPath", CString(mailDir.c_str()));
  SetRegValue(client().key.c_str(), "ExePath", CString(exeDir.c_str()));
  const TukWindow page = openPage(false);
  const TukWindowInfo info = windowInfo(page);
  EXPECT_STREQ("dialog", info.windowClass);
  EXPECT_EQ(frame, info.parent);
  EXPECT_EQ(0, info.visible);
  EXPECT_EQ(client().width * 6 / 4, info.rect.right - info.rect.left);
  EXPECT_EQ((client().height * 13 + 4) / 8, info.rect.bottom - info.rect.top);
  EXPECT_EQ(mailDir, field(page, kMailEdit));
  EXPECT_EQ(exeDir, field(page, kExeEdit));
  // The controls in tab order; the page's OK and Cancel behind them.
  std::vector<int32_t> ids,
      expected = {IDC_MAIL_LABEL, kMailEdit,  kBrowseMail, IDC_EXE_LABEL, kExeEdit,
                  kBrowseExe,     kAttachBox, TUK_ID_OK,   TUK_ID_CANCEL};
  for (const TukWindow child : childWindows(page))
    ids.push_back(windowInfo(child).id);
  if (client().key != allClients()[0].key)
    expected.erase(expected.begin() + 6); // only Eudora's page has the box
  EXPECT_EQ(expected, ids);
  EXPECT_TRUE(CapturedLog::contains("MailPath: " + mailDir + "\n"));
  // Nothing stored: the fields are empty and the failed reads are logged.
  ASSERT_EQ(0, entries().propPageClose());
  std::remove(registryPath.c_str());
  const TukWindow empty = openPage();
  EXPECT_EQ("", field(empty, kMailEdit));
  EXPECT_TRUE(CapturedLog::contains("Failed trying to get ExePath value\n"));
}

TEST_P(ClientPageTest, TheCheckStepWarnsRetryStaysAndNeitherItNorACloseStores) {
  const std::string bareDir = dir.file("bare");
  makeDirs(bareDir);
  writeFile(dir.file("a file"), "");
  const std::string missing = dir.file("missing");
  // Each state of the check, and the program and mail directories that give it.
  const std::tuple<int, std::string, std::string> cases[] = {
      {1, dir.file("a file"), mailDir}, // a file is no directory
      {2, bareDir, mailDir},
      {4, exeDir, ""}, // an empty name can't be found
      {5, missing, missing},
      {6, bareDir, dir.file("a file")},
  };
  const TukWindow page = openPage();
  for (const auto &[state, exe, mail] : cases) {
    SCOPED_TRACE(state);
    type(page, kExeEdit, exe);
    type(page, kMailEdit, mail);
    user.boxAnswers = {TUK_ID_RETRY, TUK_ID_CANCEL};
    user.events.clear();
    EXPECT_EQ(0, entries().Validate(0)); // Retry: back to the fields
    EXPECT_EQ(1, entries().Validate(0)); // Cancel: the values go on as they are
    // Twice the box of the state, with Retry and Cancel and a question mark.
    const ScriptedUser::Event box = {TUK_USER_MESSAGE_BOX, page,
                                     loaded(client().stateTextIds[state]),
                                     loaded(client().captionId), 0x25};
    EXPECT_EQ((std::vector<ScriptedUser::Event>{box, box}), user.events);
  }
  // All there: no question, and the host may go on.
  type(page, kExeEdit, exeDir + "/"); // a trailing separator doubles in the candidate
  type(page, kMailEdit, mailDir);
  user.events.clear();
  EXPECT_EQ(1, entries().Validate(0));
  EXPECT_TRUE(user.events.empty());
  EXPECT_FALSE(registryWritten()); // a check step never stores
  // Closed without a store: the page goes, and a store after it has nothing to store.
  EXPECT_EQ(0, entries().propPageClose());
  EXPECT_EQ(-1, tukWindowGetInfo(page, nullptr));
  EXPECT_TRUE(childWindows(frame).empty());
  EXPECT_EQ(1, entries().Validate(1));
  EXPECT_FALSE(registryWritten());
}

TEST_P(ClientPageTest, TheStoreStepStoresWithCommitOneOnlyAndNeverAsks) {
  const TukWindow page = openPage();
  type(page, kMailEdit, dir.file("no mail"));
  type(page, kExeEdit, dir.file("no program"));
  EXPECT_EQ(1, entries().Validate(2));
  EXPECT_FALSE(registryWritten());
  EXPECT_EQ(1, entries().Validate(1));
  EXPECT_TRUE(user.events.empty());
  EXPECT_EQ(dir.file("no mail"), stored(client().key, "MailPath"));
  EXPECT_EQ(dir.file("no program"), stored(client().key, "ExePath"));
  EXPECT_TRUE(CapturedLog::contains("Validate: Mail: " + dir.file("no mail") +
                                    "\tExe: " + dir.file("no program") + "\tAttach: 0"));
}

TEST_P(ClientPageTest, EnterAndEscDoNothingAndF1ShowsTheTopicOfTheField) {
  const TukWindow page = openPage();
  type(page, kMailEdit, "typed");
  EXPECT_EQ(0, tukWindowPressKey(control(page, kMailEdit), TUK_KEY_ENTER));
  EXPECT_EQ(0, tukWindowPressKey(control(page, kExeEdit), TUK_KEY_ESCAPE));
  EXPECT_EQ(1, windowInfo(page).visible);
  EXPECT_EQ("typed", field(page, kMailEdit));
  EXPECT_EQ(control(page, kExeEdit), tukWindowFocused());
  entries().propPageFocus();
  EXPECT_EQ(control(page, kMailEdit), tukWindowFocused());
  EXPECT_TRUE(user.events.empty());
  // F1 shows the topic of the field from the installed help file.
  EXPECT_EQ(0, tukWindowPressKey(control(page, kExeEdit), TUK_KEY_F1));
  EXPECT_EQ(0, tukWindowPressKey(control(page, kMailEdit), TUK_KEY_F1));
  EXPECT_EQ(0, tukWindowPressKey(control(page, kBrowseMail), TUK_KEY_F1)); // no topic
  ASSERT_EQ(2u, user.count(TUK_USER_HELP));
  EXPECT_EQ(client().exeHelpId, user.events[0].flags);
  EXPECT_EQ(control(page, kExeEdit), user.events[0].window);
  EXPECT_EQ(client().mailHelpId, user.events[1].flags);
  for (const ScriptedUser::Event &help : user.events) {
    EXPECT_NE(std::string::npos, help.caption.find("Directory"));
    EXPECT_FALSE(help.text.empty());
  }
}

TEST_P(ClientPageTest, BrowseFillsOnlyItsFieldAndStartsAtTheRoot) {
  const TukWindow page = openPage();
  type(page, kMailEdit, "before");
  type(page, kExeEdit, "kept");
  user.folders = {mailDir, ""};
  EXPECT_EQ(0, tukWindowClick(control(page, kBrowseMail)));
  EXPECT_EQ(0, tukWindowClick(control(page, kBrowseExe))); // cancelled
  EXPECT_EQ(mailDir, field(page, kMailEdit));
  EXPECT_EQ("kept", field(page, kExeEdit));
  ASSERT_EQ(2u, user.count(TUK_USER_FOLDER_PICKER));
  EXPECT_EQ(loaded(client().mailPickerTitleId), user.events[0].text);
  EXPECT_EQ("", user.events[0].caption); // the root, whatever the field held
  EXPECT_EQ(page, user.events[0].window);
  EXPECT_EQ(loaded(client().exePickerTitleId), user.events[1].text);
  EXPECT_FALSE(registryWritten());
}

// What a careless host may do must not cost the stored values or leave windows behind.
TEST_F(SettingsTest, APageWithoutAParentOrOpenedTwiceKeepsTheStoredValues) {
  const std::string key = allClients()[2].key;
  start(key);
  SetRegValue(key.c_str(), "MailPath", CString("/stored/mail"));
  for (const AgentHandle parent : {AgentHandle{0}, AgentHandle{frame + 999}}) {
    AgentHandle page = 77;
    EXPECT_EQ(0, entries().propPageInit(parent, 0, &page));
    EXPECT_EQ(0u, page); // a child page can't be made without a parent
    EXPECT_EQ(1, entries().Validate(1));
    EXPECT_EQ("/stored/mail", stored(key, "MailPath"));
  }
  const TukWindow first = openPage();
  const TukWindow second = openPage();
  EXPECT_EQ(-1, tukWindowGetInfo(first, nullptr));
  EXPECT_EQ((std::vector<TukWindow>{second}), childWindows(frame));
}

INSTANTIATE_TEST_SUITE_P(Clients, ClientPageTest, ::testing::ValuesIn(allClients()),
                         [](const auto &info) { return std::string(info.param.name); });
} // namespace
