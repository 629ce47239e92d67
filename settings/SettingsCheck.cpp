// The check step's verdict: which of the program directory, program file and mail directory
// are missing.
#include "settings/SettingsCheck.h"

namespace {

bool isDirectory(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

} // namespace

int checkSettings(const CString &exeDir, const CString *candidates, int candidateCount,
                  const CString &mailDir, FileAttributesSource attributesOf) {
  int state = 0;
  if (!isDirectory(attributesOf(exeDir))) {
    state = kProgramDirMissing;
  } else {
    // A later candidate is asked only when the ones before it are missing.
    bool found = false;
    for (int i = 0; i < candidateCount && !found; ++i)
      found = attributesOf(candidates[i]) != INVALID_FILE_ATTRIBUTES;
    if (!found)
      state = kProgramMissing;
  }
  if (!isDirectory(attributesOf(mailDir)))
    state |= kMailDirMissing;
  return state;
}
