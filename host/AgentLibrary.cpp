// Loading the agent, its log on standard error, and unloading it.
#include "host/AgentLibrary.h"

#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <limits.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// The agent's LogSink: one line per call on standard error, with the writing source.
int writeAgentLog(uint32_t, const char *sourceFile, int line, const char *format, ...) {
  char text[2048];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format != nullptr ? format : "", arguments);
  va_end(arguments);
  std::string message = text;
  while (!message.empty() && (message.back() == '\n' || message.back() == '\r'))
    message.pop_back();
  // One line per call: a line break inside the text (the header names start with one) is
  // shown as an escape.
  std::string shown;
  for (const char c : message)
    shown += c == '\n' ? std::string("\\n") : c == '\r' ? std::string("\\r") : std::string(1, c);
  std::fprintf(stderr, "agent %s:%d: %s\n", sourceFile != nullptr ? sourceFile : "?", line,
               shown.c_str());
  return 0;
}

} // namespace

std::string programDirectory() {
  std::vector<char> path(PATH_MAX + 1, '\0');
  const ssize_t length = readlink("/proc/self/exe", path.data(), PATH_MAX);
  if (length <= 0)
    return ".";
  std::string program(path.data(), static_cast<size_t>(length));
  const size_t slash = program.rfind('/');
  return slash == std::string::npos ? "." : program.substr(0, slash);
}

std::string agentDirectory() {
  std::string here = programDirectory();
  struct stat status;
  if (stat((here + "/tuk_mhmail.so").c_str(), &status) == 0)
    return here;
  const std::string installed = here + "/../lib/tuk";
  return stat((installed + "/tuk_mhmail.so").c_str(), &status) == 0 ? installed : here;
}

void AgentLibrary::Unloader::operator()(void *library) const {
  if (library != nullptr)
    dlclose(library);
}

std::unique_ptr<AgentLibrary> AgentLibrary::load(const AgentLoadOptions &options,
                                                 std::string &error) {
  const std::string path =
      options.libraryPath.empty() ? agentDirectory() + "/tuk_mhmail.so" : options.libraryPath;
  std::unique_ptr<AgentLibrary> agent(new AgentLibrary);
  agent->library_.reset(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!agent->library_) {
    const char *reason = dlerror();
    error = "cannot load the agent " + path + ": " + (reason != nullptr ? reason : "unknown");
    return nullptr;
  }
  const auto initAgent =
      reinterpret_cast<InitAgentFunction>(dlsym(agent->library_.get(), "initAgent"));
  if (initAgent == nullptr) {
    error = path + " is no agent: it has no initAgent";
    return nullptr;
  }
  const AgentParams params = {options.agentKey.c_str(),
                              options.logToStandardError ? writeAgentLog : nullptr,
                              options.language.c_str(),
                              0,
                              0,
                              0};
  AgentResult result{};
  initAgent(&params, &result);
  if (result.entryTable == nullptr) {
    error = "the agent " + path + " gave no entry table for the key " + options.agentKey;
    return nullptr;
  }
  agent->entries_ = result.entryTable;
  agent->displayName_ = result.agentName != nullptr ? result.agentName : "";
  if (options.logToStandardError)
    agent->entries_->setLogFlag(1);
  return agent;
}

AgentLibrary::~AgentLibrary() {
  if (entries_ != nullptr)
    entries_->terminateAgent();
}
