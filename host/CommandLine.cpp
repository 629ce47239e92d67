// Parsing the command line: options by a table of every option that any command takes.
#include "host/CommandLine.h"

#include <cstring>

namespace {

struct OptionName {
  const char *name;
  bool takesValue;
};

const OptionName kOptions[] = {
    {"help", false},       {"version", false}, {"client", true},   {"key", true},
    {"registry", true},    {"db", true},       {"language", true}, {"log", false},
    {"mail-dir", true},    {"exe-dir", true},  {"mail-ext", true}, {"ctrl-ext", true},
    {"attachments", true}, {"yes", false},     {"json", false},    {"stats", false},
    {"raw", false},        {"count", false},   {"offset", true},   {"sort", true},
    {"output", true},      {"limit", true},    {"since", true},    {"until", true},
    {"dir", true},         {"port", true},     {"open", false},
};

const OptionName *findOption(const std::string &name) {
  for (const OptionName &option : kOptions)
    if (name == option.name)
      return &option;
  return nullptr;
}

} // namespace

std::string CommandLine::value(const std::string &name, const std::string &fallback) const {
  const auto found = options.find(name);
  return found == options.end() ? fallback : found->second;
}

bool parseCommandLine(int argc, char **argv, CommandLine &out, std::string &error) {
  bool optionsEnded = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (!optionsEnded && word == "--") {
      optionsEnded = true;
      continue;
    }
    if (optionsEnded || word.size() < 2 || word.compare(0, 2, "--") != 0 || word == "-") {
      if (out.command.empty())
        out.command = word;
      else
        out.arguments.push_back(word);
      continue;
    }
    if (word == "-h") {
      out.options["help"] = "";
      continue;
    }
    std::string name = word.substr(2);
    std::string value;
    const size_t equals = name.find('=');
    const bool inlineValue = equals != std::string::npos;
    if (inlineValue) {
      value = name.substr(equals + 1);
      name.erase(equals);
    }
    const OptionName *option = findOption(name);
    if (option == nullptr) {
      error = "unknown option --" + name;
      return false;
    }
    if (option->takesValue && !inlineValue) {
      if (i + 1 >= argc) {
        error = "--" + name + " needs a value";
        return false;
      }
      value = argv[++i];
    } else if (!option->takesValue && inlineValue) {
      error = "--" + name + " takes no value";
      return false;
    }
    out.options[name] = value;
  }
  return true;
}
