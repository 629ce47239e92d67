// What the fuzz targets share: the agent brought up once per process, a private scratch
// folder on a memory file system, and a check that stops the run on a broken property.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// A target's entry: libFuzzer's LLVMFuzzerTestOneInput, or the name a compile definition gives
// it where the replay of past inputs (tests/hostile/PastInputs_test.cpp) links every target.
#ifndef FUZZ_ENTRY
#define FUZZ_ENTRY LLVMFuzzerTestOneInput
#endif

// A property that does not hold is a finding: report it and abort, so that libFuzzer keeps
// the input as a crash.
#define FUZZ_CHECK(condition)                                                                      \
  do {                                                                                             \
    if (!(condition))                                                                              \
      fuzzCheckFailed(#condition, __FILE__, __LINE__);                                             \
  } while (0)

[[noreturn]] void fuzzCheckFailed(const char *condition, const char *file, int line);

// Brings the agent up once in this process with an Eudora key and an empty registry, and
// keeps its module state current from then on: the header names, month names and property
// names of the string table are loaded. Cheap on every later call.
void bringAgentUp();

// A folder of this process, removed when it exits normally: under $TUK_FUZZ_SCRATCH when set,
// else under /dev/shm where there is one (writes there cost no disk), else under $TMPDIR or
// /tmp. libFuzzer does not always exit normally: scripts/fuzz.sh names a base it removes.
const std::string &scratchDir();

// Writes `size` bytes to `path`, replacing the file. False when it cannot.
bool writeBytes(const std::string &path, const uint8_t *data, size_t size);

// Removes everything below `dir`, leaving `dir` itself.
void emptyDir(const std::string &dir);
