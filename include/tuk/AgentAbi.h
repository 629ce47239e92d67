/* The agent's binary interface: the one export, the blocks that cross it, the table of
 * entries and the record a host keeps. C-compatible; hosts include it as it is. This header
 * is the whole contract between a host and the agent.
 *
 * Layouts are those of the 32-bit interface. On a 64-bit build every pointer and every
 * handle (object, search, window) widens to 8 bytes; every other word stays 32 bits, with
 * natural alignment. ObjectRecord is the same on every build.
 *
 * Conventions of every entry:
 * - Statuses are int32_t (see AgentStatus below); times are int32_t seconds since 1970, the
 *   low 32 bits of mktime's result in the process's local time zone, -1 when mktime fails.
 *   A message's time is its Date header's fields read as local time (mktime with tm_isdst
 *   -1); a message without a readable date gets 1 February 1971, 00:00:00 local time.
 * - Ownership. The host owns, allocates and frees every block it passes: AgentParams,
 *   AgentResult, every ObjectRecord and every buffer. The agent keeps no pointer to any of
 *   them past the call, except the LogSink. The agent owns what stands behind a handle; the
 *   host holds the handle:
 *     object handle  from an openObject that returned 0 until its closeObject;
 *     search handle  from a findFirstObjectHandle that returned 0 until its
 *                    closeFindObjectHandle, or a 122 from findNextObjectHandle;
 *     page window    from propPageInit until propPageClose (or the last terminateAgent).
 *   A handle that is not live (closed, never given out, made up) is never read: the entry
 *   gives its failure status (-4 for objects, 18 or 0 for searches) and writes nothing.
 * - Out arguments are written only as each entry documents; on failure they hold what they
 *   held unless stated. A null pointer where an entry only delivers a value (time, count,
 *   position) is skipped; a null record gives the entry's failure status.
 * - Calls into one loaded agent are made one at a time. RunObject and the settings page ask
 *   the user through the platform's window system (platform/WindowApi.h), whose callbacks
 *   run inside the entry and must not call the entries.
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
 * printf-style format and its arguments; only while the log flag is not zero (setLogFlag),
 * on the thread of the entry that logs. Each call is one message, with or without a final
 * newline. The strings are the agent's and valid during the call only. The result is not
 * read. */
typedef int (*LogSink)(uint32_t zero, const char *sourceFile, int line, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 4, 5)))
#endif
    ;

/* What the host passes to initAgent. Read during the call only: the strings are copied, and
 * of the block only logSink is kept, for the life of the module (a later first initAgent
 * replaces it). */
typedef struct {
  /* Decides the client by the first of "MHEudora", "MHInternet", "MHNetscape", "MHPegasus"
   * found in it, anywhere; the registry key under which the settings lie. */
  const char *agentKey;
  LogSink logSink; /* may be null: nothing is logged */
  /* "EN": the built-in strings; else those of the language module "tuk_mhmail" + language
   * beside the agent, or the built-in ones when there is none. */
  const char *language;
  uint32_t word12, word16, word20; /* not used by the agent */
} AgentParams;

struct AgentEntryTable;

/* What initAgent fills. The block is the host's; what its pointers name is the agent's. */
typedef struct {
  /* The module's one table: the same on every initAgent, valid while the library is loaded. */
  const struct AgentEntryTable *entryTable;
  /* The client's display name, in the language chosen; "" for an agent key that names no
   * client. Valid until the next initAgent or the library's unloading. */
  const char *agentName;
  uint32_t fixedWord1; /* 0x10001 */
  uint32_t fixedWord2; /* 1 */
  uint32_t fixedWord3; /* 1 */
} AgentResult;

/* The record that names one message; the host stores it and hands it back, in this life of
 * the module or a later one. It holds no pointer. Fixed to the byte on every build,
 * little-endian. The host allocates it: for a find call, a buffer of `size` bytes; a filled
 * record takes strlen(path) + 21 bytes, while `size` then holds strlen(path) + 18.
 * keepObject, openObject and RunObject read every field but `size`. */
typedef struct {
  /* In (find calls only): the capacity of the host's buffer, from the record's start. Out:
   * strlen(path) + 18, or, after a 122, the capacity to offer next time. */
  uint32_t size;
  uint32_t checksum; /* of the message's bytes, tested when it is opened again */
  uint32_t offset;   /* of the message in the mailbox file */
  uint32_t length;   /* of the message in the mailbox file */
  /* The mailbox's last-write time, taken before the walk read it; 0 when it could not be
   * had. keepObject compares it with the mailbox's time now. */
  int32_t mailboxStamp;
  char path[1]; /* the mailbox file's full path, zero-terminated, strlen(path) + 1 bytes */
} ObjectRecord;

