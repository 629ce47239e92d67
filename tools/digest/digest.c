/* A plain C host that walks one client's store through the agent's binary interface and prints
 * each record, its body's hash and its properties, without a pointer or a handle, so that the
 * POSIX and the Windows builds of the agent can be compared line by line.
 *
 *   tuk_digest LIBDIR CLIENT AGENTKEY MAILDIR [MAILEXT CTRLEXT]
 *
 * The registry values under AGENTKEY are written first: on POSIX a fresh file at $TUK_REGISTRY,
 * on Windows under HKEY_CURRENT_USER. Exit 0 when the walk ran to its end, 1 when it did not,
 * 2 for a wrong command line. */
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#endif

#include "tuk/AgentAbi.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Odd-sized, so that reads end inside lines and inside multi-byte characters. */
#define READ_PIECE 4093
#define RECORD_CAPACITY (4096 + 32)
#define LARGEST_PROPERTIES (1u << 20)

static const char *client;
static const char *storeDir;

static void *resized(void *block, size_t size) {
  if ((block = realloc(block, size)) == NULL)
    abort();
  return block;
}

static int isSeparator(char c) {
  return c == '/' || c == '\\';
}

/* ---- The two things that differ between the platforms ----------------------------------- */

/* The values that point the agent at the store; a value of NULL is left out, so that the
 * agent's own default holds. 1 when all were written. */
#define STORE_VALUES 3
static const char *const storeValueNames[STORE_VALUES] = {"MailPath", "MailFileExt", "CtrlFileExt"};

#ifdef _WIN32
static int writeStoreValues(const char *key, const char *const values[STORE_VALUES]) {
  HKEY handle;
  if (RegCreateKeyExA(HKEY_CURRENT_USER, key, 0, NULL, 0, KEY_SET_VALUE, NULL, &handle, NULL) !=
      ERROR_SUCCESS)
    return 0;
  int written = 1;
  for (int i = 0; i < STORE_VALUES; ++i) {
    /* A value left by an earlier run would change the walk: delete what is not given. */
    const LONG status = values[i] != NULL
                            ? RegSetValueExA(handle, storeValueNames[i], 0, REG_SZ,
                                             (const BYTE *)values[i], (DWORD)strlen(values[i]) + 1)
                            : RegDeleteValueA(handle, storeValueNames[i]);
    written &= status == ERROR_SUCCESS || (values[i] == NULL && status == ERROR_FILE_NOT_FOUND);
  }
  RegCloseKey(handle);
  return written;
}

static InitAgentFunction loadAgent(const char *libraryDir) {
  char path[MAX_PATH];
  snprintf(path, sizeof path, "%s\\tuk_mhmail.dll", libraryDir);
  HMODULE library = LoadLibraryA(path);
  /* Through a function type of no arguments: the cast gcc accepts from FARPROC. */
  return library ? (InitAgentFunction)(void (*)(void))GetProcAddress(library, "initAgent") : NULL;
}
#else
static void writeRegistryString(FILE *registry, const char *text) {
  fputc('"', registry);
  for (; *text; ++text) {
    if (*text == '\\' || *text == '"')
      fputc('\\', registry);
    fputc(*text, registry);
  }
  fputc('"', registry);
}

/* The whole file is this one key: nothing of another run or another client is read. */
static int writeStoreValues(const char *key, const char *const values[STORE_VALUES]) {
  const char *file = getenv("TUK_REGISTRY");
  FILE *registry = file != NULL ? fopen(file, "w") : NULL;
  if (registry == NULL)
    return 0;
  fprintf(registry, "Windows Registry Editor Version 5.00\n\n[%s]\n", key);
  for (int i = 0; i < STORE_VALUES; ++i) {
    if (values[i] != NULL) {
      writeRegistryString(registry, storeValueNames[i]);
      fputc('=', registry);
      writeRegistryString(registry, values[i]);
      fputc('\n', registry);
    }
  }
  return fclose(registry) == 0;
}

static InitAgentFunction loadAgent(const char *libraryDir) {
  char path[4096];
  snprintf(path, sizeof path, "%s/tuk_mhmail.so", libraryDir);
  void *library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  return library ? (InitAgentFunction)dlsym(library, "initAgent") : NULL;
}
#endif

/* ---- Printing --------------------------------------------------------------------------- */

