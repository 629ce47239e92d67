// The agent's store fixture: a private registry and the loaded agent.
#include "tests/support/AgentStore.h"

#include "cmn/Registry.h"

#include <cstdlib>

const char kEudoraKey[] = "Software\\Tuk\\Agents\\MHEudora";
const char kNetscapeKey[] = "Software\\Tuk\\Agents\\MHNetscape";

std::string eudoraMessage(const std::string &subject, const std::string &body) {
  return "From ???@??? Mon\r\nSubject: " + subject + "\r\nDate: 15 Jan 1998 10:00:00\r\n\r\n" +
         body;
}

void AgentStoreTest::SetUp() {
  setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
  setenv("TZ", "UTC", 1);
  makeDirs(mail);
  startAgent(kEudoraKey);
}

void AgentStoreTest::TearDown() {
  if (started_) {
    entries().setLogFlag(0);
    entries().terminateAgent();
  }
}

AgentResult AgentStoreTest::startAgent(const std::string &key, LogSink sink,
                                       const std::string &language) {
  if (started_)
    entries().terminateAgent();
  EXPECT_NE(0, SetRegValue(key.c_str(), "MailPath", CString(mail.c_str())));
  started_ = true;
  return agent_.init(key, language, sink);
}

void AgentStoreTest::startLogging(const std::string &key) {
  CapturedLog::lines().clear();
  startAgent(key, CapturedLog::sink);
  entries().setLogFlag(1);
}

void AgentStoreTest::mailbox(const std::string &stem, const std::string &bytes) {
  writeFile(mail + "/" + stem + ".mbx", bytes);
  writeFile(mail + "/" + stem + ".toc", "");
}

std::vector<std::string> AgentStoreTest::pathsOf(const StoreWalk &walk) {
  std::vector<std::string> paths;
  for (const KeptRecord &record : walk.records)
    paths.push_back(record.path);
  return paths;
}
