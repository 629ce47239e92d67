// A fixture for end-to-end tests of mhhost: a temporary folder with the test's own registry
// file and index, and mhhost run against them.
#pragma once

#include "tests/host/HostProcess.h"
#include "tests/host/JsonLine.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class HostFixture {
public:
  HostFixture();

  // mhhost --registry R --db D ARGUMENTS..., with `input` piped or typed at a terminal.
  HostResult host(const std::vector<std::string> &arguments, const std::string &input = "",
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

  TempDir dir;
  const std::string registry;
  const std::string database;
};

// The last line of a text.
std::string lastLine(const std::string &text);
