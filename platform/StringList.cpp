// CStringList: the node list behind the agent's mailbox and file lists.
#include "StringList.h"

CStringList::~CStringList() {
  RemoveAll();
}

POSITION CStringList::AddTail(const CString &text) {
  auto *node = new CStringListNode{nullptr, tail_, text};
  if (tail_)
    tail_->next = node;
  else
    head_ = node;
  tail_ = node;
  ++count_;
  return node;
}

CString &CStringList::GetNext(POSITION &position) {
  CStringListNode *node = position;
  position = node->next;
  return node->data;
}

const CString &CStringList::GetNext(POSITION &position) const {
  const CStringListNode *node = position;
  position = node->next;
  return node->data;
}

CString &CStringList::GetAt(POSITION position) {
  return position->data;
}

const CString &CStringList::GetAt(POSITION position) const {
  return position->data;
}

void CStringList::RemoveAt(POSITION position) {
  if (position->prev)
    position->prev->next = position->next;
  else
    head_ = position->next;
  if (position->next)
    position->next->prev = position->prev;
  else
    tail_ = position->prev;
  delete position;
  --count_;
}

void CStringList::RemoveAll() {
  while (head_)
    RemoveAt(head_); // NOLINT(clang-analyzer-cplusplus.NewDelete): the head has no prev
}
