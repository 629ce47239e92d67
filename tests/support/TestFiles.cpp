// Files and folders for tests, the same on every platform.
#include "tests/support/TestFiles.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {
// Removes `path` and all below it; folders a test made unreadable are made readable first.
void removeTree(const std::filesystem::path &path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(std::filesystem::symlink_status(path, ignored))) {
    std::filesystem::permissions(path, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    for (const auto &entry : std::filesystem::directory_iterator(path, ignored))
      removeTree(entry.path());
  }
  std::filesystem::remove(path, ignored);
}
} // namespace

TempDir::~TempDir() {
  if (!path_.empty())
    removeTree(path_);
}

std::string TempDir::file(const std::string &relative) const {
  return path_ + "/" + relative;
}

std::string repeated(const std::string &unit, size_t times) {
  std::string bytes;
  bytes.reserve(unit.size() * times);
  while (times-- > 0)
    bytes += unit;
  return bytes;
}

void makeDirs(const std::string &path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error)
    ADD_FAILURE() << "mkdir " << path << ": " << error.message();
}

static void writeWithMode(const std::string &path, const std::string &bytes,
                          std::ios::openmode mode) {
  const size_t slash = path.rfind('/');
  if (slash != std::string::npos && slash > 0)
    makeDirs(path.substr(0, slash));
  std::ofstream out(path, mode | std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out)
    ADD_FAILURE() << "cannot write " << path;
}

void writeFile(const std::string &path, const std::string &bytes) {
  writeWithMode(path, bytes, std::ios::trunc);
}

void appendFile(const std::string &path, const std::string &bytes) {
  writeWithMode(path, bytes, std::ios::app);
}

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}
