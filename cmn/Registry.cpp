// GetRegValue and SetRegValue: registry values read from and written to the registry file.
#include "cmn/Registry.h"

#include "cmn/RegistryFile.h"
#include "cmn/RegistryText.h"

#include <optional>
#include <string>

using cmn::RegistryData;

namespace {

std::optional<RegistryData> readValue(const char *key, const char *valueName) {
  if (key == nullptr || valueName == nullptr)
    return std::nullopt;
  const CString path = registryFilePath();
  std::string bytes;
  if (path.IsEmpty() || !cmn::readRegistryFile(path.GetString(), bytes))
    return std::nullopt;
  return cmn::RegistryText(bytes).find(key, valueName);
}

bool holdsLineBreak(const std::string &text) {
  return text.find_first_of("\r\n") != text.npos;
}

// The file holds one value per line and has no escape for a line break, so a name or a string
// with one cannot be stored; nor can a string with a zero byte, which no reader of the value
// as a C string would see whole. A key starting with `-` would read as the deletion of a key.
bool storable(const char *key, const char *valueName, const RegistryData &data) {
  return key != nullptr && valueName != nullptr && *key != '\0' && *key != '-' &&
         !holdsLineBreak(key) && !holdsLineBreak(valueName) && !holdsLineBreak(data.text) &&
         data.text.find('\0') == std::string::npos;
}

int writeValue(const char *key, const char *valueName, const RegistryData &data) {
  if (!storable(key, valueName, data))
    return 0;
  const CString path = registryFilePath();
  const bool written = cmn::rewriteRegistryFile(
      path.GetString(), [&](const std::string &current) -> std::optional<std::string> {
        return cmn::RegistryText(current).withValue(key, valueName, data);
      });
  return written ? 1 : 0;
}

} // namespace

int GetRegValue(const char *key, const char *valueName, CString &value) {
  const std::optional<RegistryData> data = readValue(key, valueName);
  if (!data || data->type != RegistryData::Type::String)
    return 0;
  value = CString(data->text.data(), static_cast<int>(data->text.size()));
  return 1;
}

int GetRegValue(const char *key, const char *valueName, int32_t *value) {
  const std::optional<RegistryData> data = readValue(key, valueName);
  if (value == nullptr || !data || data->type != RegistryData::Type::Dword)
    return 0;
  *value = static_cast<int32_t>(data->number);
  return 1;
}

int SetRegValue(const char *key, const char *valueName, const CString &value) {
  RegistryData data;
  data.type = RegistryData::Type::String;
  data.text = value.bytes();
  return writeValue(key, valueName, data);
}

int SetRegValue(const char *key, const char *valueName, int32_t value) {
  RegistryData data;
  data.type = RegistryData::Type::Dword;
  data.number = static_cast<uint32_t>(value);
  return writeValue(key, valueName, data);
}
