// Language modules: LoadLibraryA finds them beside the current module, their strings and
// templates win, what they lack comes from the current module, the agent's own table, and
// FreeLibrary lets go.
#include "platform/CString.h"
#include "platform/Files.h"
#include "platform/Resources.h"
#include "tests/support/TestFiles.h"
#include <climits>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

extern const ResourceTable agentResourceTable;

namespace {
// The agent's table as a module of this program, which lies in the build's output directory
// beside the language modules.
CModule agentTestModule = {&agentResourceTable, &agentTestModule, nullptr};

// The text of a string entry, zero bytes included; "<none>" when there is none.
std::string textOf(const ResourceString *entry) {
  return entry != nullptr ? std::string(entry->text, entry->length) : std::string("<none>");
}

// The test module built from testlang.rc: tuk_mhmailXX.so in the build's output directory.
const char kTestModule[] = "tuk_mhmailXX";

struct ModuleFreer {
  void operator()(CModule *module) const { EXPECT_TRUE(FreeLibrary(module)); }
};
using LoadedModule = std::unique_ptr<CModule, ModuleFreer>;

LoadedModule load(const std::string &name) {
  return LoadedModule(LoadLibraryA(name.c_str()));
}

std::string realPath(const std::string &path) {
  char resolved[PATH_MAX];
  return realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

std::string directoryOf(const void *anchor) {
  char buffer[PATH_MAX];
  return realPath(moduleDirectory(anchor, buffer, sizeof buffer));
}

// The agent's state made current, owning its table, as an entry of the agent makes it.
class LanguageModule : public testing::Test {
protected:
  AFX_MODULE_STATE state_ = {&agentTestModule, &agentTestModule, nullptr};
  AFX_MAINTAIN_STATE agent_{&state_};
};

TEST(AgentStrings, IdsOneToSeventyAreThereInOrder) {
  ASSERT_EQ(agentResourceTable.stringCount, 70u);
  for (uint32_t i = 0; i < agentResourceTable.stringCount; ++i) {
    const ResourceString &entry = agentResourceTable.strings[i];
    EXPECT_EQ(entry.id, i + 1);
    EXPECT_EQ(entry.length, std::strlen(entry.text)) << "id " << entry.id;
    EXPECT_EQ(findString(&agentTestModule, entry.id), &entry);
  }
  EXPECT_EQ(findString(&agentTestModule, 0), nullptr);
  EXPECT_EQ(findString(&agentTestModule, 71), nullptr);
}

TEST_F(LanguageModule, LoadsOnlyFromTheDirectoryOfTheCurrentInstance) {
  const LoadedModule module = load(kTestModule);
  ASSERT_NE(module, nullptr) << "error " << GetLastError();
  ASSERT_NE(module->resources, nullptr);
  EXPECT_EQ(module->resources->stringCount, 6u);
  EXPECT_EQ(directoryOf(module->anchor), realPath(TUK_BIN_DIR));
  // A name whose last part has a dot is taken as it is.
  EXPECT_NE(load(std::string(kTestModule) + ".so"), nullptr);
  TempDir elsewhere;
  writeFile(elsewhere.file("tuk_mhmailYY.so"),
            readFile(std::string(TUK_BIN_DIR) + "/" + kTestModule + ".so"));
  // A name with a '/' is a path; it gets ".so" all the same.
  const LoadedModule moved = load(elsewhere.file("tuk_mhmailYY"));
  ASSERT_NE(moved, nullptr);
  EXPECT_EQ(directoryOf(moved->anchor), realPath(elsewhere.path()));
  AFX_MODULE_STATE movedState = {moved.get(), moved.get(), nullptr};
  AFX_MAINTAIN_STATE scope(&movedState);
  EXPECT_NE(load("tuk_mhmailYY"), nullptr);
  EXPECT_EQ(load(kTestModule), nullptr);
}

TEST(LanguageModuleWithoutInstance, LooksBesideThePlatformLibrary) {
  std::thread([] { EXPECT_NE(load(kTestModule), nullptr); }).join();
}

TEST_F(LanguageModule, StringsAndTemplatesComeFromTheModuleElseFromTheInstance) {
  const LoadedModule module = load(kTestModule);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(textOf(findString(module.get(), 25)), "XX Eudora");
  EXPECT_EQ(findString(module.get(), 62), findString(&agentTestModule, 62));
  EXPECT_EQ(findString(module.get(), 9999), nullptr);
  AfxSetResourceHandle(module.get());
  CString text("left over");
  EXPECT_TRUE(text.LoadString(1));
  EXPECT_EQ(text, "\nBetreff:");
  EXPECT_TRUE(text.LoadString(2));
  EXPECT_EQ(text, "\nDate:");
  EXPECT_FALSE(text.LoadString(9999));
  EXPECT_TRUE(text.IsEmpty());
  AfxSetResourceHandle(nullptr); // then the instance's own table answers
  EXPECT_TRUE(text.LoadString(25));
  EXPECT_EQ(text, "Eudora Mail");
  const DialogTemplate *view = findDialog(module.get(), 133);
  ASSERT_NE(view, nullptr);
  EXPECT_STREQ(view->caption, "XX View");
  // No STYLE: popup, border and system menu, with the caption that it names.
  EXPECT_EQ(view->style, 0x80C80040u) << std::hex << view->style;
  ASSERT_EQ(view->itemCount, 2u);
  EXPECT_EQ(view->items[1].style, 0x40000004u) << std::hex << view->items[1].style;
  EXPECT_EQ(findDialog(module.get(), 130), findDialog(&agentTestModule, 130));
  EXPECT_EQ(findDialog(module.get(), 132), nullptr);
  // Escapes, comments and raw bytes survive the compilation.
  const char escapes[] = "tab\there\nnl\rcr\\bs\"q\"dqAA\0end";
  EXPECT_EQ(textOf(findString(module.get(), 900)), std::string(escapes, sizeof escapes - 1));
  EXPECT_EQ(textOf(findString(module.get(), 901)), "// is text /* and so is this */");
  EXPECT_EQ(textOf(findString(module.get(), 6)), "Jnruary");
  EXPECT_EQ(textOf(findString(module.get(), 21)), "Gr\xC3\xB6\xC3\x9F"
                                                  "e");
  const ResourceTable &table = *module->resources;
  for (uint32_t i = 1; i < table.stringCount; ++i)
    EXPECT_LT(table.strings[i - 1].id, table.strings[i].id);
}

TEST_F(LanguageModule, FreeLibraryReleasesOnlyWhatLoadLibraryLoaded) {
  EXPECT_FALSE(FreeLibrary(nullptr));
  EXPECT_FALSE(FreeLibrary(&agentTestModule));
  HMODULE module = LoadLibraryA(kTestModule);
  ASSERT_NE(module, nullptr);
  AfxSetResourceHandle(module);
  EXPECT_TRUE(FreeLibrary(module));
  // The state no longer points at the released module.
  EXPECT_EQ(AfxGetResourceHandle(), &agentTestModule);
}
} // namespace
