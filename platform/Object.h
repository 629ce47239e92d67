// CObject: the common root of the agent's classes.
#pragma once

class CObject {
public:
  CObject() = default;
  CObject(const CObject &) = default;
  CObject &operator=(const CObject &) = default;
  virtual ~CObject() = default;
};
