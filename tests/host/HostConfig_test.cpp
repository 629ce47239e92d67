// mhhost config through the agent's settings page. (A Thunderbird profile indexed through the
// Netscape agent: HostUpdates.)
#include "tests/host/HostFixture.h"
#include <unistd.h>

namespace {
class HostConfigTest : public HostFixture, public ::testing::Test {
protected:
  std::string registryLine(const std::string &name, const std::string &value) {
    return "\"" + name + "\"=\"" + value + "\"";
  }
  bool registryHas(const std::string &text) {
    return registryText().find(text) != std::string::npos;
  }
};

TEST_F(HostConfigTest, StoresDirectoriesAndTheFlagThroughTheSettingsPage) {
  makeDirs(dir.file("mail"));
  writeFile(dir.file("program/eudora.exe"), "");
  const HostResult run = hostOk({"--client", "eudora", "config", "--mail-dir", dir.file("mail"),
                                 "--exe-dir", dir.file("program"), "--attachments", "on"});
  EXPECT_EQ(std::string::npos, run.out.find("==")) << "the check had nothing to warn of";
  EXPECT_TRUE(registryHas("[Software\\Tuk\\Agents\\MHEudora]"));
  EXPECT_TRUE(registryHas(registryLine("MailPath", dir.file("mail"))));
  EXPECT_TRUE(registryHas(registryLine("ExePath", dir.file("program"))));
  // The page stores the flag beside the agent key, with the attachments directory.
  EXPECT_TRUE(registryHas("[Software\\Tuk\\Agents\\File]"));
  EXPECT_TRUE(registryHas("\"Attachments\"=dword:00000001"));
  EXPECT_TRUE(registryHas(registryLine("EudAttachPath", dir.file("mail") + "/Attach")));
  EXPECT_EQ(1u, linesWith(run.out, "Attachments  on").size()) << run.out;
  // A second run that leaves the flag alone keeps it; one that sets it off clears it.
  hostOk({"--client", "eudora", "config", "--exe-dir", dir.file("program")});
  EXPECT_TRUE(registryHas("\"Attachments\"=dword:00000001"));
  hostOk({"--client", "eudora", "config", "--attachments", "off"});
  EXPECT_TRUE(registryHas("\"Attachments\"=dword:00000000"));
  EXPECT_TRUE(registryHas(registryLine("MailPath", dir.file("mail"))));
}

TEST_F(HostConfigTest, TheCheckStepsWarningIsPrintedAndAnsweredCancel) {
  // A relative directory is stored as an absolute one.
  const HostResult run =
      hostOk({"--client", "netscape", "config", "--mail-dir", "no/such/mail", "--yes"});
  EXPECT_EQ(0u, run.out.find("== Note on Netscape Mail. ==\nBoth the Netscape mail and "
                             "executable directories specified do not exist.\n(answered "
                             "Cancel)\n"))
      << run.out;
  char cwd[4096];
  ASSERT_NE(nullptr, getcwd(cwd, sizeof cwd));
  EXPECT_TRUE(registryHas(registryLine("MailPath", std::string(cwd) + "/no/such/mail")));
}

TEST_F(HostConfigTest, RetryAtTheTerminalAsksForOtherValues) {
  makeDirs(dir.file("mail"));
  writeFile(dir.file("program/winpm-32.exe"), "");
  const HostResult run = hostOk({"--client", "pegasus", "config", "--mail-dir", dir.file("typo"),
                                 "--exe-dir", dir.file("program")},
                                "r\n" + dir.file("mail") + "\n\n", Input::Terminal);
  EXPECT_EQ(1u, linesWith(run.out, "The Pegasus mail directory specified does not exist.").size())
      << run.out;
  EXPECT_TRUE(holds(run.err, "Mail directory [" + dir.file("typo") + "]"));
  EXPECT_TRUE(registryHas(registryLine("MailPath", dir.file("mail"))));
  EXPECT_TRUE(registryHas(registryLine("ExePath", dir.file("program"))));
}

TEST_F(HostConfigTest, ExtensionsGoStraightIntoTheRegistry) {
  hostOk({"--client", "internet", "config", "--ctrl-ext", "msf", "--mail-ext", ""});
  EXPECT_TRUE(registryHas(registryLine("CtrlFileExt", ".msf")));
  EXPECT_TRUE(registryHas(registryLine("MailFileExt", "")));
  EXPECT_FALSE(registryHas("MailPath")) << "no page was needed";
}
} // namespace