/* Bytes that would break a line or a field, or read differently elsewhere, as \xNN. */
static void printEscaped(const char *text, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    const unsigned char c = (unsigned char)text[i];
    if (c < 0x20 || c >= 0x7f || c == '\\')
      printf("\\x%02X", c);
    else
      putchar(c);
  }
}

/* The path below the store directory, with `/` between its parts; a path outside the store
 * stays whole, so that it shows. */
static void printStorePath(const char *path) {
  size_t at = 0;
  while (storeDir[at] != '\0' && path[at] != '\0' &&
         (tolower((unsigned char)storeDir[at]) == tolower((unsigned char)path[at]) ||
          (isSeparator(storeDir[at]) && isSeparator(path[at]))))
    ++at;
  const int inside = storeDir[at] == '\0' && at > 0 &&
                     (isSeparator(storeDir[at - 1]) || isSeparator(path[at]) || path[at] == '\0');
  const char *rest = inside ? path + at : path;
  while (inside && isSeparator(*rest))
    ++rest;
  for (; *rest != '\0'; ++rest)
    printEscaped(isSeparator(*rest) ? "/" : rest, 1);
}

static uint32_t readLittleEndian(const unsigned char *p) {
  return (uint32_t)p[0] | (uint32_t)p[1] << 8 | (uint32_t)p[2] << 16 | (uint32_t)p[3] << 24;
}

/* One CDR string at *position; its bytes without the zero. 0 when it does not fit the block. */
static int readCdrString(const unsigned char *block, uint32_t size, uint32_t *position,
                         const char **text, uint32_t *length) {
  *position = (*position + 3) & ~3u;
  if (*position > size || size - *position < 4)
    return 0;
  const uint32_t count = readLittleEndian(block + *position);
  *position += 4;
  if (count == 0 || count > size - *position || block[*position + count - 1] != '\0')
    return 0;
  *text = (const char *)block + *position;
  *length = count - 1;
  *position += count;
  return 1;
}

/* Each property as name=value, then their type codes; a block that can't be read says where it
 * stopped. */
static void printProperties(const unsigned char *block, uint32_t size) {
  char types[64] = "";
  size_t typesLength = 0;
  uint32_t position = 4;
  const uint32_t count = size >= 4 ? readLittleEndian(block) : 0;
  for (uint32_t i = 0; i < count; ++i) {
    const char *name, *value;
    uint32_t nameLength, valueLength;
    if (!readCdrString(block, size, &position, &name, &nameLength) ||
        !readCdrString(block, size, &position, &value, &valueLength) ||
        ((position = (position + 3) & ~3u) > size || size - position < 4)) {
      printf("\tproperties=damaged at %lu", (unsigned long)i);
      return;
    }
    if (typesLength < sizeof types)
      typesLength += snprintf(types + typesLength, sizeof types - typesLength, "%s%lu",
                              i > 0 ? "," : "", (unsigned long)readLittleEndian(block + position));
    position += 4;
    putchar('\t');
    printEscaped(name, nameLength);
    putchar('=');
    if (nameLength == 8 && memcmp(name, "location", 8) == 0)
      printStorePath(value);
    else
      printEscaped(value, valueLength);
  }
  printf("\ttypes=%s", types);
}

/* ---- The walk --------------------------------------------------------------------------- */

static void printBody(const struct AgentEntryTable *agent, AgentHandle object) {
  static unsigned char piece[READ_PIECE];
  uint64_t hash = UINT64_C(14695981039346656037); /* 64-bit FNV-1a */
  unsigned long length = 0;
  int32_t status;
  uint32_t got = 0;
  while ((status = agent->readObject(object, piece, sizeof piece, &got)) == StatusOk && got > 0 &&
         got <= sizeof piece) {
    for (uint32_t i = 0; i < got; ++i)
      hash = (hash ^ piece[i]) * UINT64_C(1099511628211);
    length += got;
  }
  printf("\tbody=%lu\tfnv=%08lx%08lx", length, (unsigned long)(hash >> 32),
         (unsigned long)(hash & 0xffffffffu));
  if (status != StatusEndOfData)
    printf("\tread=%ld got %lu", (long)status, (unsigned long)got);
}

