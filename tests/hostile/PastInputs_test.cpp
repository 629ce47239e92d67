// Inputs that once broke the agent (tests/hostile/cases/<target>/) and the fuzz targets' seeds
// (fuzz/corpus/<target>/): each goes through its fuzz target's property check, which aborts when a
// property does not hold, in a child process of its own with a time bound. All must end cleanly.
#include "tests/support/TestFiles.h"
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

// Each target's entry, compiled once more as fuzz_<target> (tests/CMakeLists.txt).
#define FUZZ_TARGET(name) extern "C" int fuzz_##name(const uint8_t *data, size_t size);
TUK_FUZZ_TARGETS
#undef FUZZ_TARGET

namespace {
struct Target {
  const char *name;
  int (*check)(const uint8_t *data, size_t size);
};

void PrintTo(const Target &target, std::ostream *out) {
  *out << target.name;
}

#define FUZZ_TARGET(name) {#name, fuzz_##name},
const Target kTargets[] = {TUK_FUZZ_TARGETS};
#undef FUZZ_TARGET

std::vector<std::string> filesIn(const std::string &folder) {
  std::vector<std::string> files;
  if (DIR *listing = opendir(folder.c_str())) {
    while (const dirent *entry = readdir(listing))
      if (entry->d_name[0] != '.')
        files.push_back(folder + "/" + entry->d_name);
    closedir(listing);
  }
  return files;
}

class PastInputs : public ::testing::TestWithParam<Target> {};

TEST_P(PastInputs, EndCleanly) {
  const Target &target = GetParam();
  TempDir scratch; // where the checks make their scratch folders, which a child leaves behind
  setenv("TUK_FUZZ_SCRATCH", scratch.path().c_str(), 1);
  std::vector<std::string> inputs =
      filesIn(std::string(TUK_SOURCE_DIR) + "/tests/hostile/cases/" + target.name);
  for (const std::string &seed :
       filesIn(std::string(TUK_SOURCE_DIR) + "/fuzz/corpus/" + target.name))
    inputs.push_back(seed);
  ASSERT_FALSE(inputs.empty());
  for (const std::string &input : inputs) {
    const std::string bytes = readFile(input);
    const int status = runInChild(
        [&] {
          target.check(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
          return 0;
        },
        60);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
        << describeStatus(status) << " on " << input;
  }
}

INSTANTIATE_TEST_SUITE_P(Targets, PastInputs, ::testing::ValuesIn(kTargets),
                         [](const ::testing::TestParamInfo<Target> &info) {
                           return std::string(info.param.name);
                         });
} // namespace
