// The mhhost fixture.
#include "tests/host/HostFixture.h"

#include "cmn/Registry.h"
#include "tests/support/ClientStores.h"

#include <cstdlib>

std::string lastLine(const std::string &text) {
  const std::vector<std::string> lines = linesOf(text);
  return lines.empty() ? std::string() : lines.back();
}

HostFixture::HostFixture()
    : registry(dir.file("registry.reg")), database(dir.file("index/mhhost.db")) {}

HostResult HostFixture::host(const std::vector<std::string> &arguments, const std::string &input,
                             Input kind) {
  std::vector<std::string> all = {"--registry", registry, "--db", database};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return runProgram(TUK_MHHOST, all, {}, input, kind);
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
