// The registry file reader and writer over arbitrary file contents: reading never fails on content,
// and a write makes its value readable, changes no other value, and keeps every other line of the
// file as it was, in order.
//
// The first three bytes pick the key, the value name and the value to write; the rest is the file.
#include "cmn/Registry.h"
#include "fuzz/FuzzSupport.h"
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {
const char *const kKeys[] = {
    "K", "k", "Software\\Tuk\\Agents\\MHEudora", "K\\DE", "a]b", "\"q\"", "x y", "[K]"};
const char *const kNames[] = {"N", "n", "MailPath", "a\\\"b", "=", "", "N ", "\\"};
struct Written { // NOLINT(clang-analyzer-optin.performance.Padding): a table row's order
  bool isNumber;
  const char *text;
  int32_t number;
};
const Written kValues[] = {
    {false, "v", 0},  {false, "", 0},     {false, "q\"b\\s", 0}, {false, "\xC3\xA9\xFF", 0},
    {false, "\\", 0}, {true, nullptr, 0}, {true, nullptr, -1},   {true, nullptr, 0x12345678}};

// What a reader sees of one value: "" when nothing reads, else "s:" and the string or "n:"
// and the number.
std::string readValue(const char *key, const char *name) {
  CString text("unchanged");
  int32_t number = 0;
  const bool isText = GetRegValue(key, name, text) != 0;
  const bool isNumber = GetRegValue(key, name, &number) != 0;
  FUZZ_CHECK(!(isText && isNumber));
  FUZZ_CHECK(isText || text == "unchanged"); // a failed read leaves the default alone
  return isText ? "s:" + text.bytes() : isNumber ? "n:" + std::to_string(number) : "";
}

// The lines of a text, each without its line end (LF, or CR LF).
std::vector<std::string> linesOf(const std::string &text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line); lines.push_back(line))
    if (!in.eof() && !line.empty() && line.back() == '\r')
      line.pop_back();
  return lines;
}

// Whether `after` is `before` with at most one line replaced (a value set in place), or with
// one to four lines added and none changed (a value line, or a new section of the key).
bool keepsOtherLines(const std::vector<std::string> &before,
                     const std::vector<std::string> &after) {
  if (after.size() == before.size()) {
    size_t differing = 0;
    for (size_t i = 0; i < before.size(); ++i)
      differing += before[i] != after[i];
    return differing <= 1;
  }
  if (after.size() < before.size() || after.size() > before.size() + 4)
    return false;
  size_t j = 0;
  for (const std::string &line : before) {
    while (j < after.size() && after[j] != line)
      ++j;
    if (j++ == after.size())
      return false;
  }
  return true;
}

std::string fileText(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  static const std::string path = [] {
    std::string file = scratchDir() + "/registry.reg";
    ::setenv("TUK_REGISTRY", file.c_str(), 1);
    return file;
  }();
  if (size < 3 || size > 1u << 20)
    return 0;
  const char *const key = kKeys[data[0] % std::size(kKeys)];
  const char *const name = kNames[data[1] % std::size(kNames)];
  const Written &value = kValues[data[2] % std::size(kValues)];
  const std::string before(reinterpret_cast<const char *>(data + 3), size - 3);
  FUZZ_CHECK(writeBytes(path, reinterpret_cast<const uint8_t *>(before.data()), before.size()));
  std::vector<std::string> seenBefore;
  for (const char *k : kKeys)
    for (const char *n : kNames)
      seenBefore.push_back(readValue(k, n));
  const int written = value.isNumber ? SetRegValue(key, name, value.number)
                                     : SetRegValue(key, name, CString(value.text));
  FUZZ_CHECK(written != 0);
  const std::string after = fileText(path);
  FUZZ_CHECK(keepsOtherLines(linesOf(before), linesOf(after)));
  // The value reads back; every other value reads as before.
  const std::string expected =
      value.isNumber ? "n:" + std::to_string(value.number) : "s:" + std::string(value.text);
  size_t at = 0;
  for (const char *k : kKeys)
    for (const char *n : kNames) {
      const bool same = CString(k).CompareNoCase(key) == 0 && CString(n).CompareNoCase(name) == 0;
      FUZZ_CHECK(readValue(k, n) == (same ? expected : seenBefore[at]));
      ++at;
    }
  return 0;
}
