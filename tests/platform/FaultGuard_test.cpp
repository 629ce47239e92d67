// runGuarded: a read of a mapping that another writer cut short fails the call, and only
// that call; every other SIGBUS keeps its old meaning.
#include "platform/FaultGuard.h"
#include "platform/Files.h"
#include "tests/support/TestFiles.h"
#include <atomic>
#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define TUK_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TUK_UNDER_ASAN 1
#endif
#endif

namespace {
size_t pageSize() {
  return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

bool guardedRead(const unsigned char *at, unsigned char &value) {
  return runGuarded([&] { value = *at; });
}

bool busErrorBlocked() {
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return sigismember(&mask, SIGBUS) == 1;
}

void waitFor(const std::atomic<bool> &flag) {
  while (!flag)
    std::this_thread::yield();
}

// A mailbox of three pages, mapped through the stand-ins and then cut to one page behind the
// mapping's back, as a mail client does when it compacts a mailbox.
class TruncatedMapping : public ::testing::Test {
protected:
  void SetUp() override {
    path_ = dir_.file("In.mbx");
    writeFile(path_, std::string(3 * pageSize(), 'x'));
    file_.reset(CreateFileA(path_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    mapping_.reset(CreateFileMappingA(file_.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    view_.reset(MapViewOfFile(mapping_.get(), FILE_MAP_READ, 0, 0, 0));
    ASSERT_NE(view_.get(), nullptr);
    ASSERT_EQ(truncate(path_.c_str(), static_cast<off_t>(pageSize())), 0);
  }
  const unsigned char *keptByte() const { return view_.get() + 10; }
  const unsigned char *cutOffByte() const { return view_.get() + 2 * pageSize() + 10; }

private:
  TempDir dir_;
  std::string path_;
  ScopedHandle file_;
  ScopedHandle mapping_;
  ScopedView view_;
};

// Reads a page of a shared mapping that lies wholly past its file's end, outside any guard.
void faultOutsideAnyGuard() {
  FILE *file = tmpfile();
  if (file == nullptr || ftruncate(fileno(file), static_cast<off_t>(pageSize())) != 0)
    _exit(3);
  void *page = mmap(nullptr, pageSize(), PROT_READ, MAP_SHARED, fileno(file), 0);
  if (page == MAP_FAILED || ftruncate(fileno(file), 0) != 0)
    _exit(3);
  (void)*static_cast<volatile const unsigned char *>(page);
}

// How a process dies of a SIGBUS that nobody handles: by the signal, or under
// AddressSanitizer, whose handler was there before ours, of the sanitizer's report, which
// exits with 1 or, with abort_on_error set, aborts.
bool diedOfBusError(int status) {
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGBUS)
    return true;
#ifdef TUK_UNDER_ASAN
  return (WIFEXITED(status) && WEXITSTATUS(status) == 1) ||
         (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
#else
  return false;
#endif
}
} // namespace

TEST_F(TruncatedMapping, AReadPastTheNewEndFailsItsOwnGuardOnlyAndLaterReadsStillWork) {
  unsigned char value = 0;
  EXPECT_FALSE(guardedRead(cutOffByte(), value));
  // The jump out of the handler must not leave SIGBUS blocked: a second fault would kill.
  EXPECT_FALSE(busErrorBlocked());
  EXPECT_FALSE(guardedRead(cutOffByte(), value));
  EXPECT_TRUE(guardedRead(keptByte(), value));
  EXPECT_EQ(value, 'x');
  // Nested guards each catch their own fault.
  bool innerCompleted = true;
  bool outerWentOn = false;
  EXPECT_TRUE(runGuarded([&] {
    innerCompleted = guardedRead(cutOffByte(), value);
    outerWentOn = true;
  }));
  EXPECT_FALSE(innerCompleted);
  EXPECT_TRUE(outerWentOn);
  // Once an inner call has ended, a fault belongs to the outer call again.
  innerCompleted = false;
  EXPECT_FALSE(runGuarded([&] {
    innerCompleted = guardedRead(keptByte(), value);
    value = *cutOffByte();
  }));
  EXPECT_TRUE(innerCompleted);
}

TEST_F(TruncatedMapping, AGuardArmedLaterOnAnotherThreadDoesNotCatchThisThreadsFault) {
  // A frame shared by all threads would jump this thread into the other's stack and most
  // likely hang both: the alarm turns that into a failure.
  alarm(30);
  std::atomic<bool> thisArmed{false};
  std::atomic<bool> otherArmed{false};
  std::atomic<bool> faultTaken{false};
  bool otherCompleted = false;
  std::thread other([&] {
    waitFor(thisArmed);
    otherCompleted = runGuarded([&] {
      otherArmed = true;
      waitFor(faultTaken);
    });
  });
  unsigned char value = 0;
  EXPECT_FALSE(runGuarded([&] {
    thisArmed = true;
    waitFor(otherArmed);
    value = *cutOffByte();
  }));
  faultTaken = true;
  other.join();
  alarm(0);
  EXPECT_TRUE(otherCompleted);
}

TEST(FaultGuardDeathTest, ABusErrorNoGuardClaimsKillsOrGoesWhereItWentBefore) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        runGuarded([] {});
        faultOutsideAnyGuard();
      },
      diedOfBusError, "");
  // A guard armed on another thread is no guard for this one.
  EXPECT_EXIT(
      {
        std::atomic<bool> armed{false};
        std::thread holder([&] {
          runGuarded([&] {
            armed = true;
            for (;;)
              pause();
          });
        });
        waitFor(armed);
        faultOutsideAnyGuard();
      },
      diedOfBusError, "");
  // A SIGBUS that is sent, not caused by a read, is no damaged read.
  EXPECT_EXIT(runGuarded([] { raise(SIGBUS); }), diedOfBusError, "");
  // Ignoring SIGBUS never saved a process from a fault; it does not now.
  EXPECT_EXIT(
      {
        signal(SIGBUS, SIG_IGN);
        runGuarded([] {});
        faultOutsideAnyGuard();
      },
      ::testing::KilledBySignal(SIGBUS), "");
  // A handler that was there before gets the fault.
  EXPECT_EXIT(
      {
        struct sigaction earlier = {};
        earlier.sa_sigaction = [](int, siginfo_t *info, void *) {
          _exit(info->si_code > 0 ? 42 : 1);
        };
        earlier.sa_flags = SA_SIGINFO;
        sigaction(SIGBUS, &earlier, nullptr);
        runGuarded([] {});
        faultOutsideAnyGuard();
      },
      ::testing::ExitedWithCode(42), "");
  // An ignored SIGBUS that is sent, not caused, stays ignored.
  EXPECT_EXIT(
      {
        signal(SIGBUS, SIG_IGN);
        _exit(runGuarded([] { raise(SIGBUS); }) ? 7 : 1);
      },
      ::testing::ExitedWithCode(7), "");
}
