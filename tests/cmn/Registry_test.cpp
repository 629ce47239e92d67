// Registry values: the file format, lookups, and what a write leaves of the rest of the file.
#include "cmn/Registry.h"
#include "platform/FilesFaults.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestFiles.h"
#include <cerrno>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {
// Each test gets a registry file of its own, named by $TUK_REGISTRY.
class RegistryTest : public ::testing::Test {
protected:
  // The string or integer under `key`, or a marker that the read failed.
  static std::string readString(const char *key, const char *name) {
    CString value("<unread>");
    return GetRegValue(key, name, value) ? std::string(value.bytes()) : "<unread>";
  }
  static std::optional<int32_t> readNumber(const char *key, const char *name) {
    int32_t value = 0;
    return GetRegValue(key, name, &value) ? std::optional<int32_t>(value) : std::nullopt;
  }
  TempDir dir_;
  const std::string registry_ = dir_.file("registry.reg");
  ScopedEnvironment registryVariable_{"TUK_REGISTRY", registry_};
};

const char kKey[] = "Software\\Tuk\\MHEudora";
const std::string kHeader = "Windows Registry Editor Version 5.00\n\n";

TEST_F(RegistryTest, MissingFileIsEmptyAndWritesMakeFileAndFolders) {
  CString text("default");
  int32_t number = 7;
  EXPECT_EQ(0, GetRegValue(kKey, "MailPath", text));
  EXPECT_EQ(0, GetRegValue(kKey, "Attachments", &number));
  EXPECT_EQ("default", text.bytes());
  EXPECT_EQ(7, number);
  const std::string nested = dir_.file("not/yet/there/registry.reg");
  ScopedEnvironment moved("TUK_REGISTRY", nested);
  ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString("/home/ann/mail")));
  ASSERT_NE(0, SetRegValue(kKey, "Attachments", 1));
  ASSERT_NE(0, SetRegValue("Software\\Tuk\\MHEudoraFile", "Attachments", -1));
  EXPECT_EQ(kHeader + "[Software\\Tuk\\MHEudora]\n\"MailPath\"=\"/home/ann/mail\"\n"
                      "\"Attachments\"=dword:00000001\n\n[Software\\Tuk\\MHEudoraFile]\n"
                      "\"Attachments\"=dword:ffffffff\n",
            readFile(nested));
  EXPECT_EQ(std::optional<int32_t>(-1), readNumber("Software\\Tuk\\MHEudoraFile", "Attachments"));
}

TEST_F(RegistryTest, StringsKeepEveryByteThroughEscapes) {
  const std::string awkward = "C:\\mail\\\"box\"\\ Gr\xC3\xBC\xC3\x9F"
                              "e \xE6\x97\xA5 \\\\";
  ASSERT_NE(0, SetRegValue(kKey, "odd\"name\\", CString(awkward.c_str())));
  EXPECT_EQ(awkward, readString(kKey, "odd\"name\\"));
  EXPECT_NE(std::string::npos,
            readFile(registry_).find("\"odd\\\"name\\\\\"=\"C:\\\\mail\\\\\\\"box\\\"\\\\ Gr"));
  // A backslash before any other byte stands for itself, as files written by hand have it.
  appendFile(registry_, "\"Dir\"=\"C:\\temp\\new\\\\x\"\n");
  EXPECT_EQ("C:\\temp\\new\\x", readString(kKey, "Dir"));
  // The format has no line breaks inside a value: such a write fails and changes nothing.
  const std::string before = readFile(registry_);
  EXPECT_EQ(0, SetRegValue(kKey, "Injected", CString("x\"\n[Other]")));
  EXPECT_EQ(0, SetRegValue(kKey, "Bad\nName", CString("x")));
  EXPECT_EQ(before, readFile(registry_));
}

TEST_F(RegistryTest, NamesCompareWithoutAsciiCase) {
  ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString("/first")));
  EXPECT_EQ("/first", readString("SOFTWARE\\tuk\\mheudora", "mAILpATH"));
  ASSERT_NE(0, SetRegValue("software\\TUK\\MHEUDORA", "MAILPATH", CString("/second")));
  // The value line was replaced, not added, and keeps the spelling it had.
  EXPECT_EQ(kHeader + "[Software\\Tuk\\MHEudora]\n\"MailPath\"=\"/second\"\n", readFile(registry_));
}

TEST_F(RegistryTest, StringsAndIntegersDoNotReadAsEachOther) {
  ASSERT_NE(0, SetRegValue(kKey, "Text", CString("42")));
  ASSERT_NE(0, SetRegValue(kKey, "Number", 42));
  int32_t number = 5;
  CString text("kept");
  EXPECT_EQ(0, GetRegValue(kKey, "Text", &number));
  EXPECT_EQ(0, GetRegValue(kKey, "Number", text));
  EXPECT_EQ(5, number);
  EXPECT_EQ("kept", text.bytes());
  // A write of the other type replaces the value.
  ASSERT_NE(0, SetRegValue(kKey, "Text", 3));
  EXPECT_EQ(std::optional<int32_t>(3), readNumber(kKey, "Text"));
  writeFile(registry_, kHeader + "[K]\n\"Short\"=dword:2a\n\"Max\"=DWORD:FFFFFFFF\n"
                                 "\"Nine\"=dword:123456789\n\"None\"=dword:\n"
                                 "\"Junk\"=dword:12g4\n");
  EXPECT_EQ(std::optional<int32_t>(42), readNumber("K", "Short"));
  EXPECT_EQ(std::optional<int32_t>(-1), readNumber("K", "Max"));
  EXPECT_EQ(std::nullopt, readNumber("K", "Nine"));
  EXPECT_EQ(std::nullopt, readNumber("K", "None"));
  EXPECT_EQ(std::nullopt, readNumber("K", "Junk"));
}

