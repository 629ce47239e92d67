// mhhost list: every object of a store, in the agent's order, straight from the walk.
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/Json.h"
#include "host/OpenedObject.h"
#include "host/StoreWalk.h"
#include "host/TimeText.h"
#include "host/VisibleText.h"

#include <cstdio>

int runList(const CommandLine &line, const HostSettings &settings) {
  std::string error, mailDirectory;
  if (!existingMailDirectory(settings.agentKey, mailDirectory, error))
    return reportError(error);
  const std::unique_ptr<AgentLibrary> agent = loadAgent(settings, settings.agentKey, error);
  if (!agent)
    return reportError(error);
  const bool json = line.has("json");
  StoreWalk walk(agent->entries());
  int32_t time = -1;
  while (const ObjectRecord *record = walk.next(time)) {
    // The subject is a property of the open object; a record that no longer opens has none.
    MessageFields fields;
    {
      OpenedObject object(agent->entries(), record);
      if (!object.readFields(fields))
        fields = MessageFields();
    }
    const std::string path = walk.record().path();
    if (json)
      std::printf("{\"path\":%s,\"offset\":%lu,\"length\":%lu,\"checksum\":%lu,\"time\":%ld,"
                  "\"subject\":%s}\n",
                  jsonString(path).c_str(), static_cast<unsigned long>(record->offset),
                  static_cast<unsigned long>(record->length),
                  static_cast<unsigned long>(record->checksum), static_cast<long>(time),
                  jsonString(fields.subject).c_str());
    else
      std::printf(
          "%s\t%lu\t%lu\t%08lx\t%s\t%s\n", path.c_str(), static_cast<unsigned long>(record->offset),
          static_cast<unsigned long>(record->length), static_cast<unsigned long>(record->checksum),
          formatDate(time != -1, time).c_str(), visibleText(fields.subject).c_str());
  }
  if (walk.count() == 0)
    std::fprintf(stderr, "the agent finds no message below %s\n", mailDirectory.c_str());
  return kExitOk;
}
