// mhhost cat: the body of an indexed object, as the agent reads it now.
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/OpenedObject.h"
#include "host/RecordBuffer.h"

#include <cstdio>

int runCat(const CommandLine &line, const HostSettings &settings) {
  int64_t id = 0;
  if (!parseObjectId(line.arguments.front(), id))
    return reportUsageError("cat", "ID is the number of a search hit");
  std::string error;
  const std::unique_ptr<IndexDb> db =
      IndexDb::open(settings.databasePath, IndexDb::Access::ReadOnly, error);
  if (!db)
    return reportError(error);
  IndexedObject indexed;
  if (!db->findObject(id, indexed))
    return reportError(db->ok() ? "the index holds no message " + std::to_string(id)
                                : db->errorText());
  RecordBuffer record;
  if (!record.assign(indexed.record.data(), indexed.record.size()))
    return reportError("the record of message " + std::to_string(id) + " is damaged");
  const std::unique_ptr<AgentLibrary> agent = loadAgent(settings, indexed.agentKey, error);
  if (!agent)
    return reportError(error);
  std::string body;
  {
    OpenedObject object(agent->entries(), record.get());
    if (!object.isOpen())
      return reportError("message " + std::to_string(id) + " can't be opened in " + record.path() +
                         " (status " + std::to_string(object.openStatus()) +
                         "): the mailbox changed since it was indexed; run mhhost index");
    if (!object.readBody(body))
      return reportError("reading message " + std::to_string(id) + " failed");
  }
  if (std::fwrite(body.data(), 1, body.size(), stdout) != body.size() || std::fflush(stdout) != 0)
    return reportError("cannot write the body to standard output");
  return kExitOk;
}
