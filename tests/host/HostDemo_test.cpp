// mhhost demo: the four generated stores are configured, indexed, searched and shown, asking
// nothing, in a folder of the demo's own.
#include "tests/host/HostFixture.h"

namespace {
TEST(HostDemoTest, RunsEveryStepOnAllFourClientsInItsOwnFolder) {
  HostFixture fixture;
  const std::string folder = fixture.dir.file("demo");
  // The person's own registry file and index are not touched.
  const std::vector<std::pair<std::string, std::string>> environment = {
      {"TUK_REGISTRY", fixture.registry}, {"XDG_DATA_HOME", fixture.dir.file("data")}};
  const HostResult run = fixture.hostAlone({"demo", "--dir", folder}, environment);
  ASSERT_EQ(0, run.status) << run.out << run.err;
  // Each step is shown as the command a person would type.
  size_t configured = 0;
  for (const std::string &line : linesWith(run.out, " config --client "))
    configured += line.compare(0, 9, "$ mhhost ") == 0 ? 1 : 0;
  EXPECT_EQ(4u, configured);
  const std::vector<std::string> indexed = linesWith(run.out, "indexed: ");
  ASSERT_EQ(4u, indexed.size());
  for (const std::string &line : indexed)
    EXPECT_EQ(std::string::npos, line.find("indexed: 0 new")) << line;
  // One View Email window per client, each from its own store.
  for (const char *store : {"/eudora/", "/internet/", "/netscape/", "/pegasus/"})
    EXPECT_EQ(1u, linesWith(run.out, "Location: " + folder + store).size()) << store;
  // The one warning of the settings check, answered without asking.
  EXPECT_EQ(1u, linesWith(run.out, "(answered Cancel)").size());
  EXPECT_TRUE(fileExists(folder + "/registry.reg"));
  EXPECT_TRUE(fileExists(folder + "/mhhost.db"));
  EXPECT_FALSE(fileExists(fixture.registry));
  EXPECT_FALSE(fileExists(fixture.dir.file("data/tuk/mhhost.db")));
  // A folder that holds something already is not the demo's.
  EXPECT_TRUE(
      refused(fixture.hostAlone({"demo", "--dir", folder}, environment), 1, "not an empty folder"));
}
} // namespace
