// GetRegValue and SetRegValue on Windows: values of the real registry, under
// HKEY_CURRENT_USER and the key path the caller gives.
#include "cmn/Registry.h"

#include <string>

namespace {

// Owns an open registry key and closes it once.
class ScopedKey {
public:
  ScopedKey() = default;
  ScopedKey(const ScopedKey &) = delete;
  ScopedKey &operator=(const ScopedKey &) = delete;
  ~ScopedKey() {
    if (key_ != nullptr)
      RegCloseKey(key_);
  }
  HKEY *out() { return &key_; }
  HKEY get() const { return key_; }

private:
  HKEY key_ = nullptr;
};

bool usable(const char *key, const char *valueName) {
  return key != nullptr && valueName != nullptr && *key != '\0';
}

// The value's type and bytes; false when the key or the value is missing.
bool readValue(const char *key, const char *valueName, DWORD &type, std::string &bytes) {
  ScopedKey opened;
  if (!usable(key, valueName) ||
      RegOpenKeyExA(HKEY_CURRENT_USER, key, 0, KEY_QUERY_VALUE, opened.out()) != ERROR_SUCCESS)
    return false;
  // Another writer may grow the value between the two calls: ask again until it fits.
  for (int attempt = 0; attempt < 4; ++attempt) {
    DWORD size = 0;
    if (RegQueryValueExA(opened.get(), valueName, nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
      return false;
    bytes.assign(size, '\0');
    const LONG status = RegQueryValueExA(opened.get(), valueName, nullptr, &type,
                                         reinterpret_cast<BYTE *>(bytes.data()), &size);
    if (status == ERROR_SUCCESS) {
      bytes.resize(size);
      return true;
    }
    if (status != ERROR_MORE_DATA)
      return false;
  }
  return false;
}

int writeValue(const char *key, const char *valueName, DWORD type, const void *bytes, DWORD size) {
  ScopedKey created;
  if (!usable(key, valueName) ||
      RegCreateKeyExA(HKEY_CURRENT_USER, key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, created.out(),
                      nullptr) != ERROR_SUCCESS)
    return 0;
  return RegSetValueExA(created.get(), valueName, 0, type, static_cast<const BYTE *>(bytes),
                        size) == ERROR_SUCCESS
             ? 1
             : 0;
}

} // namespace

int GetRegValue(const char *key, const char *valueName, CString &value) {
  DWORD type = 0;
  std::string bytes;
  if (!readValue(key, valueName, type, bytes) || (type != REG_SZ && type != REG_EXPAND_SZ))
    return 0;
  // The stored terminator, and any a writer left beyond it, are not part of the text.
  const size_t end = bytes.find('\0');
  if (end != std::string::npos)
    bytes.resize(end);
  value = CString(bytes.data(), static_cast<int>(bytes.size()));
  return 1;
}

int GetRegValue(const char *key, const char *valueName, int32_t *value) {
  DWORD type = 0;
  std::string bytes;
  if (value == nullptr || !readValue(key, valueName, type, bytes) || type != REG_DWORD ||
      bytes.size() != sizeof(DWORD))
    return 0;
  DWORD number = 0;
  bytes.copy(reinterpret_cast<char *>(&number), sizeof number);
  *value = static_cast<int32_t>(number);
  return 1;
}

int SetRegValue(const char *key, const char *valueName, const CString &value) {
  // A string with a zero byte would read back cut short: refused, as on every platform.
  const std::string &text = value.bytes();
  if (text.find('\0') != std::string::npos)
    return 0;
  return writeValue(key, valueName, REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1));
}

int SetRegValue(const char *key, const char *valueName, int32_t value) {
  const DWORD number = static_cast<DWORD>(value);
  return writeValue(key, valueName, REG_DWORD, &number, sizeof number);
}
