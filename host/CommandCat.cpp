// mhhost cat: the message of an indexed object as a mail reader shows it, or with --raw its
// body as the agent reads it.
#include "host/CommandSupport.h"
#include "host/Commands.h"
#include "host/ExitStatus.h"
#include "host/MessageLoader.h"
#include "host/TimeText.h"

#include <cstdio>

namespace {

// What a reader shows holds no control character but line ends and tabs: a byte of the mail
// must not steer the terminal.
std::string printable(const std::string &text) {
  std::string shown;
  shown.reserve(text.size());
  for (const char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (c == '\r')
      continue;
    shown += byte < 0x20 && c != '\n' && c != '\t' ? ' ' : byte == 0x7F ? ' ' : c;
  }
  return shown;
}

std::string sizeText(uint64_t bytes) {
  char text[32];
  if (bytes < 1024)
    std::snprintf(text, sizeof text, "%llu bytes", static_cast<unsigned long long>(bytes));
  else if (bytes < 1024 * 1024)
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
  const std::string out = line.has("raw") ? loaded.body : readerView(loaded.message);
  if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size() || std::fflush(stdout) != 0)
    return reportError("cannot write the message to standard output");
  return kExitOk;
}
