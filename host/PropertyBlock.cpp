// The CDR reader and the PropertyBlock layout.
#include "host/PropertyBlock.h"

namespace {
// A block holds seven properties; a count far beyond that is damage, not data.
constexpr uint32_t kMostProperties = 1024;
} // namespace

bool CdrReader::align4() {
  const size_t aligned = (position_ + 3) & ~static_cast<size_t>(3);
  if (aligned > size_)
    return false;
  position_ = aligned;
  return true;
}

bool CdrReader::readULong(uint32_t &value) {
  if (!align4() || size_ - position_ < 4)
    return false;
  const unsigned char *p = begin_ + position_;
  value = static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
          static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
  position_ += 4;
  return true;
}

bool CdrReader::readString(std::string &value) {
  uint32_t count = 0;
  if (!readULong(count) || count == 0 || count > size_ - position_)
    return false;
  const auto *text = reinterpret_cast<const char *>(begin_ + position_);
  if (text[count - 1] != '\0')
    return false;
  value.assign(text, count - 1);
  position_ += count;
  return true;
}

bool readPropertyBlock(const unsigned char *bytes, size_t size, std::vector<Property> &out) {
  CdrReader reader(bytes, size);
  uint32_t count = 0;
  if (!reader.readULong(count) || count > kMostProperties)
    return false;
  out.clear();
  out.reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    Property property;
    if (!reader.readString(property.name) || !reader.readString(property.value) ||
        !reader.readULong(property.type))
      return false;
    out.push_back(std::move(property));
  }
  return true;
}

bool fieldsOfProperties(const std::vector<Property> &properties, MessageFields &fields) {
  if (properties.size() < 7)
    return false;
  fields.subject = properties[0].value;
  fields.location = properties[2].value;
  fields.to = properties[3].value;
  fields.from = properties[4].value;
  fields.cc = properties[5].value;
  return true;
}
