// A fixture for end-to-end tests of mhhost: a temporary folder with the test's own registry
// file and index, and mhhost run against them.
#pragma once

#include "tests/host/HostProcess.h"
#include "tests/support/ClientStores.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>
#include <map>

// One line of mhhost's --json output: a flat object of strings and numbers. A line that is not
// valid JSON of that shape reads as no object, so the tests also check the form.
struct JsonObject {
  std::map<std::string, std::string> strings; // decoded, as UTF-8
  std::map<std::string, long long> numbers;
};
bool parseJsonLine(const std::string &line, JsonObject &object);

class HostFixture {
public:
  HostFixture();
  // mhhost --registry R --db D ARGUMENTS..., with `input` piped or typed at a terminal.
  HostResult host(const std::vector<std::string> &arguments, const std::string &input = "",
                  Input kind = Input::Pipe);
  // host(), which must end with 0.
  HostResult hostOk(const std::vector<std::string> &arguments, const std::string &input = "",
                    Input kind = Input::Pipe);
  // mhhost ARGUMENTS... with nothing added.
  HostResult hostAlone(const std::vector<std::string> &arguments,
                       const std::vector<std::pair<std::string, std::string>> &environment = {}) {
    return runProgram(TUK_MHHOST, arguments, environment);
  }
  // Writes a string value under the agent key of `client` into the test's registry file.
  void setRegistryValue(const std::string &client, const std::string &name,
                        const std::string &value);
  std::string registryText() const { return readFile(registry); }
  // The objects of `mhhost search QUERY --json [more]`, checked to be valid JSON.
  std::vector<JsonObject> searchJson(const std::string &query,
                                     const std::vector<std::string> &more = {});
  // The id of the one hit of a query; 0 when there is not exactly one.
  long long idOf(const std::string &query);
  // `messages` as the Eudora mailbox mail/In, the store set up and indexed.
  void indexMailbox(const std::vector<TestMessage> &messages);
  TempDir dir;
  const std::string registry;
  const std::string database;
};

// The last line of a text.
std::string lastLine(const std::string &text);
// Whether `text` holds `part`; the text is the message when not.
::testing::AssertionResult holds(const std::string &text, const std::string &part);
// Whether the run ended with 0 and its last line, the index run's summary, starts
// "indexed: " + `counts`.
::testing::AssertionResult indexed(const HostResult &run, const std::string &counts);
// Whether the run ended with `status` and said `said` on its standard error.
::testing::AssertionResult refused(const HostResult &run, int status, const std::string &said);