TEST_F(RegistryTest, LinesNotUnderstoodSurviveWritesByteForByte) {
  const std::string head =
      "Windows Registry Editor Version 5.00\r\n\r\n; settings of the mail agent\r\n"
      "[HKEY_CURRENT_USER\\Other]\r\n@=\"default value\"\r\n\"Other\"=\"x\"\r\n\r\n"
      "[Software\\Tuk\\MHEudora]\r\n\"MailPath\"=\"";
  const std::string middle = "\"\r\ngarbage without quotes\n\"Broken\"=\"no closing quote\r\n"
                             "\"Blob\"=hex:01,02,\\\r\n  03,04";
  const std::string tail =
      "\r\n\r\n; the next key\r\n[HKEY_CURRENT_USER\\Other]\r\n\"Tail\"=dword:00000001";
  writeFile(registry_, head + "/old" + middle + tail);
  EXPECT_EQ("<unread>", readString(kKey, "Broken"));
  EXPECT_EQ("<unread>", readString(kKey, "Blob"));
  ASSERT_NE(0, SetRegValue(kKey, "MailPath", CString("/new")));
  ASSERT_NE(0, SetRegValue(kKey, "ExePath", CString("/opt/mail")));
  ASSERT_NE(0, SetRegValue("New\\Key", "Flag", 2));
  // The new value goes after the hex value's continuation line, and new lines take the file's
  // CR LF; the last line, which had no line end, gets one before the new section.
  EXPECT_EQ(head + "/new" + middle + "\r\n\"ExePath\"=\"/opt/mail\"" + tail +
                "\r\n\r\n[New\\Key]\r\n\"Flag\"=dword:00000002\r\n",
            readFile(registry_));
}

TEST_F(RegistryTest, LastOccurrenceWinsAndIsTheOneReplaced) {
  writeFile(registry_, kHeader + "[K]\n\"V\"=\"one\"\n\"H\"=\"plain\"\n\n"
                                 "[k]\n\"v\"=\"two\"\n\"h\"=hex(2):41,00\n; end of k\n\n"
                                 "[Other]\n\"V\"=\"other\"\n");
  EXPECT_EQ("two", readString("K", "V"));
  EXPECT_EQ("<unread>", readString("K", "H")); // the later hex value hides the string
  ASSERT_NE(0, SetRegValue("K", "V", CString("three")));
  ASSERT_NE(0, SetRegValue("K", "H", CString("text")));
  ASSERT_NE(0, SetRegValue("K", "New", 1));
  EXPECT_EQ(kHeader + "[K]\n\"V\"=\"one\"\n\"H\"=\"plain\"\n\n"
                      "[k]\n\"v\"=\"three\"\n\"h\"=hex(2):41,00\n\"H\"=\"text\"\n"
                      "\"New\"=dword:00000001\n; end of k\n\n"
                      "[Other]\n\"V\"=\"other\"\n",
            readFile(registry_));
  EXPECT_EQ("text", readString("K", "H"));
}

TEST_F(RegistryTest, BinaryJunkIsKeptAndSkipped) {
  std::mt19937 random(20240611);
  std::string junk;
  for (int at = 0; at < 20000; ++at)
    junk += static_cast<char>(random() % 4 == 0 ? "\0\n\r[]\"=\\"[random() % 8] : random());
  junk += '\n';
  writeFile(registry_, junk + "[K]\n\"V\"=\"good\"\n");
  EXPECT_EQ("good", readString("K", "V"));
  ASSERT_NE(0, SetRegValue("K", "V", CString("better")));
  EXPECT_EQ(junk + "[K]\n\"V\"=\"better\"\n", readFile(registry_));
}

TEST_F(RegistryTest, OversizedFileIsRefusedAndLeftAlone) {
  writeFile(registry_, kHeader + "[K]\n\"V\"=\"x\"\n");
  const off_t size = (64 << 20) + 1;
  ASSERT_EQ(0, truncate(registry_.c_str(), size));
  EXPECT_EQ("<unread>", readString("K", "V"));
  EXPECT_EQ(0, SetRegValue("K", "V", CString("y")));
  struct stat status;
  ASSERT_EQ(0, stat(registry_.c_str(), &status));
  EXPECT_EQ(size, status.st_size);
}

TEST_F(RegistryTest, FileFallsBackToXdgConfigThenHome) {
  ScopedEnvironment noRegistry("TUK_REGISTRY", std::nullopt);
  ScopedEnvironment home("HOME", dir_.file("home"));
  {
    ScopedEnvironment config("XDG_CONFIG_HOME", dir_.file("config"));
    EXPECT_EQ(dir_.file("config/tuk/registry.reg"), registryFilePath().GetString());
    ASSERT_NE(0, SetRegValue("K", "Where", CString("xdg")));
    EXPECT_EQ("xdg", readString("K", "Where"));
  }
  for (const std::optional<std::string> &config :
       {std::optional<std::string>(), std::optional<std::string>(""),
        std::optional<std::string>("relative")}) {
    ScopedEnvironment ignored("XDG_CONFIG_HOME", config);
    EXPECT_EQ(dir_.file("home/.config/tuk/registry.reg"), registryFilePath().GetString());
  }
  ScopedEnvironment config("XDG_CONFIG_HOME", std::nullopt);
  ASSERT_NE(0, SetRegValue("K", "Where", CString("home")));
  EXPECT_EQ("home", readString("K", "Where"));
  EXPECT_TRUE(fileExists(dir_.file("home/.config/tuk/registry.reg")));
}

// A registry write that the system refuses at any step, after one that went well: it reports
// failure and leaves the file, and every value in it, as the first write left them.
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