static void printObject(const struct AgentEntryTable *agent, const ObjectRecord *record,
                        int32_t foundTime) {
  printf("%s\t", client);
  printStorePath(record->path);
  /* The size follows the path's length, which differs between machines: shown beside it. */
  printf("\tsize=path%+ld\tchecksum=%lu\toffset=%lu\tlength=%lu\tstamp=%ld\tkeep=%ld\tfound=%ld",
         (long)record->size - (long)strlen(record->path), (unsigned long)record->checksum,
         (unsigned long)record->offset, (unsigned long)record->length, (long)record->mailboxStamp,
         (long)agent->keepObject(record, 0), (long)foundTime);
  AgentHandle object = AGENT_INVALID_HANDLE;
  int32_t openedTime = -2;
  const int32_t opened = agent->openObject(&object, record, &openedTime);
  printf("\topen=%ld\topened=%ld", (long)opened, (long)openedTime);
  if (opened == StatusOk) {
    printBody(agent, object);
    /* Small at first, so that the answer "too small" and its size are used as well. */
    uint32_t capacity = 64, used = 0, count = 0;
    unsigned char *block = resized(NULL, capacity);
    int32_t status = agent->getObjectProperties(object, block, capacity, &used, &count);
    if (status == StatusPropertiesTooLarge && used > capacity && used <= LARGEST_PROPERTIES) {
      block = resized(block, capacity = used);
      status = agent->getObjectProperties(object, block, capacity, &used, &count);
    }
    if (status == StatusOk && used <= capacity)
      printProperties(block, used);
    else
      printf("\tproperties=%ld", (long)status);
    free(block);
    agent->closeObject(object);
  }
  putchar('\n');
}

/* Every record of the store. 1 when the walk reached its end. */
static int walk(const struct AgentEntryTable *agent) {
  /* Room for the longest path either platform makes: a 122 is a fault, and shows. */
  static union {
    ObjectRecord record;
    char bytes[RECORD_CAPACITY];
  } buffer;
  ObjectRecord *record = &buffer.record;
  unsigned long printed = 0;
  AgentHandle search = AGENT_INVALID_HANDLE;
  int32_t foundTime = 0;
  record->size = RECORD_CAPACITY;
  int32_t status = agent->findFirstObjectHandle(0, &search, record, &foundTime);
  const int searching = status == StatusOk;
  for (; status == StatusOk; ++printed) {
    printObject(agent, record, foundTime);
    record->size = RECORD_CAPACITY;
    status = agent->findNextObjectHandle(search, record, &foundTime);
  }
  if (searching && status != StatusBufferTooSmall)
    agent->closeFindObjectHandle(search);
  printf("%s\tcount=%lu", client, printed);
  if (status != StatusNoMoreObjects)
    printf("\twalk ended with %ld", (long)status);
  putchar('\n');
  return status == StatusNoMoreObjects;
}

int main(int argc, char **argv) {
  if (argc != 5 && argc != 7) {
    fprintf(stderr, "usage: %s LIBDIR CLIENT AGENTKEY MAILDIR [MAILEXT CTRLEXT]\n", argv[0]);
    return 2;
  }
  client = argv[2];
  storeDir = argv[4];
  const char *agentKey = argv[3];
  const char *const values[STORE_VALUES] = {storeDir, argc == 7 ? argv[5] : NULL,
                                            argc == 7 ? argv[6] : NULL};
  if (!writeStoreValues(agentKey, values)) {
    printf("%s\terror\tthe registry values could not be written\n", client);
    return 1;
  }
#ifdef _WIN32
  /* Lines end in \n alone, as on POSIX, so that the digests compare byte for byte. */
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  const InitAgentFunction initAgent = loadAgent(argv[1]);
  if (initAgent == NULL) {
    printf("%s\terror\tno agent with initAgent in %s\n", client, argv[1]);
    return 1;
  }
  const AgentParams params = {agentKey, NULL, "EN", 0, 0, 0};
  AgentResult result;
  memset(&result, 0, sizeof result);
  const int32_t status = initAgent(&params, &result);
  if (status != 0 || result.entryTable == NULL || result.agentName == NULL ||
      result.agentName[0] == '\0') {
    printf("%s\terror\tinitAgent gave %ld and no agent for %s\n", client, (long)status, agentKey);
    if (result.entryTable != NULL)
      result.entryTable->terminateAgent();
    return 1;
  }
  const int walked = walk(result.entryTable);
  result.entryTable->terminateAgent();
  return walked ? 0 : 1;
}
