// Mail stores of the four clients, written for the benchmarks: each client's file layout,
// delimiters and line ends, around messages from MailCorpus.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum class Client { Eudora, InternetMail, Netscape, Pegasus };

struct ClientFormat {
  Client client;
  const char *name;     // as the reference host's --client option spells it
  const char *agentKey; // the registry key whose tag picks the client's agent
  const char *eol;
  const char *mailExt; // the extension of a mail file ("" for none)
  const char *ctrlExt; // the extension of the control file beside it
};

const std::vector<ClientFormat> &clientFormats();
const ClientFormat &clientFormat(Client client);

// The bytes in front of the first message of a mail file (Pegasus's file header), or none.
std::string mailFilePrologue(Client client);
// Appends one message to a mail file's bytes with the client's framing. `first` tells the
// first message of the file, which Pegasus writes without a delimiter.
void appendFramed(Client client, std::string &file, const std::string &message, bool first);

// What the messages are: everyday mail (MailCorpus), MIME-heavy mail (MimeCorpus), or mail
// shaped like a person's, in a real vocabulary with threads and lists (RealCorpus).
enum class Corpus { Everyday, Mime, Real };

struct StoreShape {
  uint64_t targetBytes = 0;    // stop once the mail files hold this much, or
  uint64_t messageCount = 0;   // stop after this many messages (whichever is not 0)
  size_t minMessage = 1024;    // message sizes, spread evenly over the logarithm (lognormal
  size_t maxMessage = 1 << 20; // around 4 KB for Corpus::Real), within these bounds
  unsigned mailboxes = 8;
  unsigned messagesPerMailbox = 0; // when not 0 (and messageCount is given), as many
                                   // mailboxes of this many messages as the count needs
  Corpus corpus = Corpus::Everyday;
};

struct StoreFiles {
  std::string root;                   // the mail directory
  std::vector<std::string> mailFiles; // every mail file, in the order written
  uint64_t bytes = 0;                 // their total size
  uint64_t messages = 0;
};

// Writes a store of `client` below `root` (made if missing), mailboxes spread over nested
// folders, each mail file with its control file. Ends the process with a message on failure.
StoreFiles writeStore(Client client, const std::string &root, const StoreShape &shape,
                      uint64_t seed);
