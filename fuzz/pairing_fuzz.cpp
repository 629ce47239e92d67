// The mailbox pairing over a tree of arbitrary names: the walk lists exactly what is in the
// tree, and every element of the mailbox list is a regular file with the mail extension, once,
// with a control entry of the same stem beside it.
//
// The input is a list of relative paths separated by zero bytes; a path that ends in '/' is
// a folder. Its first byte picks the pair of extensions.
#include "fuzz/FuzzSupport.h"
#include "store/MFNList.h"
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <sys/stat.h>

namespace {
struct Extensions {
  const char *mail;
  const char *control;
};
const Extensions kExtensions[] = {
    {".MBX", ".TOC"}, {"", ".SNM"}, {".PMM", ".PMI"}, {".toc", ".TOC"}};

constexpr size_t kMaxEntries = 48;
constexpr size_t kMaxDepth = 6;

// Makes `relative` below `root`: folders along the way, a file at the end unless the path
// ends in '/'. Components "." and ".." and empty ones are dropped; a part that cannot be made
// (a name too long, a file in the way) ends the path there.
void makePath(const std::string &root, const std::string &relative) {
  std::filesystem::path path = root;
  size_t depth = 0, begin = 0;
  while (begin < relative.size() && depth < kMaxDepth) {
    const size_t end = std::min(relative.find('/', begin), relative.size());
    const std::string part = relative.substr(begin, end - begin);
    begin = end + 1;
    if (part.empty() || part == "." || part == ".." || part.size() > 255)
      continue;
    path /= part;
    ++depth;
    std::error_code error;
    if (end == relative.size())
      std::ofstream{path};
    else if (!std::filesystem::create_directory(path, error) && error)
      return;
  }
}

// What is in the tree, as the walk names entries: folders with a '/' behind, and the "." and
// ".." of every folder.
std::set<std::string> treeEntries(const std::string &root) {
  std::set<std::string> entries = {root + "/.", root + "/.."};
  for (const auto &entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string name = entry.path().string();
    if (entry.symlink_status().type() == std::filesystem::file_type::directory)
      entries.insert({name + "/", name + "/.", name + "/.."});
    else
      entries.insert(name);
  }
  return entries;
}

std::string folded(std::string text, char (*fold)(char) = asciiToLower) {
  std::transform(text.begin(), text.end(), text.begin(), fold);
  return text;
}

// The relative stem of an entry: behind the mail folder, up to `cut` bytes before the end.
std::string stemOf(const std::string &entry, const std::string &root, size_t cut) {
  const size_t begin = root.size();
  return entry.size() >= begin + cut ? folded(entry.substr(begin, entry.size() - begin - cut))
                                     : std::string();
}

std::string extensionOf(const std::string &path) {
  const std::string last = path.substr(path.rfind('/') + 1);
  const size_t dot = last.rfind('.');
  return dot == std::string::npos ? std::string() : last.substr(dot);
}
} // namespace

extern "C" int FUZZ_ENTRY(const uint8_t *data, size_t size) {
  bringAgentUp();
  if (size == 0 || size > 8192)
    return 0;
  const Extensions &extensions = kExtensions[data[0] % 4];
  const std::string root = scratchDir() + "/tree";
  emptyDir(root);
  const std::string names(reinterpret_cast<const char *>(data + 1), size - 1);
  size_t made = 0;
  for (size_t begin = 0; begin <= names.size() && made < kMaxEntries; ++made) {
    const size_t end = std::min(names.find('\0', begin), names.size());
    makePath(root, names.substr(begin, end - begin));
    begin = end + 1;
  }
  // The walk lists every entry once, and nothing else.
  CStringList all;
  FUZZ_CHECK(FindFiles(all, (root + "/*.*").c_str()) == 0);
  std::set<std::string> walked;
  for (POSITION at = all.GetHeadPosition(); at;)
    FUZZ_CHECK(walked.insert(all.GetNext(at).GetString()).second);
  const std::set<std::string> entries = treeEntries(root);
  FUZZ_CHECK(walked == entries);
  CMailFilenameList list;
  const int count = list.findMailboxes(root.c_str(), extensions.mail, extensions.control);
  FUZZ_CHECK(count == list.GetCount());
  const std::string mailExt = folded(extensions.mail);
  const std::string controlLower = folded(extensions.control);
  const std::string controlUpper = folded(extensions.control, asciiToUpper);
  std::set<std::string> seen;
  for (POSITION at = list.GetHeadPosition(); at;) {
    const std::string element = list.GetNext(at).GetString();
    FUZZ_CHECK(seen.insert(element).second);
    FUZZ_CHECK(element.compare(0, root.size() + 1, root + "/") == 0);
    struct stat status;
    FUZZ_CHECK(::lstat(element.c_str(), &status) == 0 && S_ISREG(status.st_mode));
    FUZZ_CHECK(folded(extensionOf(element)) == mailExt);
    // A control entry: the extension, in lower or upper case, anywhere in its path, and the
    // same stem once as many bytes as the extension has are cut off its end.
    const std::string stem = stemOf(element, root, mailExt.size());
    FUZZ_CHECK(std::any_of(entries.begin(), entries.end(), [&](const std::string &entry) {
      return (entry.find(controlLower) != std::string::npos ||
              entry.find(controlUpper) != std::string::npos) &&
             stemOf(entry, root, controlLower.size()) == stem;
    }));
  }
  return 0;
}
