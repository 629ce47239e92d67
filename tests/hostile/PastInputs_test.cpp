// Inputs that once broke the agent (tests/hostile/cases/<target>/) and the fuzz targets' seeds
// (fuzz/corpus/<target>/): each goes through its fuzz target's property check, which aborts
// when a property does not hold, in a child process with a time bound. All must end cleanly.
//
// The fuzz targets are compiled in here as they are, each under a name of its own.
#include "fuzz/FuzzAgent.cpp"
#include "fuzz/FuzzSupport.cpp"

#define LLVMFuzzerTestOneInput checkMessageInit
#include "fuzz/message_init_fuzz.cpp"
#undef LLVMFuzzerTestOneInput
#define LLVMFuzzerTestOneInput checkMailDate
#include "fuzz/mail_date_fuzz.cpp"
#undef LLVMFuzzerTestOneInput
#define FUZZ_MAIL_FILE CEudoraMailFile
#define LLVMFuzzerTestOneInput checkFramingEudora
#include "fuzz/framing_fuzz.cpp"
#undef LLVMFuzzerTestOneInput
#define LLVMFuzzerTestOneInput checkPairing
#include "fuzz/pairing_fuzz.cpp"
#undef LLVMFuzzerTestOneInput
#define LLVMFuzzerTestOneInput checkRegistry
#include "fuzz/registry_fuzz.cpp"
#undef LLVMFuzzerTestOneInput
#define LLVMFuzzerTestOneInput checkIni
#include "fuzz/ini_fuzz.cpp"
#undef LLVMFuzzerTestOneInput

#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Check = int (*)(const uint8_t *data, size_t size);

struct Target {
  const char *name;
  Check check;
};

void PrintTo(const Target &target, std::ostream *out) {
  *out << target.name;
}

const Target kTargets[] = {
    {"message_init", checkMessageInit},
    {"mail_date", checkMailDate},
    {"framing_eudora", checkFramingEudora},
    {"framing_internet", checkFraming<CInternetMailMailFile>},
    {"framing_netscape", checkFraming<CNetscapeMailFile>},
    {"framing_pegasus", checkFraming<CPegasusMailFile>},
    {"pairing", checkPairing},
    {"registry", checkRegistry},
    {"ini", checkIni},
};

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

struct Replay {
  int status = -1;   // the child's, from waitpid
  std::string input; // the last input the child took up
};

// Runs every input through the check in a child, each within `seconds`. The child ends with
// 0 when all ended cleanly, or of a signal when one crashed, broke a property (abort) or ran
// too long (SIGALRM). It names each input on a pipe before it takes it up.
Replay replay(const Target &target, const std::vector<std::string> &inputs, unsigned seconds) {
  Replay result;
  int names[2];
  if (pipe(names) != 0)
    return result;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    close(names[0]);
    for (const std::string &input : inputs) {
      const std::string bytes = readFile(input);
      const std::string line = input + "\n";
      if (write(names[1], line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        _exit(3);
      alarm(seconds);
      target.check(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
      alarm(0);
    }
    std::exit(0); // removes the scratch folder
  }
  close(names[1]);
  std::string taken;
  char chunk[4096];
  ssize_t count;
  while ((count = read(names[0], chunk, sizeof chunk)) > 0)
    taken.append(chunk, static_cast<size_t>(count));
  close(names[0]);
  if (child < 0 || waitpid(child, &result.status, 0) != child)
    return result;
  const size_t lastStart = taken.rfind('\n', taken.size() >= 2 ? taken.size() - 2 : 0);
  result.input = taken.substr(lastStart == std::string::npos ? 0 : lastStart + 1);
  return result;
}

class PastInputs : public ::testing::TestWithParam<Target> {};

TEST_P(PastInputs, EndCleanly) {
  const Target &target = GetParam();
  std::vector<std::string> inputs =
      filesIn(std::string(TUK_SOURCE_DIR) + "/tests/hostile/cases/" + target.name);
  for (const std::string &seed :
       filesIn(std::string(TUK_SOURCE_DIR) + "/fuzz/corpus/" + target.name))
    inputs.push_back(seed);
  ASSERT_FALSE(inputs.empty());
  const Replay result = replay(target, inputs, 60);
  EXPECT_TRUE(WIFEXITED(result.status) && WEXITSTATUS(result.status) == 0)
      << target.name << ": " << (WIFSIGNALED(result.status) ? "died of signal " : "exit ")
      << (WIFSIGNALED(result.status) ? WTERMSIG(result.status) : WEXITSTATUS(result.status))
      << " on " << result.input;
}

INSTANTIATE_TEST_SUITE_P(Targets, PastInputs, ::testing::ValuesIn(kTargets),
                         [](const ::testing::TestParamInfo<Target> &info) {
                           return std::string(info.param.name);
                         });

} // namespace
