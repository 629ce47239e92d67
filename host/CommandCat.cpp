// mhhost cat: the body of an indexed object, as the agent reads it now.
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/OpenedObject.h"
#include "host/RecordBuffer.h"

#include <cstdio>

int runCat(const CommandLine &line, const HostSettings &settings) {
  IndexedHit hit;
  if (const int status = loadIndexedHit("cat", line, settings, hit))
    return status;
  const int64_t id = hit.id;
  RecordBuffer &record = hit.record;
  AgentLibrary *const agent = hit.agent.get();
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
