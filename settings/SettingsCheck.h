// The check step's verdict on the directories of a settings page, over any source of file
// attributes.
#pragma once

#include "platform/CString.h"
#include "platform/Files.h"

// Parts of the verdict; 0 means that everything is there. 3 and 7 can't occur: the program
// file is looked for only in a program directory that exists.
enum : int {
  kProgramDirMissing = 1, // the program directory is missing or not a directory
  kProgramMissing = 2,    // none of the program candidates exists
  kMailDirMissing = 4,    // the mail directory is missing or not a directory
};

// GetFileAttributesA's own type, whose calling convention is the system's on 32-bit Windows.
using FileAttributesSource = decltype(&GetFileAttributesA);

// The verdict on `exeDir`, the program `candidates` (paths; any that exists will do, a
// directory too) and `mailDir`.
int checkSettings(const CString &exeDir, const CString *candidates, int candidateCount,
                  const CString &mailDir, FileAttributesSource attributesOf = GetFileAttributesA);
