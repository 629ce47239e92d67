// The index after a run equals a fresh index of the store as it stands, whatever the client
// wrote between runs.
#include "tests/host/HostFixture.h"

#include <gtest/gtest.h>

namespace {

// A message the client was still writing at the first run, finished before the second.
TEST(HostUpdatesTest, AMessageThatGrewIsHeldOnceWithItsWholeText) {
  HostFixture fixture;
  const std::string inbox = fixture.dir.file("ns/Inbox");
  writeFile(inbox, "From - Thu Jan 15 10:30:45 1998\r\nFrom: a@b.c\r\nSubject: first\r\n\r\n"
                   "hello one\r\n");
  writeFile(inbox + ".snm", std::string(64, '\0'));
  ASSERT_EQ(fixture.host({"config", "--client", "netscape", "--mail-dir", fixture.dir.file("ns"),
                          "--yes"}).status, 0);
  appendFile(inbox, "From - Thu Jan 15 10:31:45 1998\r\nFrom: x@y.z\r\nSubject: second\r\n\r\n"
                    "half of");
  ASSERT_EQ(fixture.host({"index", "--client", "netscape"}).status, 0);
  appendFile(inbox, " it, now done zebra\r\n");
  const HostResult run = fixture.host({"index", "--client", "netscape"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("1 new, 1 unchanged, 1 removed"), std::string::npos) << run.out;
  EXPECT_EQ(fixture.searchJson("subject:second").size(), 1u);
  EXPECT_EQ(fixture.searchJson("zebra").size(), 1u);
}

} // namespace
