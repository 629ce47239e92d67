/* The agent's binary interface: the one export, the blocks that cross it, the table of
 * entries and the record a host keeps. C-compatible; hosts include it as it is.
 *
 * Layouts are those of the 32-bit interface. On a 64-bit build every pointer and every
 * handle (object, search, window) widens to 8 bytes; every other word stays 32 bits, with
 * natural alignment. ObjectRecord is the same on every build.
 *
 * Conventions of every entry:
 * - Statuses are int32_t (see AgentStatus below); times are int32_t seconds since 1970, the
 *   low 32 bits of mktime's result in the process's local time zone, -1 when mktime fails.
 * - An object handle is the host's from an openObject that returned 0 until closeObject; a
 *   search handle from a findFirstObjectHandle that returned 0 until closeFindObjectHandle
 *   or a 122 from findNextObjectHandle. The host owns every ObjectRecord and every buffer.
 * - Out arguments are written only as each entry documents; on failure they hold what they
 *   held unless stated.
 * - Calls into one loaded agent are made one at a time.
 */
#ifndef TUK_AGENT_ABI_H
#define TUK_AGENT_ABI_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uintptr_t AgentHandle; /* object, search and window handles; all ones = -1 */
#define AGENT_INVALID_HANDLE (~(AgentHandle)0)

/* The host's log: called with 0, the writing source file (".\\mhmail" form), the line, a
 * printf-style format and its arguments; only while the log flag is not zero. */
typedef int (*LogSink)(uint32_t zero, const char *sourceFile, int line, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 4, 5)))
#endif
    ;

typedef struct {
  const char *agentKey; /* decides the client by its tag; the registry key of the settings */
  LogSink logSink;
  const char *language; /* "EN": the built-in strings; else a language module's */
  uint32_t word12, word16, word20; /* not used by the agent */
} AgentParams;

struct AgentEntryTable;

typedef struct {
  const struct AgentEntryTable *entryTable;
  const char *agentName; /* the client's display name; valid until the next initAgent */
  uint32_t fixedWord1;   /* 0x10001 */
  uint32_t fixedWord2;   /* 1 */
  uint32_t fixedWord3;   /* 1 */
} AgentResult;

/* The record that names one message; the host stores it and hands it back. Fixed to the
 * byte on every build, little-endian. A filled record takes strlen(path) + 21 bytes; `size`
 * then holds strlen(path) + 18. */
typedef struct {
  uint32_t size; /* in: capacity of the host's buffer (find calls only); out: see above */
  uint32_t checksum;
  uint32_t offset;
  uint32_t length;
  int32_t mailboxStamp; /* the mailbox's last-write time when the record was made */
  char path[1];         /* zero-terminated, strlen(path) + 1 bytes */
} ObjectRecord;

/* Results of the entries. */
enum AgentStatus {
  StatusOk = 0,
  StatusNoExtensions = 2,      /* ERROR_FILE_NOT_FOUND */
  StatusNoMoreObjects = 18,    /* ERROR_NO_MORE_FILES */
  StatusOpenFailed = 110,      /* ERROR_OPEN_FAILED */
  StatusBufferTooSmall = 122,  /* ERROR_INSUFFICIENT_BUFFER */
  StatusMailFileFailed = -1,
  StatusBadSignature = -4,
  StatusSeekOutOfRange = -8,
  StatusEndOfData = -9,
  StatusPropertiesTooLarge = -11
};

struct AgentEntryTable { /* 22 entries, in this order */
  int32_t (*findFirstObjectHandle)(uint32_t unused, AgentHandle *search, ObjectRecord *record,
                                   int32_t *time);
  int32_t (*findNextObjectHandle)(AgentHandle search, ObjectRecord *record, int32_t *time);
  int32_t (*closeFindObjectHandle)(AgentHandle search);
  int32_t (*keepObject)(const ObjectRecord *record, uint32_t unused);
  int32_t (*openObject)(AgentHandle *object, const ObjectRecord *record, int32_t *time);
  int32_t (*readObject)(AgentHandle object, void *buffer, uint32_t wanted, uint32_t *got);
  int32_t (*getObjectProperties)(AgentHandle object, void *buffer, uint32_t capacity,
                                 uint32_t *used, uint32_t *count);
  int32_t (*seekObject)(AgentHandle object, int32_t origin, int32_t offset);
  int32_t (*tellObject)(AgentHandle object, uint32_t *position);
  int32_t (*unsupportedObjectCall)(uint32_t, uint32_t, uint32_t);
  int32_t (*closeObject)(AgentHandle object);
  int32_t (*reservedObjectCall)(uint32_t, uint32_t);
  int32_t (*propPageInit)(AgentHandle parentWindow, uint32_t unused, AgentHandle *pageWindow);
  int32_t (*Validate)(int32_t commit);
  int32_t (*propPageClose)(void);
  void (*propPageFocus)(void);
  int32_t (*getObjectIcon)(uint32_t unused, int32_t *smallIcon, int32_t *largeIcon);
  int32_t (*RunObject)(const ObjectRecord *record);
  int32_t (*getPropertyTemplates)(void *buffer, uint32_t capacity, uint32_t *needed,
                                  uint32_t *count);
  uint32_t (*getLogFlag)(void);
  void (*setLogFlag)(uint32_t flag);
  int32_t (*terminateAgent)(void);
};

