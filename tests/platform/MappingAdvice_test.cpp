// A view asks for huge pages: without it, a mailbox read from disk through the agent's
// mappings stays cached in 4 KB pieces, and every later view of it reads several times
// slower (bench/store_bench shows it).
#include "platform/Files.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

// The VmFlags line of the mapping that starts at `base`, or "" when there is none.
std::string flagsOfMappingAt(const void *base) {
  char start[32];
  std::snprintf(start, sizeof start, "%lx-", reinterpret_cast<unsigned long>(base));
  std::ifstream smaps("/proc/self/smaps");
  std::string line;
  bool inside = false;
  while (std::getline(smaps, line)) {
    if (line.rfind(start, 0) == 0)
      inside = true;
    else if (inside && line.rfind("VmFlags:", 0) == 0)
      return line;
  }
  return "";
}

TEST(MappingAdvice, AViewAsksForHugePages) {
  const TempDir dir;
  const std::string path = dir.file("big.mbx");
  writeFile(path, std::string(4 << 20, 'x'));
  ScopedHandle file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  ScopedHandle mapping(CreateFileMappingA(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
  const ScopedView view(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
  ASSERT_NE(nullptr, view.get());
  const std::string flags = flagsOfMappingAt(view.get());
  ASSERT_NE("", flags) << "no smaps entry for the view";
  std::ifstream enabled("/sys/kernel/mm/transparent_hugepage/enabled");
  std::string modes;
  std::getline(enabled, modes);
  if (modes.find("[never]") != std::string::npos || modes.empty())
    GTEST_SKIP() << "huge pages are switched off here";
  EXPECT_NE(std::string::npos, flags.find(" hg")) << flags;
}

} // namespace
