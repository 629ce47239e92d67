// The mhhost fixture.
#include "tests/host/HostFixture.h"

#include "cmn/Registry.h"

#include <cstdlib>

std::string lastLine(const std::string &text) {
  const std::vector<std::string> lines = linesOf(text);
  return lines.empty() ? std::string() : lines.back();
}

::testing::AssertionResult holds(const std::string &text, const std::string &part) {
  if (text.find(part) != std::string::npos)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "no \"" << part << "\" in:\n" << text;
}

::testing::AssertionResult indexed(const HostResult &run, const std::string &counts) {
  if (run.status == 0 && lastLine(run.out).rfind("indexed: " + counts, 0) == 0)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "status " << run.status << ", not \"indexed: " << counts
                                       << "\":\n" << run.out << run.err;
}

::testing::AssertionResult refused(const HostResult &run, int status, const std::string &said) {
  if (run.status == status && run.err.find(said) != std::string::npos)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "status " << run.status << ", not " << status
                                       << " with \"" << said << "\":\n" << run.err;
}

HostFixture::HostFixture()
    : registry(dir.file("registry.reg")), database(dir.file("index/mhhost.db")) {}

HostResult HostFixture::host(const std::vector<std::string> &arguments, const std::string &input,
                             Input kind) {
  std::vector<std::string> all = {"--registry", registry, "--db", database};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return runProgram(TUK_MHHOST, all, {}, input, kind);
}

HostResult HostFixture::hostOk(const std::vector<std::string> &arguments,
                               const std::string &input, Input kind) {
  const HostResult run = host(arguments, input, kind);
  EXPECT_EQ(0, run.status) << arguments.back() << ": " << run.err;
  return run;
}

void HostFixture::setRegistryValue(const std::string &client, const std::string &name,
                                   const std::string &value) {
  setenv("TUK_REGISTRY", registry.c_str(), 1);
  ASSERT_NE(0, SetRegValue(agentKeyOf(client).c_str(), name.c_str(), CString(value.c_str())));
}

std::vector<JsonObject> HostFixture::searchJson(const std::string &query,
                                                const std::vector<std::string> &more) {
  std::vector<std::string> arguments = {"search", query, "--json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const HostResult result = host(arguments);
  EXPECT_EQ(0, result.status) << result.err;
  std::vector<JsonObject> objects;
  for (const std::string &line : linesOf(result.out)) {
    JsonObject object;
    EXPECT_TRUE(parseJsonLine(line, object)) << "not a JSON object: " << line;
    objects.push_back(object);
  }
  return objects;
}

long long HostFixture::idOf(const std::string &query) {
  const std::vector<JsonObject> hits = searchJson(query);
  return hits.size() == 1 ? hits.front().numbers.at("id") : 0;
}

void HostFixture::indexMailbox(const std::vector<TestMessage> &messages) {
  writeMailbox("eudora", dir.file("mail/In"), messages);
  setRegistryValue("eudora", "MailPath", dir.file("mail"));
  EXPECT_TRUE(indexed(host({"--client", "eudora", "index"}), ""));
}
