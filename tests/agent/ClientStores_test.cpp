// Generated stores of the Netscape, Internet Mail and Pegasus clients, and a Thunderbird
// profile, walked end to end as a host walks them.
#include "cmn/Registry.h"
#include "tests/support/HostWalk.h"
#include "tests/support/LoadedAgent.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

namespace {

std::string headers(const std::string &subject, const std::string &eol) {
  return "Received: by mail.example.org" + eol + "Subject: " + subject + eol +
         "Date: 7 May 1997 11:02:33 GMT" + eol + "From: ann@example.org" + eol + eol;
}

struct Mailbox {
  std::string relativePath;  // the mail file
  std::string controlFile;   // beside it
  std::vector<std::string> bodies;
};

struct ClientCase {
  const char *key;
  // Writes one mailbox's file from its messages' full texts.
  std::function<std::string(const std::vector<std::string> &)> mailFile;
  std::string eol;
  std::vector<Mailbox> mailboxes;  // in the order a walk meets them
};

std::string joined(const std::vector<std::string> &messages, const std::string &before,
                   const std::string &between) {
  std::string out;
  for (size_t i = 0; i < messages.size(); ++i)
    out += (i ? between : before) + messages[i];
  return out;
}

void PrintTo(const ClientCase &c, std::ostream *out) { *out << c.key; }

std::vector<ClientCase> clientCases() {
  const std::string netscapeLine = "From - Wed May 07 11:02:33 1997\n";
  const std::string internetDelimiter("\0\x7F\0\x7F", 4);
  return {
      {"Software\\Tuk\\Agents\\MHNetscape",
       [=](const std::vector<std::string> &m) { return joined(m, netscapeLine, netscapeLine); },
       "\n",
       {{"Inbox", "Inbox.snm", {"Hello\nFrom here to there and back\n", "Second\n"}},
        {"Folders.sbd/Work", "Folders.sbd/Work.SNM", {"Work mail\n>From quoted\n"}}}},
      {"Software\\Tuk\\Agents\\MHInternet",
       [=](const std::vector<std::string> &m) {
         return joined(m, internetDelimiter, internetDelimiter);
       },
       "\r\n",
       {{"Inbox", "Inbox.snm", {std::string("Zero \0 byte\r\n", 13), "Two\r\n"}},
        {"Sub/Sent", "Sub/Sent.snm", {"Sent mail\r\n"}}}},
      {"Software\\Tuk\\Agents\\MHPegasus",
       [](const std::vector<std::string> &m) {
         return std::string(128, '\0') + joined(m, "", std::string("\n\n\x1a", 3));
       },
       "\n",
       {{"IN.PMM", "IN.PMI", {"First\n", "Second\n\nwith a blank line\n"}},
        {"Friends/FRIENDS.PMM", "Friends/FRIENDS.PMI", {"Friends\n"}}}},
  };
}

class ClientStoreTest : public ::testing::TestWithParam<ClientCase> {
protected:
  void SetUp() override {
    setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
    setenv("TZ", "UTC", 1);
  }
  TempDir dir;
  LoadedAgent agent;
};

TEST_P(ClientStoreTest, WalkFindsEveryMessageAndEveryRecordReopens) {
  const ClientCase &c = GetParam();
  const std::string mail = dir.file("mail");
  std::vector<std::string> expectedBodies;
  for (const Mailbox &box : c.mailboxes) {
    std::vector<std::string> messages;
    int n = 0;
    for (const std::string &body : box.bodies) {
      messages.push_back(headers(box.relativePath + " " + std::to_string(++n), c.eol) + body);
      expectedBodies.push_back(body);
    }
    writeFile(mail + "/" + box.relativePath, c.mailFile(messages));
    writeFile(mail + "/" + box.controlFile, "");
  }
  writeFile(mail + "/Unpaired", "no control file");
  ASSERT_NE(0, SetRegValue(c.key, "MailPath", CString(mail.c_str())));
  agent.init(c.key);
  const std::vector<FoundObject> found = walkStore(agent.entries());
  ASSERT_EQ(expectedBodies.size(), found.size());
  for (size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(expectedBodies[i], found[i].body) << i;
    EXPECT_EQ(863002953, found[i].time) << i;  // 7 May 1997 11:02:33 UTC
  }
  EXPECT_EQ(mail + "/" + c.mailboxes.back().relativePath, found.back().path);
  agent.entries().terminateAgent();
}

INSTANTIATE_TEST_SUITE_P(Clients, ClientStoreTest, ::testing::ValuesIn(clientCases()),
                         [](const auto &info) {
                           const std::string key = info.param.key;
                           return key.substr(key.rfind("MH") + 2);
                         });

// Thunderbird keeps mbox files without an extension beside .msf summary files, with
// sub-folders in .sbd directories: the Netscape agent walks it with CtrlFileExt ".msf".
TEST(ThunderbirdProfile, NetscapeAgentWalksItsMailFolders) {
  TempDir dir;
  setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
  const std::string folders = dir.file("profile/Mail/Local Folders");
  const std::string from = "From - Mon Jan 01 09:00:00 2024\n";
  const std::string other = "From sender@example.org Tue Jan  2 10:00:00 2024\n";
  writeFile(folders + "/Inbox", from + "X-Mozilla-Status: 0001\nSubject: one\n\nFirst\n" +
                                    other + "X-Mozilla-Status: 0001\nSubject: two\n\n" +
                                    ">From the archive\n");
  writeFile(folders + "/Inbox.msf", "// <!-- <mdb:mork:z v=\"1.4\"/> -->\n");
  writeFile(folders + "/Archives.sbd/2023", from + "X-Mozilla-Status: 0001\n\nOld\n");
  writeFile(folders + "/Archives.sbd/2023.msf", "");
  writeFile(folders + "/Archives.msf", "");  // a folder holding only sub-folders
  writeFile(folders + "/Trash", from + "X\n\nno summary file, not a mailbox\n");
  writeFile(folders + "/msgFilterRules.dat", "version=\"9\"\n");

  const char key[] = "Software\\Tuk\\Agents\\MHNetscape";
  ASSERT_NE(0, SetRegValue(key, "MailPath", CString(folders.c_str())));
  ASSERT_NE(0, SetRegValue(key, "CtrlFileExt", CString(".msf")));
  LoadedAgent agent;
  agent.init(key);
  const std::vector<FoundObject> found = walkStore(agent.entries());
  ASSERT_EQ(3u, found.size());
  EXPECT_EQ(folders + "/Inbox", found[0].path);
  EXPECT_EQ("First\n", found[0].body);
  EXPECT_EQ(">From the archive\n", found[1].body);
  EXPECT_EQ(folders + "/Archives.sbd/2023", found[2].path);
  agent.entries().terminateAgent();
}

} // namespace
