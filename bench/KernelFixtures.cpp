// The kernel benchmarks' inputs: strings, messages and mail files, each made on first use.
#include "bench/KernelFixtures.h"

#include "agent/mhmail.h"
#include "bench/FileCache.h"
#include "bench/MailCorpus.h"
#include "platform/CString.h"
#include "store/MAILDATE.h"
#include "store/MailHeaders.h"

#include <cstdio>
#include <cstdlib>
#include <ftw.h>
#include <map>
#include <memory>
#include <unistd.h>

namespace {

constexpr uint64_t kSeed = 0x6B65726E656Cull;
constexpr size_t kMailboxBytes = 16u << 20;

int removeEntry(const char *path, const struct stat *, int, struct FTW *) {
  return ::remove(path);
}

// A folder for the run's files, removed at exit.
class ScratchFolder {
public:
  ScratchFolder() {
    const char *tmp = std::getenv("TMPDIR");
    path_ = std::string(tmp && *tmp ? tmp : "/tmp") + "/kernel_bench.XXXXXX";
    if (!::mkdtemp(&path_[0])) {
      std::perror("kernel_bench: mkdtemp");
      std::exit(1);
    }
  }
  ScratchFolder(const ScratchFolder &) = delete;
  ScratchFolder &operator=(const ScratchFolder &) = delete;
  ~ScratchFolder() { ::nftw(path_.c_str(), removeEntry, 8, FTW_DEPTH | FTW_PHYS); }
  const std::string &path() const { return path_; }

private:
  std::string path_;
};

ScratchFolder &scratch() {
  static ScratchFolder folder;
  return folder;
}

} // namespace

void loadAgentStrings() {
  static bool loaded = false;
  if (loaded)
    return;
  loaded = true;
  // The overrides are looked up in a registry file that does not exist: none apply.
  ::setenv("TUK_REGISTRY", (scratch().path() + "/registry.reg").c_str(), 1);
  AFX_MAINTAIN_STATE state(agentModuleState());
  loadStatics(CString("EN"), "Software\\Tuk\\Agents\\MHEudora");
  const CMailDate first(CString("Thu, 15 Jan 1998 10:30:45 -0500")); // loads the month names
  (void)first;
}

const std::string &randomBytes(size_t size) {
  static std::map<size_t, std::string> made;
  std::string &bytes = made[size];
  if (bytes.size() != size) {
    BenchRandom random(kSeed + size);
    bytes.resize(size);
    for (size_t i = 0; i < size; ++i)
      bytes[i] = static_cast<char>(random.next());
  }
  return bytes;
}

const std::string &sampleMessage(size_t size) {
  static std::map<size_t, std::string> made;
  std::string &message = made[size];
  if (message.empty()) {
    MailCorpus corpus(kSeed + size, "\r\n");
    message = " Mon Jan 01 00:00:00 1998\r\n";
    corpus.appendMessage(message, size);
  }
  return message;
}

const std::string &sampleMailbox(Client client, MailboxContent content) {
  static std::map<std::pair<Client, MailboxContent>, std::string> made;
  std::string &path = made[{client, content}];
  if (!path.empty())
    return path;
  static const char *const names[] = {"everyday", "mixed", "from"};
  const ClientFormat &format = clientFormat(client);
  MailCorpus corpus(kSeed, format.eol);
  BenchRandom sizes(kSeed);
  std::string file = mailFilePrologue(client);
  std::string message;
  for (bool first = true; file.size() < kMailboxBytes; first = false) {
    message.clear();
    if (content == MailboxContent::FromLines) {
      corpus.appendHeaders(message, false);
      corpus.appendFromText(message, sizes.logUniform(1024, 16 * 1024));
    } else {
      corpus.appendMessage(message, content == MailboxContent::Mixed
                                        ? sizes.logUniform(1024, 1 << 20)
                                        : sizes.logUniform(1024, 16 * 1024));
    }
    appendFramed(client, file, message, first);
  }
  path = scratch().path() + "/" + format.name + "-" + names[static_cast<int>(content)] +
         format.mailExt;
  std::unique_ptr<std::FILE, int (*)(std::FILE *)> out(std::fopen(path.c_str(), "wb"), std::fclose);
  if (!out || std::fwrite(file.data(), 1, file.size(), out.get()) != file.size()) {
    std::perror(("kernel_bench: " + path).c_str());
    std::exit(1);
  }
  out.reset();
  // In the cache as a mail file read from disk is, not as one just written.
  dropFromCache({path});
  readThrough({path});
  return path;
}
