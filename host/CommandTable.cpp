// The command table, the help texts and the checks every command line goes through.
#include "host/Commands.h"

#include "host/Clients.h"
#include "host/ExitStatus.h"

#include <algorithm>
#include <cstdio>

namespace {

const char kCommonOptions[] = R"(Options of every command:
  --client eudora|internet|netscape|pegasus
                     the mail client; its agent key is Software\Tuk\Agents\MH<Client>
  --key KEY          another agent key (it must hold the client's tag, e.g. MHNetscape)
  --registry FILE    the registry file of the agent's settings (default: $TUK_REGISTRY,
                     else ~/.config/tuk/registry.reg)
  --db FILE          the index (default: $XDG_DATA_HOME/tuk/mhhost.db, else
                     ~/.local/share/tuk/mhhost.db)
  --language LANG    the agent's language (default EN; e.g. DE)
  --log              the agent's log on standard error
  --help             this help
mhhost --version tells the version.
Exit status: 0 done, 1 an error, 2 a wrong command line.
)";

const std::vector<const char *> kCommonOptionNames = {"client",   "key", "registry", "db",
                                                      "language", "log", "help"};

const std::vector<CommandSpec> kCommands = {
    {"config",
     "--mail-dir DIR [--exe-dir DIR] [--mail-ext EXT] [--ctrl-ext EXT] "
     "[--attachments on|off] [--yes]",
     R"(Sets where the client's mail is. The directories and the attachments flag go through
the agent's own settings page: its fields are filled, the page checks them and may warn
(answer Retry to give other values, or Cancel to keep these), then stores them. The file
extensions go into the registry directly.
  --mail-dir DIR       the mail directory (the top of the client's folders)
  --exe-dir DIR        the directory of the client's program
  --mail-ext EXT       the extension of mail files, e.g. .mbx ("" for none)
  --ctrl-ext EXT       the extension of the files beside them, e.g. .toc or .msf
  --attachments on|off Eudora only: index attachments
  --yes                ask nothing: a warning is answered with Cancel
)",
     {"mail-dir", "exe-dir", "mail-ext", "ctrl-ext", "attachments", "yes"},
     0,
     0,
     true,
     runConfig},
    {"list",
     "[--json]",
     R"(Lists every message of the store in the order the agent gives them: mailbox path,
offset, length, checksum, time and subject.
  --json   one JSON object per line: path, offset, length, checksum, time, subject
)",
     {"json"},
     0,
     0,
     true,
     runList},
    {"index",
     "[--stats]",
     R"(Indexes the store into the index database. The first run reads every message; a later
run reads again only the mailboxes that changed, and drops messages that are gone. Without
--client or --key, every store that config has set up or the index holds is brought up to
date.
  --stats   a line for each mailbox that was read
)",
     {"stats"},
     0,
     0,
     false,
     runIndex},
    {"search",
     "QUERY... [--sort newest|oldest|relevance] [--limit N] [--offset N] [--since DATE]\n"
     "         [--until DATE] [--count] [--output summary|ids|files|json]",
     R"(Searches the index, newest first, each hit with its id, date, sender, subject, store
and folder and a snippet, decoded as a mail reader shows them. QUERY is one argument or
several; all its words must be found:
  garden party            both words          "garden party"    the phrase
  garden OR party         either word         garden -draft     NOT draft, also: NOT draft
  (a OR b) c, garden*     groups, prefixes    quarterly-report  punctuation needs no quotes
  subject: from: to: cc: body: attachment:    a word or phrase in one field
  date:1998  date:1998-03  date:1998-03-14  date:1997..1998-06  date:..1998
  date:today  date:yesterday  date:7d..  date:2w..  date:3m..  date:1y..
  folder:Archive  client:netscape  id:42      (beside the words, not inside OR)
AND, OR and NOT count in any case. Dates are in your zone, on the messages' true dates.
  --sort S        newest (the default) or oldest, by the messages' true dates, those
                  without a date last; or relevance (bm25, a subject match weighs most)
  --limit N       at most N hits (default 20)
  --offset N      leave out the first N hits: with --limit, a page of hits
  --since DATE    from DATE on (YYYY-MM-DD or "YYYY-MM-DD HH:MM[:SS]", local time), on
                  the messages' true dates; a message without a date is left out
  --until DATE    up to DATE (a bare date includes its whole day)
  --count         only the number of hits, all of them
  --output F      summary (the default); ids, one a line; files, the mailbox's path and
                  the message's offset, a tab between, one a line, for scripts; json, one
                  object a line: id, store, folder, path, offset, length, time (the
                  agent's), date (UTC seconds or null), from, subject, snippet
  --json          the same as --output json
With --client or --key only that store's messages are searched.
)",
     {"limit", "offset", "sort", "since", "until", "count", "output", "json"},
     1,
     1000,
     false,
     runSearch},
    {"show",
     "ID",
     R"(Shows the message of a search hit in the agent's View Email window, drawn on the
terminal; Enter closes it. If the message changed since it was indexed, the agent says so.
)",
     {},
     1,
     1,
     false,
     runShow},
    {"cat",
     "ID [--raw]",
     R"(Writes the message of a search hit as a mail reader shows it: its From, To, Cc, Date and
Subject decoded, the text of its text parts (HTML as text), then a line for each attachment
with its name, type and size.
  --raw   the body as the agent reads it from the mailbox, byte for byte
)",
     {"raw"},
     1,
     1,
     false,
     runCat},
    {"status",
     "",
     R"(Lists the stores that config has set up or the index holds: each with its mail
directory, the number of messages the index holds and when it last read them; then the
index's file and size.
)",
     {},
     0,
     0,
     false,
     runStatus},
    {"serve",
     "[--port N] [--open]",
     R"(Serves a search page of the index to the browser of this machine, on 127.0.0.1 and ::1
only. It prints the page's address, which holds a token of its own: every request must carry
it, so keep the address to yourself. The page searches, shows messages and starts index
runs of every store; Ctrl-C ends the server.
  --port N   the port (default 0: any free one)
  --open     opens the page with xdg-open
)",
     {"port", "open"},
     0,
     0,
     false,
     runServe},
    {"demo",
     "[--dir DIR]",
     R"(Writes small sample stores of all four clients into a folder of its own, configures,
indexes and searches them, and shows one hit of each, asking nothing. The folder holds the
demo's own registry file and index, and is kept for you to try the commands on.
  --dir DIR   the folder to use (made if missing; it must be empty). Default: a new folder
              under $TMPDIR or /tmp
)",
     {"dir"},
     0,
     0,
     false,
     runDemo},
};