/* Results of the entries. */
enum AgentStatus {
  StatusOk = 0,
  StatusNoExtensions = 2,     /* ERROR_FILE_NOT_FOUND */
  StatusNoMoreObjects = 18,   /* ERROR_NO_MORE_FILES */
  StatusOpenFailed = 110,     /* ERROR_OPEN_FAILED */
  StatusBufferTooSmall = 122, /* ERROR_INSUFFICIENT_BUFFER */
  StatusMailFileFailed = -1,
  StatusBadSignature = -4,
  StatusSeekOutOfRange = -8,
  StatusEndOfData = -9,
  StatusPropertiesTooLarge = -11
};

struct AgentEntryTable { /* 22 entries, in this order */
  /* ---- The walk: a search gives one record after the other ------------------------------ */

  /* Starts a walk of the store that the registry values under the agent key name (MailPath,
   * MailFileExt, CtrlFileExt), with the time zone as it stands now, and gives its first
   * record. The host offers the record's capacity in record->size.
   *   0    *search is a new search handle; the record is filled; *time is the message's.
   *        The search keeps the mailbox it reads mapped until it moves on or is closed.
   *   18   no object: no mail folder, no mailbox, nothing in them; *search untouched.
   *   122  the record does not fit: record->size holds what to offer, nothing else of it is
   *        written, and *search is AGENT_INVALID_HANDLE (no search exists; closing it does
   *        nothing). Start again with a larger buffer.
   *   2    no file extensions; no client gives this. */
  int32_t (*findFirstObjectHandle)(uint32_t unused, AgentHandle *search, ObjectRecord *record,
                                   int32_t *time);
  /* The next record of a live search, as findFirstObjectHandle gives it.
   *   0    the record is filled, *time is the message's.
   *   18   no more objects, or the search is not live; the search stays open and gives 18
   *        again.
   *   122  the record does not fit: record->size holds what to offer. The search has ended
   *        and its handle is dead: pass it to no entry, closeFindObjectHandle included. */
  int32_t (*findNextObjectHandle)(AgentHandle search, ObjectRecord *record, int32_t *time);
  /* Ends a search and releases its mailbox. 0, always: a handle of 0, -1 or one not live is
   * taken and nothing happens. */
  int32_t (*closeFindObjectHandle)(AgentHandle search);

  /* ---- Objects: a record opened, its body read ------------------------------------------ */

  /* Whether a record is still good: 1 when its mailbox exists and was last written no later
   * than record->mailboxStamp; 0 when it was written since, is gone, or record is null. It
   * goes by mailbox: one write makes every record of that mailbox 0. Needs no agent and
   * writes nothing. */
  int32_t (*keepObject)(const ObjectRecord *record, uint32_t unused);
  /* Opens the message a record names, if the mailbox still holds it at the same place with
   * the same checksum (the stamp is not looked at).
   *   0    *object is a new object handle, the host's until closeObject; *time is the
   *        message's. The object holds its own copy of the body and fields: it needs neither
   *        the mailbox nor a search, and outlives terminateAgent.
   *   110  the record no longer leads to that message: *object is AGENT_INVALID_HANDLE, and
   *        there is nothing to close.
   *   -1   the mailbox cannot be opened and mapped (or record or object is null, or there is
   *        no agent); *object untouched. */
  int32_t (*openObject)(AgentHandle *object, const ObjectRecord *record, int32_t *time);
  /* Copies up to `wanted` bytes of the body, from the object's position on, into the host's
   * `buffer`, and moves the position past them; *got is their number.
   *   0    at least one byte; -9 none, at the end of the body (*got is 0); -4 not a live
   *        object, nothing written. A null buffer reads no byte. */
  int32_t (*readObject)(AgentHandle object, void *buffer, uint32_t wanted, uint32_t *got);
  /* Writes the message's seven properties into the host's `buffer` of `capacity` bytes, as
   * little-endian CDR: a long 7, then for each a name, a value (each a 4-byte count of the
   * bytes with the terminating zero, the bytes, the zero) and an unsigned long type code;
   * 4-byte numbers aligned on 4 from the buffer's start. In order: subject 1, title 2 (the
   * subject), location 2 (the mailbox's path), to 1, from 1, cc 1, author 1 (the sender).
   * *used is always the number of bytes the block takes.
   *   0    written, *count is 7.
   *   -11  capacity is less than *used: no byte past capacity is written, what lies before
   *        it means nothing, *count untouched. Ask again with *used bytes.
   *   -4   not a live object, nothing written. */
  int32_t (*getObjectProperties)(AgentHandle object, void *buffer, uint32_t capacity,
                                 uint32_t *used, uint32_t *count);
  /* Moves the object's position in its body: origin 0 to `offset` from the first byte, 1 by
   * `offset` from the position, 2 to `offset` (0 or less) from the last byte. 0 moved; -8 the
   * target lies outside the body, nothing moved; another origin: 0, nothing moved; -4 not a
   * live object. */
  int32_t (*seekObject)(AgentHandle object, int32_t origin, int32_t offset);
  /* *position is the object's position in its body. 0, or -4 for an object not live. */
  int32_t (*tellObject)(AgentHandle object, uint32_t *position);
  /* -1, always; does nothing. */
  int32_t (*unsupportedObjectCall)(uint32_t, uint32_t, uint32_t);
  /* Frees the object; its handle is dead from then on. 0, or -4 for an object not live. */
  int32_t (*closeObject)(AgentHandle object);
  /* 0, always; does nothing. */
  int32_t (*reservedObjectCall)(uint32_t, uint32_t);

