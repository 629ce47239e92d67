// The registry file under several writer processes at once, some of them killed at random
// moments: every value a writer was told is written is there afterwards, of its type, and the
// file reads whole at every moment for a reader running beside them.
#include "cmn/Registry.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestFiles.h"
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {
using Clock = std::chrono::steady_clock;

std::string valueName(int writer, int round, int at) {
  return "W" + std::to_string(writer) + "." + std::to_string(round) + "." + std::to_string(at);
}

// A writer process: sets its own values, one after the other, strings and integers taking
// turns, and tells the parent through a pipe of each one that SetRegValue reported written.
struct Writer {
  pid_t pid = -1;
  int claims = -1; // the read end of its pipe: the index of each value, 4 bytes
};

Writer startWriter(int writer, int round, Clock::time_point until) {
  int ends[2];
  if (pipe(ends) != 0)
    return {};
  const pid_t pid = fork();
  if (pid == 0) {
    close(ends[0]);
    for (int32_t at = 0; Clock::now() < until; ++at) {
      const std::string name = valueName(writer, round, at);
      const int written = at % 2 ? SetRegValue("Stress", name.c_str(), at)
                                 : SetRegValue("Stress", name.c_str(), CString(name.c_str()));
      if (!written || write(ends[1], &at, sizeof at) != sizeof at)
        _exit(1);
    }
    _exit(0);
  }
  close(ends[1]);
  return {pid, ends[0]};
}

// A reader beside the writers: a value written before they started must read at every
// moment. It exits with 1 at the first read that fails, with 0 at `until`.
pid_t startReader(Clock::time_point until) {
  const pid_t pid = fork();
  if (pid == 0) {
    CString text;
    while (Clock::now() < until)
      if (!GetRegValue("Stress", "Before", text) || text != "stays")
        _exit(1);
    _exit(0);
  }
  return pid;
}

int statusOf(pid_t child) {
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  return status;
}

// Waits for writer `index` of `round` to end; every value it claimed must read back as it was
// written. Its wait status, and how many it claimed.
std::pair<int, size_t> finish(const Writer &writer, int index, int round) {
  std::vector<int32_t> claimed;
  int32_t at = 0;
  while (read(writer.claims, &at, sizeof at) == sizeof at)
    claimed.push_back(at);
  close(writer.claims);
  const int status = statusOf(writer.pid);
  for (const int32_t value : claimed) {
    const std::string name = valueName(index, round, value);
    int32_t number = -1;
    CString text;
    if (value % 2) {
      EXPECT_NE(0, GetRegValue("Stress", name.c_str(), &number)) << name;
      EXPECT_EQ(value, number);
    } else {
      EXPECT_NE(0, GetRegValue("Stress", name.c_str(), text)) << name;
      EXPECT_EQ(name, std::string(text.GetString()));
    }
  }
  return {status, claimed.size()};
}

class RegistryStressTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_NE(0, SetRegValue("Stress", "Before", CString("stays"))); }
  TempDir dir;
  ScopedEnvironment registry{"TUK_REGISTRY", dir.file("cfg/registry.reg")};
};

// Three writers at a time: the first round runs to its end, and each writer must get the lock;
// in every later round each writer is killed at a moment of its own, most of them in the middle
// of a write.
TEST_F(RegistryStressTest, WritersAtOnceOrKilledAtRandomMomentsLoseNoValueThatWasWritten) {
  std::mt19937 random(5);
  const auto end = Clock::now() + std::chrono::seconds(20);
  const pid_t reader = startReader(end);
  for (int round = 0; round < 12 && Clock::now() < end; ++round) {
    const auto until = round == 0 ? Clock::now() + std::chrono::seconds(3) : end;
    std::vector<Writer> writers;
    for (int writer = 0; writer < 3; ++writer)
      writers.push_back(startWriter(writer, round, until));
    for (Writer &writer : writers) {
      usleep(static_cast<useconds_t>(1000 + random() % 60000));
      if (round > 0)
        kill(writer.pid, SIGKILL);
    }
    for (int writer = 0; writer < 3; ++writer) {
      const auto [status, claimed] = finish(writers[writer], writer, round);
      if (round == 0) {
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "writer " << writer;
        EXPECT_NE(0u, claimed) << "writer " << writer << " never got the lock";
      } else {
        EXPECT_TRUE(WIFSIGNALED(status)) << "writer " << writer << " stopped on its own";
      }
    }
  }
  kill(reader, SIGKILL); // had a read failed, it would have exited with 1 already
  const int status = statusOf(reader);
  EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) != 0) << "a read failed mid-write";
  // A killed writer leaves no lock behind, and the file takes a write at once.
  EXPECT_NE(0, SetRegValue("Stress", "After", 1));
  CString text;
  EXPECT_NE(0, GetRegValue("Stress", "Before", text));
}

} // namespace
