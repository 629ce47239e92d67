// One object of the agent, open from openObject until the destructor's closeObject: its
// body as readObject gives it and its fields from getObjectProperties.
#pragma once

#include "host/PropertyBlock.h"
#include "include/tuk/AgentAbi.h"

#include <string>
#include <vector>

class OpenedObject {
public:
  OpenedObject(const AgentEntryTable &entries, const ObjectRecord *record);
  OpenedObject(const OpenedObject &) = delete;
  OpenedObject &operator=(const OpenedObject &) = delete;
  ~OpenedObject();

  bool isOpen() const { return open_; }
  int32_t openStatus() const { return openStatus_; }
  int32_t time() const { return time_; }

  // Appends the body from the stream's present position to its end. False when a read
  // fails with anything but the end of the data.
  bool readBody(std::string &body);
  // The seven properties' fields. False when the agent gives none or a malformed block.
  bool readFields(MessageFields &fields);

private:
  const AgentEntryTable &entries_;
  AgentHandle object_ = 0;
  int32_t openStatus_ = 0;
  int32_t time_ = -1;
  bool open_ = false;
  std::vector<unsigned char> properties_;
  std::vector<Property> parsed_;
};
