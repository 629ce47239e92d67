// The prepared statements an IndexDb keeps, each made at its first use.
#pragma once

#include "host/IndexDb.h"

struct IndexDb::Statements {
  std::unique_ptr<Statement> agentKeys, findAgent, insertAgent, treeState, setTreeState;
  std::unique_ptr<Statement> setIndexedAt;
  std::unique_ptr<Statement> mailboxes, insertMailbox, setFileState, deleteMailbox;
  std::unique_ptr<Statement> objects, insertObject, insertText, replaceRecord;
  std::unique_ptr<Statement> deleteObject, moveObject, insertRebuiltText;
  std::unique_ptr<Statement> forgetObject, widenRun;
  std::unique_ptr<Statement> findObject;
};
