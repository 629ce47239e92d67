// Fault injection for tests: makes the next calls of one system operation behind the file,
// mapping, listing and status stand-ins, the zone's source and the registry file fail as if
// the system had refused them.
//
// Armed per thread, so a test never disturbs work on another thread. Production code never
// arms anything; an unarmed check costs one thread-local read.
#pragma once

enum class FileOperation {
  OpenFile,       // the open of CreateFileA
  MapView,        // the mmap of MapViewOfFile
  OpenDirectory,  // the opening of the directory in FindFirstFileA
  ReadDirectory,  // each read of a directory entry in FindFirstFileA
  StatPath,       // each stat of a path: status, attributes, icons, the zone, the registry
  RegistryOpen,   // each open a registry read or write makes
  RegistryWrite,  // each write of the registry's new text
  RegistryRename, // the rename that puts the registry's new file in place
  RegistryLock,   // the lock that registry writers take
  Count
};

// The next `count` calls of `operation` on this thread fail with errno `error`.
void failNextFileOperations(FileOperation operation, int error, int count = 1);
// The same after `skip` calls that succeed: the third directory a walk opens, say.
void failFileOperationsAfter(FileOperation operation, int skip, int error, int count = 1);
// Disarms every operation on this thread.
void clearFileOperationFailures();

// For the stand-ins: true (with errno set) when this call of `operation` is to fail.
bool injectedFailure(FileOperation operation);
