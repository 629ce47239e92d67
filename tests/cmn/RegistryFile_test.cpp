// A registry write that the system refuses at any step, after one that went well: it reports
// failure and leaves the file, and every value in it, as the first write left them.
#include "tests/cmn/RegistryFixture.h"

#include "platform/FilesFaults.h"

#include <cerrno>

namespace {

const char kKey[] = "Software\\Tuk\\MHEudora";

struct RefusedStep {
  const char *name;
  FileOperation operation;
  int callsBefore; // calls of the operation that succeed first
  int error;
};

// A write opens the lock file, the registry file and the new file, in that order.
const RefusedStep kRefusedSteps[] = {
    {"the lock file's open", FileOperation::RegistryOpen, 0, EACCES},
    {"the lock", FileOperation::RegistryLock, 0, ENOLCK},
    {"the registry file's open", FileOperation::RegistryOpen, 1, EACCES},
    {"the new file's open", FileOperation::RegistryOpen, 2, ENOSPC},
    {"the write", FileOperation::RegistryWrite, 0, ENOSPC},
    {"the rename", FileOperation::RegistryRename, 0, EIO},
};

TEST_F(RegistryTest, ASecondWriteRefusedAtAnyStepLeavesTheFirstWhole) {
  for (const RefusedStep &step : kRefusedSteps) {
    SCOPED_TRACE(step.name);
    ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString("/home/ann/mail")));
    const std::string written = readFile(registry_);
    failFileOperationsAfter(step.operation, step.callsBefore, step.error);
    EXPECT_EQ(0, SetRegValue(kKey, "ExePath", CString("/opt/eudora")));
    clearFileOperationFailures();
    EXPECT_EQ(written, readFile(registry_));
    EXPECT_EQ("/home/ann/mail", readString(kKey, "MailPath"));
    EXPECT_EQ("<unread>", readString(kKey, "ExePath"));
    EXPECT_FALSE(fileExists(registry_ + ".tmp"));
  }
}

} // namespace
