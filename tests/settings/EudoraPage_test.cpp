// Eudora's page and settings: the "Index Attachments" flag in the key beside the agent's, the
// attachments directory from eudora.ini, and the second program name.
#include "agent/EudAgent.h"
#include "tests/settings/SettingsFixture.h"

namespace {
const std::string kKey = "Software\\Tuk\\Agents\\MHEudora";
const std::string kFileKey = "Software\\Tuk\\Agents\\File";

class EudoraPageTest : public SettingsTest {
protected:
  void SetUp() override {
    makeDirs(exeDir);
    makeDirs(mailDir);
    writeFile(exeDir + "/eudora.exe", "MZ");
    start(kKey);
  }
  // Opens the page, types both directories and checks the box as asked.
  TukWindow fillPage(int box) {
    const TukWindow page = openPage();
    type(page, kMailEdit, mailDir);
    type(page, kExeEdit, exeDir);
    tukWindowSetCheck(control(page, kAttachBox), box);
    return page;
  }
  const std::string exeDir = dir.file("Eudora");
  const std::string mailDir = dir.file("Mail");
};

TEST_F(EudoraPageTest, TheBoxShowsTheStoredFlagButOnlyACheckStepTakesItBack) {
  SetRegValue(kFileKey.c_str(), "Attachments", 1);
  TukWindow page = openPage();
  EXPECT_EQ(1, windowInfo(control(page, kAttachBox)).checked);
  // A store with no check step since the page opened writes 0, whatever the box shows.
  type(page, kMailEdit, mailDir);
  EXPECT_EQ(1, entries().Validate(1));
  EXPECT_EQ("0", storedNumber(kFileKey, "Attachments"));
  EXPECT_EQ(mailDir + "/Attach", stored(kFileKey, "EudAttachPath"));
  entries().propPageClose();
  // After a check step the store writes what the box showed at the check.
  page = fillPage(1);
  EXPECT_EQ(1, entries().Validate(0));
  EXPECT_EQ(0, tukWindowClick(control(page, kAttachBox))); // unchecked after the check
  EXPECT_EQ(1, entries().Validate(1));
  EXPECT_EQ("1", storedNumber(kFileKey, "Attachments"));
  EXPECT_TRUE(CapturedLog::contains("\tAttach: 1"));
  // F1 on the box shows its own topic.
  EXPECT_EQ(0, tukWindowPressKey(control(page, kAttachBox), TUK_KEY_F1));
  ASSERT_NE(nullptr, user.last(TUK_USER_HELP));
  EXPECT_EQ(1530u, user.last(TUK_USER_HELP)->flags);
}

TEST_F(EudoraPageTest, TheAttachmentsDirectoryFollowsTheTypedMailDirectorysIni) {
  const std::string otherMail = dir.file("Other Mail");
  writeFile(otherMail + "/eudora.ini",
            "[Settings]\r\nAutoReceiveAttachmentsDirectory=" + dir.file("Saved") + "\r\n");
  SetRegValue(kKey.c_str(), "MailPath", CString(mailDir.c_str()));
  const TukWindow page = fillPage(0);
  type(page, kMailEdit, otherMail);
  EXPECT_EQ(1, entries().Validate(1));
  EXPECT_EQ(dir.file("Saved"), stored(kFileKey, "EudAttachPath"));
}

TEST_F(EudoraPageTest, EitherProgramNamePassesAndOnlyTheirExistenceCounts) {
  const std::string alternative = dir.file("Alt");
  writeFile(alternative + "/Weudora.exe", "MZ");
  const std::string folderNamedLikeIt = dir.file("Odd");
  makeDirs(folderNamedLikeIt + "/eudora.exe");
  const TukWindow page = fillPage(0);
  for (const std::string &exe : {alternative, folderNamedLikeIt}) {
    type(page, kExeEdit, exe);
    EXPECT_EQ(1, entries().Validate(0)) << exe;
  }
  EXPECT_TRUE(user.events.empty());
  // The icons are asked of eudora.exe alone.
  type(page, kExeEdit, alternative);
  EXPECT_EQ(1, entries().Validate(1));
  int32_t small = -1, large = -1;
  EXPECT_EQ(0, entries().getObjectIcon(0, &small, &large));
  EXPECT_EQ(0, small);
  EXPECT_EQ(0, large);
}

// The agent's own settings operations, on an agent made directly.
class EudoraSettingsTest : public SettingsTest {
protected:
  void SetUp() override { start(kKey); } // for the module state, the strings and the log
  std::unique_ptr<CEudoraAgent> agentFor(const std::string &key) {
    auto agent = std::make_unique<CEudoraAgent>(CString("EN"), key.c_str());
    const char *name = nullptr;
    agent->getAgentName(key.c_str(), &name);
    return agent;
  }
};

// The flag's key replaces the tag and what follows it; a key that starts with the tag has no
// parent to put it under, and then only the directories are stored.
TEST_F(EudoraSettingsTest, TheFileKeyReplacesTheTagAndWhatFollowsIt) {
  // An agent key, and the file key made of it (null: none).
  const std::pair<const char *, const char *> cases[] = {
      {"Software\\Tuk\\MHEudora", "Software\\Tuk\\File"},
      {"Software\\Tuk\\MHEudora\\Extra", "Software\\Tuk\\File"},
      {"A\\MHEudora\\MHEudora", "A\\File"},
      {"Software\\Tuk\\", nullptr},
      {"MHEudora\\Settings", nullptr},
  };
  for (const auto &[agentKey, expected] : cases) {
    SCOPED_TRACE(agentKey);
    const std::unique_ptr<CString> fileKey =
        agentFor(agentKey)->getFileAgentKey(CString("MHEudora"));
    ASSERT_EQ(expected != nullptr, fileKey != nullptr);
    if (fileKey) {
      EXPECT_STREQ(expected, fileKey->GetString());
    }
  }
  const std::unique_ptr<CEudoraAgent> agent = agentFor("MHEudora");
  int32_t attach = 7;
  CString mail, exe, attachDir;
  EXPECT_EQ(0, agent->getRegistrySettings(mail, exe, &attach, attachDir));
  EXPECT_EQ(7, attach); // left as it was
  EXPECT_EQ(0, agent->setRegistrySettings(CString("m"), CString("e"), 1, CString("a")));
  EXPECT_EQ("m", stored("MHEudora", "MailPath"));
  EXPECT_EQ(std::string::npos, readFile(registryPath).find("Attachments"));
}

TEST_F(EudoraSettingsTest, TheIniValueIsTakenUpTo257Bytes) {
  const std::unique_ptr<CEudoraAgent> agent = agentFor(kKey);
  const CString mail(dir.file("Mail").c_str());
  CString attachDir("kept");
  EXPECT_EQ(0, agent->getAttachmentsDir(mail, attachDir));
  EXPECT_EQ(dir.file("Mail") + "/Attach", attachDir.GetString()); // no eudora.ini
  for (const size_t length : {257, 258, 300}) {
    SCOPED_TRACE(length);
    writeFile(dir.file("Mail/eudora.ini"),
              "[Settings]\nAutoReceiveAttachmentsDirectory=" + std::string(length, 'd') + "\n");
    attachDir = "kept";
    agent->getAttachmentsDir(mail, attachDir);
    EXPECT_EQ(length == 257 ? std::string(257, 'd') : "kept", attachDir.GetString());
  }
}

TEST_F(EudoraSettingsTest, AFailedWriteStopsTheStoreAndIsOnlyLogged) {
  writeFile(dir.file("in the way"), "");
  ScopedEnvironment unwritable("TUK_REGISTRY", dir.file("in the way") + "/registry.reg");
  const std::unique_ptr<CEudoraAgent> agent = agentFor(kKey);
  EXPECT_EQ(-1, agent->setRegistrySettings(CString("m"), CString("e"), 1, CString("a")));
  EXPECT_TRUE(CapturedLog::contains("Failed trying to set MailPath value\n"));
  EXPECT_FALSE(CapturedLog::contains("Failed trying to set ExePath value\n"));
  // Through the page, the host still hears that it may go on.
  const TukWindow page = openPage();
  type(page, kMailEdit, "m");
  EXPECT_EQ(1, entries().Validate(1));
}
} // namespace