/* The one export. Returns 0 on every path. */
int32_t initAgent(const AgentParams *params, AgentResult *result);
typedef int32_t (*InitAgentFunction)(const AgentParams *, AgentResult *);

/* Layout checks: the 32-bit offsets where pointers are 4 bytes, and the widened ones where
 * they are 8. */
#define TUK_PTR ((size_t)sizeof(void *))
#if defined(__cplusplus)
#define TUK_ABI_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define TUK_ABI_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif
TUK_ABI_ASSERT(sizeof(AgentHandle) == sizeof(void *), "a handle is pointer-wide");
TUK_ABI_ASSERT(offsetof(AgentParams, logSink) == 1 * sizeof(void *), "AgentParams.logSink");
TUK_ABI_ASSERT(offsetof(AgentParams, language) == 2 * sizeof(void *), "AgentParams.language");
TUK_ABI_ASSERT(offsetof(AgentParams, word12) == 3 * sizeof(void *), "AgentParams.word12");
TUK_ABI_ASSERT(sizeof(AgentParams) == (sizeof(void *) == 4 ? 24 : 40), "AgentParams size");
TUK_ABI_ASSERT(offsetof(AgentResult, agentName) == sizeof(void *), "AgentResult.agentName");
TUK_ABI_ASSERT(offsetof(AgentResult, fixedWord1) == 2 * sizeof(void *), "AgentResult.fixedWord1");
TUK_ABI_ASSERT(sizeof(AgentResult) == (sizeof(void *) == 4 ? 20 : 32), "AgentResult size");
TUK_ABI_ASSERT(offsetof(ObjectRecord, size) == 0, "ObjectRecord.size");
TUK_ABI_ASSERT(offsetof(ObjectRecord, checksum) == 4, "ObjectRecord.checksum");
TUK_ABI_ASSERT(offsetof(ObjectRecord, offset) == 8, "ObjectRecord.offset");
TUK_ABI_ASSERT(offsetof(ObjectRecord, length) == 12, "ObjectRecord.length");
TUK_ABI_ASSERT(offsetof(ObjectRecord, mailboxStamp) == 16, "ObjectRecord.mailboxStamp");
TUK_ABI_ASSERT(offsetof(ObjectRecord, path) == 20, "ObjectRecord.path");
TUK_ABI_ASSERT(sizeof(struct AgentEntryTable) == 22 * sizeof(void *), "22 entries");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, keepObject) == 3 * TUK_PTR, "entry 3");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, readObject) == 5 * TUK_PTR, "entry 5");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, unsupportedObjectCall) == 9 * TUK_PTR, "entry 9");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, closeObject) == 10 * TUK_PTR, "entry 10");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, propPageInit) == 12 * TUK_PTR, "entry 12");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, propPageClose) == 14 * TUK_PTR, "entry 14");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, propPageFocus) == 15 * TUK_PTR, "entry 15");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, RunObject) == 17 * TUK_PTR, "entry 17");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, getPropertyTemplates) == 18 * TUK_PTR, "entry 18");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, terminateAgent) == 21 * TUK_PTR, "entry 21");
#if UINTPTR_MAX == 0xFFFFFFFFu
TUK_ABI_ASSERT(offsetof(AgentParams, language) == 8, "32-bit AgentParams.language at 8");
TUK_ABI_ASSERT(offsetof(AgentParams, word20) == 20, "32-bit AgentParams.word20 at 20");
TUK_ABI_ASSERT(offsetof(AgentResult, fixedWord3) == 16, "32-bit AgentResult.fixedWord3 at 16");
TUK_ABI_ASSERT(sizeof(struct AgentEntryTable) == 88, "32-bit table of 88 bytes");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, terminateAgent) == 0x54, "32-bit entry 21 at 0x54");
TUK_ABI_ASSERT(offsetof(struct AgentEntryTable, getPropertyTemplates) == 0x48, "entry 18 at 0x48");
#endif
#undef TUK_PTR

#ifdef __cplusplus
}
#endif

#endif
