// Registry values: named strings and 32-bit integers under key paths. On Windows they are the
// real registry's, under HKEY_CURRENT_USER. Elsewhere they are kept in one text file in the
// registry editor's export format:
//
// File: $TUK_REGISTRY if set, else $XDG_CONFIG_HOME/tuk/registry.reg, else
// ~/.config/tuk/registry.reg. A missing file is an empty registry. Key and value names
// compare without regard to ASCII case. A write is read-modify-write under an exclusive lock,
// through a temporary file in the same directory that is flushed and renamed over the old
// one: a crash leaves the old or the new file, and concurrent writers lose no value. Lines
// the reader does not understand survive a rewrite unchanged.
#pragma once

#include "platform/CString.h"

#include <cstdint>

// 1 when the value exists with the asked type; `value` then holds it. 0 otherwise, with
// `value` untouched, so that a default set beforehand survives.
int GetRegValue(const char *key, const char *valueName, CString &value);
int GetRegValue(const char *key, const char *valueName, int32_t *value);

// Non-zero on success, 0 when the file could not be written.
int SetRegValue(const char *key, const char *valueName, const CString &value);
int SetRegValue(const char *key, const char *valueName, int32_t value);

#ifndef _WIN32
// The path of the registry file that the calls above use now.
CString registryFilePath();
#endif
