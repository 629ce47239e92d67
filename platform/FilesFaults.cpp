// Fault injection for the file stand-ins: per-thread countdowns of armed failures.
#include "FilesFaults.h"

#include <cerrno>
#include <cstddef>

namespace {

struct ArmedFailure {
  int error;
  int remaining;
  int skip; // calls that succeed before the first failure
};

constexpr size_t operationCount = static_cast<size_t>(FileOperation::Count);
thread_local ArmedFailure armedFailures[operationCount] = {};

} // namespace

void failNextFileOperations(FileOperation operation, int error, int count) {
  failFileOperationsAfter(operation, 0, error, count);
}

void failFileOperationsAfter(FileOperation operation, int skip, int error, int count) {
  armedFailures[static_cast<size_t>(operation)] = ArmedFailure{error, count, skip};
}

void clearFileOperationFailures() {
  for (ArmedFailure &armed : armedFailures)
    armed = ArmedFailure{0, 0, 0};
}

bool injectedFailure(FileOperation operation) {
  ArmedFailure &armed = armedFailures[static_cast<size_t>(operation)];
  if (armed.remaining <= 0)
    return false;
  if (armed.skip > 0) {
    --armed.skip;
    return false;
  }
  --armed.remaining;
  errno = armed.error;
  return true;
}
