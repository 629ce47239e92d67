// tuk_mhmail.so loaded as a host loads it.
#include "tests/support/LoadedAgent.h"

#include <cstdarg>
#include <cstdio>
#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

std::string LoadedAgent::libraryPath() {
  return std::string(TUK_BIN_DIR) + "/tuk_mhmail.dll";
}

LoadedAgent::LoadedAgent() {
  const HMODULE library = LoadLibraryA(libraryPath().c_str());
  if (library == nullptr) {
    ADD_FAILURE() << "LoadLibrary: error " << GetLastError();
    return;
  }
  library_ = library;
  initAgent_ = reinterpret_cast<InitAgentFunction>(
      reinterpret_cast<void (*)()>(GetProcAddress(library, "initAgent")));
  EXPECT_NE(nullptr, initAgent_);
}

LoadedAgent::~LoadedAgent() {
  if (library_)
    FreeLibrary(static_cast<HMODULE>(library_));
}
#else
#include <dlfcn.h>

std::string LoadedAgent::libraryPath() {
  return std::string(TUK_BIN_DIR) + "/tuk_mhmail.so";
}

LoadedAgent::LoadedAgent() {
  library_ = dlopen(libraryPath().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library_) {
    ADD_FAILURE() << "dlopen: " << dlerror();
    return;
  }
  initAgent_ = reinterpret_cast<InitAgentFunction>(dlsym(library_, "initAgent"));
  EXPECT_NE(nullptr, initAgent_);
}

LoadedAgent::~LoadedAgent() {
  if (library_)
    dlclose(library_);
}
#endif

AgentResult LoadedAgent::init(const std::string &agentKey, const std::string &language,
                              LogSink sink) {
  AgentResult result{};
  const AgentParams params = {agentKey.c_str(), sink, language.c_str(), 0, 0, 0};
  if (initAgent_) {
    EXPECT_EQ(0, initAgent_(&params, &result));
  }
  table_ = result.entryTable;
  return result;
}

int CapturedLog::sink(uint32_t zero, const char *sourceFile, int, const char *format, ...) {
  EXPECT_EQ(0u, zero);
  char text[4096];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  lines().push_back(std::string(sourceFile) + "|" + text);
  return 0;
}

std::vector<std::string> &CapturedLog::lines() {
  static std::vector<std::string> captured;
  return captured;
}

bool CapturedLog::contains(const std::string &text) {
  for (const std::string &line : lines())
    if (line.find(text) != std::string::npos)
      return true;
  return false;
}
