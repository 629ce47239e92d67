// CStringList: a doubly linked list of CString with positions that stay valid until their
// node is removed.
#pragma once

#include "CString.h"
#include "Object.h"

struct CStringListNode;
typedef CStringListNode *POSITION;

class CStringList : public CObject {
public:
  CStringList() = default;
  CStringList(const CStringList &) = delete;
  CStringList &operator=(const CStringList &) = delete;
  ~CStringList() override;

  int GetCount() const { return count_; }
  bool IsEmpty() const { return count_ == 0; }
  POSITION AddTail(const CString &text);
  POSITION GetHeadPosition() const { return head_; }
  // Returns the element at `position` and moves `position` to the next node (null at the end).
  CString &GetNext(POSITION &position);
  const CString &GetNext(POSITION &position) const;
  CString &GetAt(POSITION position);
  const CString &GetAt(POSITION position) const;
  void RemoveAt(POSITION position);
  void RemoveAll();

private:
  CStringListNode *head_ = nullptr;
  CStringListNode *tail_ = nullptr;
  int count_ = 0;
};

struct CStringListNode {
  CStringListNode *next;
  CStringListNode *prev;
  CString data;
};
