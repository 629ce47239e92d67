// The INI reader over arbitrary file contents: it copies at most size - 1 bytes and a zero,
// returns the count copied, and what it copies is (a prefix of) the default or a value that
// stands in the file.
//
// The first two bytes pick the section and key asked for and the buffer's size; the rest is
// the file.
#include "fuzz/FuzzSupport.h"
#include "platform/Profile.h"
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

namespace {
const char *const kIniSections[] = {"Settings", "settings", "", "[x]", "a b"};
const char *const kIniKeys[] = {"AttachFolder", "attachfolder", "", "=", "k k"};
const char kDefault[] = "(default)";
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  if (size < 2 || size > 1u << 20)
    return 0;
  static const std::string path = scratchDir() + "/eudora.ini";
  FUZZ_CHECK(writeBytes(path, data + 2, size - 2));
  const std::string file(reinterpret_cast<const char *>(data + 2), size - 2);
  const char *const section = kIniSections[data[0] % std::size(kIniSections)];
  const char *const key = kIniKeys[(data[0] / std::size(kIniSections)) % std::size(kIniKeys)];
  const DWORD capacity = data[1];
  // Exactly the capacity the reader is told, so that one byte more is a finding.
  const std::unique_ptr<char[]> buffer(new char[capacity == 0 ? 1 : capacity]);
  const DWORD copied =
      GetPrivateProfileStringA(section, key, kDefault, buffer.get(), capacity, path.c_str());
  if (capacity == 0) {
    FUZZ_CHECK(copied == 0);
    return 0;
  }
  FUZZ_CHECK(copied < capacity);
  FUZZ_CHECK(buffer[copied] == '\0');
  const std::string value(buffer.get(), copied);
  const bool fromDefault = std::string(kDefault).compare(0, copied, value) == 0;
  FUZZ_CHECK(fromDefault || file.find(value) != std::string::npos);
  // The same file asked again gives the same answer.
  const std::unique_ptr<char[]> again(new char[capacity]);
  FUZZ_CHECK(GetPrivateProfileStringA(section, key, kDefault, again.get(), capacity,
                                      path.c_str()) == copied);
  FUZZ_CHECK(std::memcmp(again.get(), buffer.get(), copied + 1) == 0);
  return 0;
}
