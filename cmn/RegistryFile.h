// The registry file on disk: read whole without a lock, replaced whole under a lock.
//
// A replacement goes through `<file>.tmp` in the same directory, flushed and renamed over the
// file, so that a reader or a crash sees the old file or the new one and never part of one.
// Writers serialise on an exclusive flock of `<file>.lock`: the rename gives the file a new
// inode, so a lock on the file itself would not hold across writers.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace cmn {

// Files over this size are refused rather than read.
inline constexpr size_t kRegistryFileLimit = 64u << 20;

// Reads the whole file at `path` into `bytes`. A missing file reads as empty. False, with
// `bytes` empty, when the file cannot be read, is not a regular file, or is over the limit.
bool readRegistryFile(const std::string &path, std::string &bytes);

// Takes the current text of the file and returns the text to write, or nothing to leave the
// file as it is and fail.
using RegistryEdit = std::function<std::optional<std::string>(const std::string &current)>;

// Under the writers' lock, reads the file, applies `edit` and replaces the file with the result.
// Makes the file's missing parent directories. False when any step fails; the file then keeps
// its old contents.
bool rewriteRegistryFile(const std::string &path, const RegistryEdit &edit);

} // namespace cmn
