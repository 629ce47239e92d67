// mhhost show: RunObject for a hit. The agent's View Email window is drawn on the terminal as
// its header lines, a blank line and the body, and closed with Enter (at once when there is
// no terminal). A message box of the agent is printed instead when the message is gone.
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/IndexDb.h"
#include "host/RecordBuffer.h"
#include "host/Terminal.h"
#include "host/TerminalUser.h"
#include "host/VisibleText.h"

#include <cstdio>

namespace {

// The View Email window's controls, in the order of the rows on its screen.
struct ViewRow {
  const char *label;
  int32_t id;
};
const ViewRow kHeaderRows[] = {{"To", 1009},   {"From", 1011},    {"CC", 1010},
                               {"Date", 1012}, {"Subject", 1014}, {"Location", 1013}};
constexpr int32_t kBodyId = 1015;
constexpr int32_t kDoneId = 1008;

// The body box holds Windows line ends (the Pegasus agent makes them): on the terminal a
// line ends with a line feed alone.
std::string terminalLines(const std::string &text) {
  std::string lines;
  lines.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') {
      size_t next = i;
      while (next < text.size() && text[next] == '\r')
        ++next;
      if (next < text.size() && text[next] == '\n') {
        i = next - 1;
        continue;
      }
    }
    lines += text[i];
  }
  return lines;
}

// The window shows the message as stored; drawn on a terminal, what it holds is made visible
// so that it can't steer the terminal.
void renderViewEmail(TukWindow dialog, bool mayAsk) {
  const bool terminal = standardOutputIsTerminal();
  const auto shown = [terminal, dialog](int id) {
    const std::string text = terminalLines(windowText(tukWindowFindChild(dialog, id)));
    return terminal ? visibleText(text) : text;
  };
  for (const ViewRow &row : kHeaderRows)
    std::printf("%s: %s\n", row.label, shown(row.id).c_str());
  const std::string body = shown(kBodyId);
  std::printf("\n%s%s", body.c_str(), body.empty() || body.back() == '\n' ? "" : "\n");
  std::fflush(stdout);
  std::string ignored;
  if (mayAsk)
    askLine("-- Enter closes the window --", ignored);
  // Closed with its own Done button; the window system closes it anyway when we return.
  tukWindowClick(tukWindowFindChild(dialog, kDoneId));
}

} // namespace

int runShow(const CommandLine &line, const HostSettings &settings) {
  IndexedHit hit;
  if (const int status = loadIndexedHit("show", line, settings, hit))
    return status;
  const int64_t id = hit.id;
  RecordBuffer &record = hit.record;
  AgentLibrary *const agent = hit.agent.get();

  TerminalUser user;
  user.mayAsk = !settings.askNothing && standardInputIsTerminal();
  user.showDialog = [&user](TukWindow dialog) { renderViewEmail(dialog, user.mayAsk); };
  int32_t status = 0;
  {
    ScopedUser person(user);
    status = agent->entries().RunObject(record.get());
  }
  if (status == StatusOpenFailed)
    return reportError("the mailbox " + record.path() + " of message " + std::to_string(id) +
                       " can't be opened any more; run mhhost index");
  if (user.dialogs == 0)
    return reportError("message " + std::to_string(id) +
                       " is no longer where it was indexed; run mhhost index");
  return kExitOk;
}
