// The damaged-store fixture: a private registry and the loaded agent.
#include "tests/hostile/HostileStore.h"

#include "cmn/Registry.h"

#include <cstdlib>

const char kEudoraKey[] = "Software\\Tuk\\Agents\\MHEudora";
const char kNetscapeKey[] = "Software\\Tuk\\Agents\\MHNetscape";

std::string eudoraMessage(const std::string &subject, const std::string &body) {
  return "From ???@??? Mon\r\nSubject: " + subject + "\r\nDate: 15 Jan 1998 10:00:00\r\n\r\n" +
         body;
}

void HostileStoreTest::SetUp() {
  setenv("TUK_REGISTRY", dir.file("registry.reg").c_str(), 1);
  setenv("TZ", "UTC", 1);
  mail = dir.file("mail");
  makeDirs(mail);
  startAgent(kEudoraKey);
}

void HostileStoreTest::TearDown() {
  if (started_)
    entries().terminateAgent();
}

void HostileStoreTest::startAgent(const char *key, LogSink sink) {
  if (started_)
    entries().terminateAgent();
  ASSERT_NE(0, SetRegValue(key, "MailPath", CString(mail.c_str())));
  agent_.init(key, "EN", sink);
  started_ = true;
}
