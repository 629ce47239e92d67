// The resource compiler refuses bad scripts with the file and line of the fault and writes
// nothing then. (What it compiles is checked through the tables it made for the build.)
#include "tests/support/TestFiles.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <utility>

namespace {
struct RcgenRun {
  int exitStatus;
  std::string errors;
  bool wroteOutput;
};

RcgenRun runRcgen(const TempDir &dir, const std::string &script) {
  writeFile(dir.file("test.rc"), script);
  const std::string command = std::string("'") + TUK_RCGEN + "' --symbol table --output '" +
                              dir.file("out.cpp") + "' '" + dir.file("test.rc") + "' 2>'" +
                              dir.file("errors.txt") + "'";
  const int status = std::system(command.c_str());
  return RcgenRun{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(dir.file("errors.txt")),
                  fileExists(dir.file("out.cpp"))};
}

TEST(Rcgen, CompilesAScriptThatUsesAHeaderAndFailsBadOnesWithFileAndLine) {
  TempDir dir;
  writeFile(dir.file("ids.h"),
            "// ids\n#define IDS_ONE 1 // the first\n#define IDS_TWO (IDS_ONE + 1)\n");
  const RcgenRun run =
      runRcgen(dir, "#include \"ids.h\"\nSTRINGTABLE { IDS_TWO \"b\" IDS_ONE, \"a\" }\n");
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_TRUE(run.wroteOutput);
  // Each script, and where the error is and what it says. Every case has an ids.h whose
  // second line names what is defined nowhere.
  const std::pair<const char *, const char *> cases[] = {
      {"STRINGTABLE\nBEGIN\n  1 \"ok\"\n  2 \"open\nEND\n", "test.rc:4: unterminated string"},
      {"STRINGTABLE\nBEGIN\n  1 \"a\\qb\"\nEND\n", "test.rc:3: unknown escape"},
      {"/* never closed\n\n", "test.rc:1: unterminated comment"},
      {"\nICONS\n", "test.rc:2: unknown keyword 'ICONS'"},
      {"1 DIALOG 0, 0, 10, 10\nBEGIN\n  LISTBOX 5, 1, 1, 1, 1\nEND\n",
       "test.rc:3: unknown keyword 'LISTBOX'"},
      {"1 DIALOG 0, 0, 10, 10\nMENU 3\nBEGIN\nEND\n", "test.rc:2: unknown keyword 'MENU'"},
      {"STRINGTABLE\nBEGIN\n  7 \"a\"\n  7 \"b\"\nEND\n", "test.rc:4: duplicate string id 7"},
      {"1 DIALOG 0,0,1,1\nBEGIN\nEND\n1 DIALOGEX 0,0,1,1\nBEGIN\nEND\n",
       "test.rc:4: duplicate dialog id 1"},
      {"STRINGTABLE\nBEGIN\n  IDS_NOWHERE \"x\"\nEND\n", "test.rc:3: undefined name 'IDS_NOWHERE'"},
      {"#include \"ids.h\"\nSTRINGTABLE { IDS_BAD \"x\" }\n", "ids.h:2: undefined name 'OOPS'"},
      {"#include \"missing.h\"\n", "test.rc:1: cannot open include file"},
      {"STRINGTABLE\nBEGIN\n  1 \"a\"\n", "test.rc:4: STRINGTABLE without END"},
      {"STRINGTABLE { 70000 \"a\" }\n", "test.rc:1: string id out of range"},
      {"1 DIALOG 0, 0, 10, 10\nBEGIN\n  EDITTEXT 5, 1, 1, 1 1\nEND\n", "test.rc:3: expected ','"},
  };
  for (const auto &[script, error] : cases) {
    SCOPED_TRACE(script);
    TempDir dir;
    writeFile(dir.file("ids.h"), "\n#define IDS_BAD OOPS\n");
    const RcgenRun run = runRcgen(dir, script);
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_NE(run.errors.find(error), std::string::npos) << run.errors;
    EXPECT_FALSE(run.wroteOutput);
  }
}
} // namespace
