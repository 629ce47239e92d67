// Writing the four clients' stores: framing, file names and folders.
#include "bench/StoreWriter.h"

#include "bench/MailCorpus.h"
#include "bench/MimeCorpus.h"
#include "bench/RealCorpus.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace {

[[noreturn]] void fail(const std::string &what) {
  std::fprintf(stderr, "store_bench: %s: %s\n", what.c_str(), std::strerror(errno));
  std::exit(1);
}

void makeDirectories(const std::string &path) {
  for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string prefix = path.substr(0, slash);
    if (::mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST)
      fail("mkdir " + prefix);
    if (slash == std::string::npos)
      return;
  }
}

struct FileCloser {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File create(const std::string &path) {
  File file(std::fopen(path.c_str(), "wb"));
  if (!file)
    fail("create " + path);
  return file;
}

void write(std::FILE *file, const std::string &bytes, const std::string &path) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
    fail("write " + path);
}

// Mailbox names as people file their mail: a few at the top, the rest in folders.
std::string mailboxName(unsigned index) {
  static const char *const names[] = {
      "In",           "Sent",         "Trash",        "Work/Projects",
      "Work/Clients", "Archive/1997", "Archive/1998", "Lists/Digest"};
  constexpr unsigned named = sizeof names / sizeof names[0];
  if (index < named)
    return names[index];
  char folder[32];
  std::snprintf(folder, sizeof folder, "Folders/Box%03u", index);
  return folder;
}

} // namespace

const std::vector<ClientFormat> &clientFormats() {
  static const std::vector<ClientFormat> formats = {
      {Client::Eudora, "eudora", "Software\\Tuk\\Agents\\MHEudora", "\r\n", ".mbx", ".toc"},
      {Client::InternetMail, "internet", "Software\\Tuk\\Agents\\MHInternet", "\r\n", "", ".snm"},
      {Client::Netscape, "netscape", "Software\\Tuk\\Agents\\MHNetscape", "\n", "", ".snm"},
      {Client::Pegasus, "pegasus", "Software\\Tuk\\Agents\\MHPegasus", "\n", ".PMM", ".PMI"},
  };
  return formats;
}

const ClientFormat &clientFormat(Client client) {
  return clientFormats()[static_cast<size_t>(client)];
}

std::string mailFilePrologue(Client client) {
  if (client != Client::Pegasus)
    return {};
  std::string header = "Benchmark folder";
  header.resize(128, '\0');
  return header;
}

void appendFramed(Client client, std::string &file, const std::string &message, bool first) {
  switch (client) {
  case Client::Eudora:
    file += "From ???@??? Mon Jan 01 00:00:00 1998\r\n";
    break;
  case Client::InternetMail:
    file.append("\x00\x7f\x00\x7f", 4);
    break;
  case Client::Netscape:
    file += "From - Thu Jan 15 10:30:45 1998\n";
    break;
  case Client::Pegasus:
    if (!first)
      file += "\n\n\x1a";
    break;
  }
  file += message;
}

StoreFiles writeStore(Client client, const std::string &root, const StoreShape &shape,
                      uint64_t seed) {
  const ClientFormat &format = clientFormat(client);
  MailCorpus corpus(seed, format.eol);
  std::unique_ptr<MimeCorpus> mime;
  if (shape.corpus == Corpus::Mime)
    mime = std::make_unique<MimeCorpus>(corpus, seed);
  std::unique_ptr<RealCorpus> real;
  if (shape.corpus == Corpus::Real) {
    // The same years whatever the count, so that a large store's dates stay plausible.
    const uint64_t span = RealCorpus::kLastDate - RealCorpus::kFirstDate;
    real = std::make_unique<RealCorpus>(seed, format.eol, RealCorpus::kFirstDate,
                                        span / (shape.messageCount ? shape.messageCount : 100000));
  }
  BenchRandom sizes(seed ^ 0x5A5A5A5A);
  StoreFiles store;
  store.root = root;
  makeDirectories(root);

  // Each mailbox takes an equal share of the store, the last one what is left.
  unsigned mailboxes = shape.mailboxes ? shape.mailboxes : 1;
  if (shape.messagesPerMailbox && shape.messageCount)
    mailboxes = static_cast<unsigned>((shape.messageCount + shape.messagesPerMailbox - 1) /
                                      shape.messagesPerMailbox);
  std::string chunk;
  std::string message;
  for (unsigned box = 0; box < mailboxes; ++box) {
    const std::string stem = root + "/" + mailboxName(box);
    makeDirectories(stem.substr(0, stem.rfind('/')));
    const std::string mailPath = stem + format.mailExt;
    write(create(stem + format.ctrlExt).get(), std::string(64, '\0'), stem + format.ctrlExt);
    File file = create(mailPath);
    chunk = mailFilePrologue(client);
    uint64_t fileBytes = chunk.size();
    bool first = true;
    for (;;) {
      const bool last = box + 1 == mailboxes;
      if (shape.messageCount != 0) {
        const uint64_t due = shape.messageCount * (box + 1) / mailboxes;
        if (store.messages >= due)
          break;
      } else {
        const uint64_t due = last ? shape.targetBytes : shape.targetBytes * (box + 1) / mailboxes;
        if (store.bytes + fileBytes >= due)
          break;
      }
      message.clear();
      if (real) {
        real->appendMessage(message, real->nextSize(shape.minMessage, shape.maxMessage));
      } else {
        const size_t size = sizes.logUniform(shape.minMessage, shape.maxMessage);
        if (mime)
          mime->appendMessage(message, size);
        else
          corpus.appendMessage(message, size);
      }
      const size_t before = chunk.size();
      appendFramed(client, chunk, message, first);
      first = false;
      fileBytes += chunk.size() - before;
      ++store.messages;
      if (chunk.size() >= (4u << 20)) {
        write(file.get(), chunk, mailPath);
        chunk.clear();
      }
    }
    write(file.get(), chunk, mailPath);
    store.bytes += fileBytes;
    store.mailFiles.push_back(mailPath);
  }
  return store;
}
