// mhhost cat: the message of an indexed object as a mail reader shows it, or with --raw its
// body as the agent reads it.
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/MessageLoader.h"
#include "host/Terminal.h"
#include "host/TimeText.h"
#include "host/VisibleText.h"

#include <cstdio>

namespace {

// The view goes to a terminal or a pager: line ends as line feeds, and what the mail holds
// never acts on the terminal.
std::string printable(const std::string &text) {
  std::string lines;
  lines.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i)
    if (text[i] != '\r' || i + 1 >= text.size() || text[i + 1] != '\n')
      lines += text[i];
  return visibleText(lines);
}

std::string sizeText(uint64_t bytes) {
  char text[32];
  if (bytes < 1024)
    std::snprintf(text, sizeof text, "%llu bytes", static_cast<unsigned long long>(bytes));
  else if (bytes < uint64_t{1024} * 1024)
    std::snprintf(text, sizeof text, "%.1f KB", static_cast<double>(bytes) / 1024);
  else
    std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(bytes) / (1024 * 1024));
  return text;
}

std::string readerView(const ReadMessage &message) {
  std::string view;
  const auto field = [&view](const char *name, const std::string &value) {
    if (!value.empty())
      view.append(name).append(": ").append(printable(value)).append("\n");
  };
  field("From", message.from);
  field("To", message.to);
  field("Cc", message.cc);
  view.append("Date: ").append(formatDate(message.hasDate, message.date)).append("\n");
  field("Subject", message.subject);
  view += "\n";
  view += printable(message.text);
  if (!view.empty() && view.back() != '\n')
    view += '\n';
  if (!message.attachments.empty())
    view += "\n";
  for (const MailAttachment &attachment : message.attachments)
    view += "[attachment] " + printable(attachment.name.empty() ? "(no name)" : attachment.name) +
            "  " + printable(attachment.type) + "  " + sizeText(attachment.size) + "\n";
  return view;
}

} // namespace

int runCat(const CommandLine &line, const HostSettings &settings) {
  IndexedHit hit;
  if (const int status = loadIndexedHit("cat", line, settings, hit))
    return status;
  LoadedMessage loaded;
  MessageLoader loader(hit.agent->entries(), framingOfKey(hit.agentKey));
  if (!loader.load(hit.record, loaded))
    return reportError("message " + std::to_string(hit.id) + " can't be read in " +
                       hit.record.path() +
                       ": the mailbox changed since it was indexed; run mhhost index");
  // Raw bytes are the bytes as stored, but for a terminal, which they could steer.
  const std::string out = !line.has("raw")             ? readerView(loaded.message)
                          : standardOutputIsTerminal() ? visibleText(loaded.body)
                                                       : loaded.body;
  if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size() || std::fflush(stdout) != 0)
    return reportError("cannot write the message to standard output");
  return kExitOk;
}