void printGeneralHelp(FILE *out) {
  std::fprintf(out, "Usage: mhhost COMMAND [OPTIONS]\n\n"
                    "The reference host of the mail agent tuk_mhmail.so: indexes a mail "
                    "store,\nsearches it and shows what it finds, all through the agent.\n\n"
                    "Commands:\n");
  for (const CommandSpec &command : kCommands)
    std::fprintf(out, "  %s %s\n", command.name, command.synopsis);
  std::fprintf(out,
               "\n%s\nStart with: mhhost demo\nOr: mhhost config --client netscape "
               "--mail-dir DIR --yes; mhhost index --client netscape; mhhost search WORDS\n"
               "mhhost COMMAND --help tells more.\n",
               kCommonOptions);
}

void printCommandHelp(const CommandSpec &command) {
  std::printf("Usage: mhhost %s %s\n\n%s\n%s", command.name, command.synopsis, command.help,
              kCommonOptions);
}

const CommandSpec *findCommand(const std::string &name) {
  for (const CommandSpec &command : kCommands)
    if (name == command.name)
      return &command;
  return nullptr;
}

bool allowed(const CommandSpec &command, const std::string &option) {
  const auto matches = [&](const char *name) { return option == name; };
  return std::any_of(kCommonOptionNames.begin(), kCommonOptionNames.end(), matches) ||
         std::any_of(command.options.begin(), command.options.end(), matches);
}

} // namespace

int runCommandLine(const CommandLine &line) {
  if (line.command.empty() && line.has("version")) {
    std::printf("mhhost %s\n", TUK_VERSION);
    return kExitOk;
  }
  if (line.command.empty() || line.command == "help") {
    const CommandSpec *about =
        line.arguments.empty() ? nullptr : findCommand(line.arguments.front());
    if (about != nullptr) {
      printCommandHelp(*about);
      return kExitOk;
    }
    const bool asked = line.has("help") || line.command == "help";
    printGeneralHelp(asked ? stdout : stderr);
    return asked ? kExitOk : kExitUsage;
  }
  const CommandSpec *command = findCommand(line.command);
  if (command == nullptr)
    return reportUsageError("", "unknown command '" + line.command + "'");
  if (line.has("help")) {
    printCommandHelp(*command);
    return kExitOk;
  }
  for (const auto &option : line.options)
    if (!allowed(*command, option.first))
      return reportUsageError(command->name,
                              "--" + option.first + " is no option of " + command->name);
  const int count = static_cast<int>(line.arguments.size());
  if (count < command->fewestArguments)
    return reportUsageError(command->name, "missing " + std::string(command->synopsis));
  if (count > command->mostArguments)
    return reportUsageError(command->name,
                            "unexpected argument '" + line.arguments[command->mostArguments] + "'");
  HostSettings settings;
  std::string error;
  if (!readHostSettings(line, settings, error))
    return reportUsageError(command->name, error);
  if (command->needsClient && settings.agentKey.empty())
    return reportUsageError(command->name,
                            "name the client with --client " + clientNames() + " (or --key KEY)");
  useRegistryFile(settings);
  return command->run(line, settings);
}
