// Reading a message's PropertyBlock: little-endian CDR, a count, then for each property its
// name (string), its value (string) and its type (unsigned long). The reader never reads
// past the end it is given; anything malformed makes it fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Little-endian CDR items from a buffer: longs aligned on 4 from the buffer's start,
// strings as an unsigned long count of bytes including a terminating zero, then the bytes.
class CdrReader {
public:
  CdrReader(const unsigned char *begin, size_t size) : begin_(begin), size_(size) {}

  bool readULong(uint32_t &value);
  bool readString(std::string &value);
  size_t position() const { return position_; }

private:
  bool align4();

  const unsigned char *begin_;
  size_t size_;
  size_t position_ = 0;
};

struct Property {
  std::string name;
  std::string value;
  uint32_t type = 0;
};

// The properties of a block, or false when the block is malformed.
bool readPropertyBlock(const unsigned char *bytes, size_t size, std::vector<Property> &out);

// The fields a host indexes. The agent gives seven properties in a fixed order (subject,
// title, location, to, from, cc, author); their names may be translated, their order not.
struct MessageFields {
  std::string subject;
  std::string location;
  std::string to;
  std::string from;
  std::string cc;
};

// The fields of the seven properties; false when there are fewer than seven.
bool fieldsOfProperties(const std::vector<Property> &properties, MessageFields &fields);
