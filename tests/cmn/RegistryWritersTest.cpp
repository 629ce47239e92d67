// Registry writers in several processes: concurrent writes, and a writer killed mid-write.
#include "tests/cmn/RegistryFixture.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `body` in a child process that exits 0 when it returns true; the child never returns
// into the test framework.
pid_t spawn(const std::function<bool()> &body) {
  const pid_t child = fork();
  if (child == 0)
    _exit(body() ? 0 : 1);
  return child;
}

int waitFor(pid_t child) {
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  return status;
}

TEST_F(RegistryTest, ConcurrentWritersLoseNoValue) {
  constexpr int kWritesEach = 100;
  const auto writer = [](char tag) {
    return [tag] {
      for (int32_t at = 0; at < kWritesEach; ++at) {
        const std::string name = tag + std::to_string(at);
        if (!SetRegValue("Shared", name.c_str(), at))
          return false;
      }
      return true;
    };
  };
  const pid_t first = spawn(writer('A'));
  const pid_t second = spawn(writer('B'));
  ASSERT_GT(first, 0);
  ASSERT_GT(second, 0);
  EXPECT_EQ(0, waitFor(first));
  EXPECT_EQ(0, waitFor(second));
  for (int32_t at = 0; at < kWritesEach; ++at) {
    EXPECT_EQ(std::optional<int32_t>(at), readNumber("Shared", ("A" + std::to_string(at)).c_str()));
    EXPECT_EQ(std::optional<int32_t>(at), readNumber("Shared", ("B" + std::to_string(at)).c_str()));
  }
}

TEST_F(RegistryTest, WriterKilledMidWriteLeavesAWholeFile) {
  // Megabytes of comments make every write long, so that most kills land inside one.
  std::string padding;
  char line[128];
  for (int at = 0; at < 40000; ++at) {
    std::snprintf(line, sizeof line, "; padding line %05d that a rewrite must keep as it is\n", at);
    padding += line;
  }
  const std::string before = "Windows Registry Editor Version 5.00\n\n" + padding +
                             "[K]\n\"Counter\"=dword:";
  const std::string after = "\n\"Fixed\"=\"stays\"\n";
  writeFile(registry_, before + "00000000" + after);

  std::mt19937 random(7);
  int32_t last = 0;
  for (int round = 0; round < 20; ++round) {
    const pid_t child = spawn([last] {
      for (int32_t next = last + 1;; ++next) {
        if (!SetRegValue("K", "Counter", next))
          return false;
      }
    });
    ASSERT_GT(child, 0);
    // Once one of its writes has landed, the child is busy with the next: kill it at a random
    // moment of that one.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    bool landed = false;
    while (!(landed = readNumber("K", "Counter").value_or(last) != last) &&
           std::chrono::steady_clock::now() < deadline)
      usleep(1000);
    if (landed)
      usleep(static_cast<useconds_t>(random() % 30000));
    kill(child, SIGKILL);
    const int status = waitFor(child);
    ASSERT_TRUE(landed) << "no write landed in 30 s";
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer stopped on its own: a write failed";

    const std::optional<int32_t> counter = readNumber("K", "Counter");
    ASSERT_TRUE(counter.has_value());
    ASSERT_GE(*counter, last);
    char digits[16];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(*counter));
    // Compared as a flag: a failure must not print megabytes.
    ASSERT_TRUE(readFile(registry_) == before + digits + after) << "round " << round;
    last = *counter;
  }
  // The lock went with the killed writer: the next write does not wait.
  EXPECT_NE(0, SetRegValue("K", "Counter", 0));
}

}  // namespace
