// getObjectIcon: the client program's two icon indices from the shell, kept once both are
// known and asked for again until then.
#include "platform/Shell.h"
#include "tests/settings/SettingsFixture.h"
#include <cstdio>

namespace {
class IconTest : public SettingsTest, public ::testing::WithParamInterface<Client> {
protected:
  void SetUp() override { start(GetParam().key); }
  // The indices, as "small,large".
  std::string icons() {
    int32_t small = -1, large = -1;
    EXPECT_EQ(0, entries().getObjectIcon(0, &small, &large));
    return std::to_string(small) + "," + std::to_string(large);
  }
  size_t shellAsked() const {
    size_t count = 0;
    for (const std::string &line : CapturedLog::lines())
      count += line.find("|getObjectIcon called") != std::string::npos;
    return count;
  }
  void storeExePath(const std::string &path) {
    SetRegValue(GetParam().key.c_str(), "ExePath", CString(path.c_str()));
  }
};

TEST_P(IconTest, BothIndicesComeFromTheProgramFileAndAreKeptOnceKnown) {
  const std::string program = dir.file("bin/") + GetParam().program;
  writeFile(program, "MZ");
  storeExePath(dir.file("bin"));
  const std::string first = icons();
  const size_t comma = first.find(',');
  EXPECT_NE("0", first.substr(0, comma));
  EXPECT_EQ(first.substr(0, comma), first.substr(comma + 1)); // one icon, in both lists
  EXPECT_TRUE(CapturedLog::contains("Getting icons from [" + program + "]"));
  // Kept: neither the registry nor the program file is looked at again.
  std::remove(program.c_str());
  storeExePath(dir.file("elsewhere"));
  EXPECT_EQ(first, icons());
  EXPECT_EQ(1u, shellAsked());
}

TEST_P(IconTest, AMissingProgramGivesNoIconsAndIsAskedForAgain) {
  storeExePath(dir.file("bin"));
  EXPECT_EQ("0,0", icons());
  EXPECT_EQ("0,0", icons());
  EXPECT_EQ(2u, shellAsked());
  // With no ExePath at all the shell is asked for the program at the root.
  std::remove(registryPath.c_str());
  EXPECT_EQ("0,0", icons());
  EXPECT_TRUE(
      CapturedLog::contains(std::string("Getting icons from [/") + GetParam().program + "]"));
}

TEST_P(IconTest, OneIndexOfTheTwoIsGivenAndBothAreAskedForNextTime) {
  writeFile(dir.file("bin/") + GetParam().program, "MZ");
  storeExePath(dir.file("bin"));
  failIconLookups(true);
  const std::string half = icons();
  EXPECT_EQ("0,", half.substr(0, 2));
  EXPECT_NE("0,0", half);
  const std::string whole = icons();
  EXPECT_EQ(half.substr(2), whole.substr(whole.find(',') + 1));
  EXPECT_EQ(whole.substr(0, whole.find(',')), whole.substr(whole.find(',') + 1));
  EXPECT_EQ(2u, shellAsked());
}

INSTANTIATE_TEST_SUITE_P(Clients, IconTest, ::testing::ValuesIn(allClients()),
                         [](const auto &info) { return std::string(info.param.name); });
} // namespace
