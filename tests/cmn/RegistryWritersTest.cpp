// A registry writer killed in the middle of rewriting a large file leaves the whole file,
// old or new. (Writers at once and a reader beside them: hostile/RegistryStress.)
#include "tests/cmn/RegistryFixture.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

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
    const pid_t child = fork();
    if (child == 0) {
      for (int32_t next = last + 1; SetRegValue("K", "Counter", next); ++next) {
      }
      _exit(1); // a write failed
    }
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
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
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
