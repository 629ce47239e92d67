// Without TZ the zone is /etc/localtime's: a new file there is seen at the next refresh, as
// mktime sees it. It is replaced in a private mount namespace of a child process, never on
// the system; where no such namespace may be made, the test is skipped.
#include "store/LocalTime.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

namespace {

constexpr int kNoPrivateNamespace = 77;

// Noon of 1 June 2024 in the zone of `zoneFile` put in /etc/localtime's place, converted by
// the tables; -1 when the file can't be put there, and 1 when mktime says otherwise.
time_t noonUnder(const char *zoneFile) {
  if (::mount(zoneFile, "/etc/localtime", nullptr, MS_BIND, nullptr) != 0)
    return -1;
  refreshTimeZone();
  struct tm noon = {};
  noon.tm_year = 124, noon.tm_mon = 5, noon.tm_mday = 1, noon.tm_hour = 12;
  const time_t seconds = localTimeToSeconds(noon);
  noon.tm_isdst = -1;
  return seconds == std::mktime(&noon) ? seconds : 1;
}

int replaceTheZoneFile() {
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 ||
      ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
    return kNoPrivateNamespace;
  ::unsetenv("TZ");
  const time_t berlin = noonUnder("/usr/share/zoneinfo/Europe/Berlin");
  const time_t newYork = noonUnder("/usr/share/zoneinfo/America/New_York");
  if (berlin == -1 || newYork == -1)
    return kNoPrivateNamespace;
  return newYork - berlin == time_t{6} * 3600 ? 0 : 1;
}

TEST(LocalTime, FollowsANewZoneFileWithoutTz) {
  const int status = runInChild(replaceTheZoneFile, 30);
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNoPrivateNamespace)
    GTEST_SKIP() << "no private mount namespace here";
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << describeStatus(status);
}

} // namespace