  /* ---- The settings page, a child window in the host's window ---------------------------- */

  /* Makes the agent's settings page as a child of `parentWindow`, filled from the registry,
   * and gives its window in *pageWindow (0 when the parent is no window). The window is not
   * shown: placing, showing and hiding it are the host's. The agent owns the page and its
   * window until propPageClose; a second propPageInit closes the open page first, storing
   * nothing. 0, always; a null pageWindow makes no page. */
  int32_t (*propPageInit)(AgentHandle parentWindow, uint32_t unused, AgentHandle *pageWindow);
  /* commit 0, the check: takes the page's fields and checks its folders; when one is
   * missing a message box asks the user. 1: they are good, or the user keeps them (Cancel);
   * 0: the user goes back to the fields (Retry). commit 1, the store: writes the fields to
   * the registry under the agent key and gives 1 (a failed write is logged, not reported).
   * With no page open: 1, nothing stored. */
  int32_t (*Validate)(int32_t commit);
  /* Destroys the page and its window, storing nothing. 0, always. */
  int32_t (*propPageClose)(void);
  /* Puts the focus on the page's first field; nothing without a page. */
  void (*propPageFocus)(void);

  /* ---- What the host shows of the store ------------------------------------------------- */

  /* *smallIcon and *largeIcon are the indices of the client program's icons in the
   * platform's two system image lists (from ExePath), or 0 where not known. Kept once both
   * are known. 0, always. */
  int32_t (*getObjectIcon)(uint32_t unused, int32_t *smallIcon, int32_t *largeIcon);
  /* Finds the record's message again and shows it in the agent's modal View Email window,
   * returning when the user closes it; or, when the mailbox no longer holds that message,
   * tells the user in a message box to index again. Both give 0, and leave nothing open.
   * 110: the mailbox cannot be opened (or record is null, or there is no agent). */
  int32_t (*RunObject)(const ObjectRecord *record);
  /* Writes the names of the seven properties into the host's `buffer`: seven pointers of the
   * build's pointer width, each to its name inside this same buffer, then the names,
   * zero-terminated, one behind the other (69 bytes on a 32-bit build with the built-in
   * names). The pointers hold the buffer's own addresses: a copy of the buffer elsewhere
   * must not use them. *needed is always the number of bytes needed.
   *   0    written, *count is 7.
   *   122  capacity is less than *needed; buffer and *count untouched.
   *   -1   needed or count is null, or there is no agent. */
  int32_t (*getPropertyTemplates)(void *buffer, uint32_t capacity, uint32_t *needed,
                                  uint32_t *count);

  /* ---- The log and the module's life ----------------------------------------------------- */

  /* The log flag as setLogFlag set it; 0 at load. */
  uint32_t (*getLogFlag)(void);
  /* Any value but 0 turns the log on; kept as given, also across terminateAgent. */
  void (*setLogFlag)(uint32_t flag);
  /* Matches one initAgent. The last one releases the language module, ends the searches
   * left open, destroys an open page without storing, and deletes the agent; objects stay
   * good until their closeObject. A call beyond the last open initAgent does nothing. 0,
   * always. */
  int32_t (*terminateAgent)(void);
};

/* The one export. The first initAgent of a life (none open) chooses the client, loads the
 * language module and makes the agent; a further one changes only the agent key. Each fills
 * `result`, which may be null. An agent key that names no client makes no agent: every
 * entry then answers as for an empty store. Every initAgent is matched by a terminateAgent.
 * Returns 0 on every path. */
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
