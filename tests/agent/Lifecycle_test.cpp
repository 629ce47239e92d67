// The module's life as a host sees it: initialisations, the client choice, the language, the log,
// the entries that do nothing, and the one export. (An agent without a client: hostile/HostCalls.)
#include "tests/support/LoadedAgent.h"
#include <cstdio>
#include <gtest/gtest.h>
#include <set>

namespace {
TEST(Lifecycle, ClientIsChosenByTheFirstTagFoundInTheKey) {
  const std::pair<const char *, const char *> cases[] = {
      {"Software\\Tuk\\Agents\\MHEudora", "Eudora Mail"},
      {"MHInternet", "Outlook Express/Internet Mail"},
      {"x MHNetscape y", "Netscape Mail"},
      {"prefix MHPegasus", "Pegasus Mail"},
      {"MHPegasus MHNetscape", "Netscape Mail"}, // the table's order, not the key's
  };
  for (const auto &[key, name] : cases) {
    LoadedAgent agent;
    const AgentResult result = agent.init(key);
    EXPECT_STREQ(name, result.agentName) << key;
    EXPECT_EQ((std::vector<uint32_t>{0x10001, 1, 1}),
              (std::vector<uint32_t>{result.fixedWord1, result.fixedWord2, result.fixedWord3}));
    // The two entries that do nothing answer as documented.
    EXPECT_EQ(-1, agent.entries().unsupportedObjectCall(1, 2, 3));
    EXPECT_EQ(0, agent.entries().reservedObjectCall(5, 6));
    agent.entries().terminateAgent();
  }
}

TEST(Lifecycle, RepeatInitialisationKeepsTheFirstClientSinkAndLanguageAndTheLogFlagLasts) {
  LoadedAgent agent;
  CapturedLog::lines().clear();
  const AgentResult first = agent.init("MHEudora", "EN", CapturedLog::sink);
  const AgentResult second = agent.init("MHPegasus", "DE", nullptr);
  EXPECT_EQ(first.entryTable, second.entryTable);
  EXPECT_STREQ("Eudora Mail", second.agentName);
  EXPECT_TRUE(CapturedLog::lines().empty()); // the flag is off during the first life
  const AgentEntryTable &e = agent.entries();
  e.setLogFlag(7);
  e.keepObject(nullptr, 0);
  EXPECT_TRUE(CapturedLog::contains(".\\mhmail|keepObject")); // still the first sink
  // Each initialisation is matched by a termination (counted: hostile/HostCalls).
  e.terminateAgent();
  e.terminateAgent();
  EXPECT_TRUE(CapturedLog::contains(".\\mhmail|tuk_mhmail.dll terminating"));
  // The flag survives termination, so a second life logs its start.
  CapturedLog::lines().clear();
  agent.init("MHEudora", "en", CapturedLog::sink);
  for (const char *line : {"tuk_mhmail.dll initialising!", "Language string: en",
                           "tuk_mhmail.dll initialisation complete"})
    EXPECT_TRUE(CapturedLog::contains(std::string(".\\mhmail|") + line)) << line;
  e.setLogFlag(0);
  e.terminateAgent();
}

// On Windows the DLL's export table is checked from outside (WindowsSuites.cmake).
#ifndef _WIN32
TEST(Exports, OnlyInitAgentLeavesTheLibrary) {
  const std::string command = "nm -D --defined-only " + LoadedAgent::libraryPath();
  FILE *pipe = popen(command.c_str(), "r");
  ASSERT_NE(nullptr, pipe);
  std::set<std::string> exported;
  char line[512];
  while (std::fgets(line, sizeof line, pipe)) {
    char type = 0;
    char name[400] = {};
    if (std::sscanf(line, "%*s %c %399s", &type, name) == 2 && type != 'A')
      exported.insert(name);
  }
  EXPECT_EQ(0, pclose(pipe));
  EXPECT_EQ(std::set<std::string>{"initAgent"}, exported);
}
#endif
} // namespace
