// The mhhost fixture.
#include "tests/host/HostFixture.h"

#include "cmn/Registry.h"

#include <cstdlib>
#include <memory>
#include <sqlite3.h>

std::string lastLine(const std::string &text) {
  const std::vector<std::string> lines = linesOf(text);
  return lines.empty() ? std::string() : lines.back();
}

::testing::AssertionResult holds(const std::string &text, const std::string &part) {
  if (text.find(part) != std::string::npos)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "no \"" << part << "\" in:\n" << text;
}

::testing::AssertionResult indexed(const HostResult &run, const std::string &counts) {
  if (run.status == 0 && lastLine(run.out).rfind("indexed: " + counts, 0) == 0)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "status " << run.status << ", not \"indexed: " << counts << "\":\n"
         << run.out << run.err;
}

::testing::AssertionResult refused(const HostResult &run, int status, const std::string &said) {
  if (run.status == status && run.err.find(said) != std::string::npos)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "status " << run.status << ", not " << status << " with \"" << said << "\":\n"
         << run.err;
}

HostFixture::HostFixture()
    : registry(dir.file("registry.reg")), database(dir.file("index/mhhost.db")) {}

HostResult HostFixture::host(const std::vector<std::string> &arguments, const std::string &input,
                             Input kind) {
  std::vector<std::string> all = {"--registry", registry, "--db", database};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return runProgram(TUK_MHHOST, all, {}, input, kind);
}

HostResult HostFixture::hostOk(const std::vector<std::string> &arguments, const std::string &input,
                               Input kind) {
  HostResult run = host(arguments, input, kind);
  EXPECT_EQ(0, run.status) << arguments.back() << ": " << run.err;
  return run;
}

void HostFixture::setRegistryValue(const std::string &client, const std::string &name,
                                   const std::string &value) {
  setenv("TUK_REGISTRY", registry.c_str(), 1);
  ASSERT_NE(0, SetRegValue(agentKeyOf(client).c_str(), name.c_str(), CString(value.c_str())));
}

std::vector<JsonObject> HostFixture::searchJson(const std::string &query,
                                                const std::vector<std::string> &more) {
  std::vector<std::string> arguments = {"search", query, "--json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const HostResult result = host(arguments);
  EXPECT_EQ(0, result.status) << result.err;
  std::vector<JsonObject> objects;
  for (const std::string &line : linesOf(result.out)) {
    JsonObject object;
    EXPECT_TRUE(parseJsonLine(line, object)) << "not a JSON object: " << line;
    objects.push_back(object);
  }
  return objects;
}

long long HostFixture::idOf(const std::string &query) {
  const std::vector<JsonObject> hits = searchJson(query);
  return hits.size() == 1 ? hits.front().numbers.at("id") : 0;
}

void HostFixture::indexMailbox(const std::vector<TestMessage> &messages) {
  writeMailbox("eudora", dir.file("mail/In"), messages);
  setRegistryValue("eudora", "MailPath", dir.file("mail"));
  EXPECT_TRUE(indexed(host({"--client", "eudora", "index"}), ""));
}

// Flat JSON objects read by SQLite's JSON functions, which refuse what RFC 8259 refuses.
namespace {
using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)>;

// `sql` over `line`, bound as ?1.
Statement prepare(const char *sql, const std::string &line) {
  static sqlite3 *const db = [] {
    sqlite3 *opened = nullptr;
    sqlite3_open(":memory:", &opened);
    return opened;
  }();
  sqlite3_stmt *prepared = nullptr;
  sqlite3_prepare_v2(db, sql, -1, &prepared, nullptr);
  sqlite3_bind_text(prepared, 1, line.data(), static_cast<int>(line.size()), SQLITE_TRANSIENT);
  return Statement(prepared, sqlite3_finalize);
}

std::string textOf(const Statement &row, int column) {
  const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(row.get(), column));
  return text ? std::string(text, sqlite3_column_bytes(row.get(), column)) : std::string();
}
} // namespace

bool parseJsonLine(const std::string &line, JsonObject &object) {
  const Statement shape = prepare("SELECT CASE WHEN json_valid(?1) THEN json_type(?1) END", line);
  if (sqlite3_step(shape.get()) != SQLITE_ROW || textOf(shape, 0) != "object")
    return false;
  const Statement members = prepare("SELECT key, type, value FROM json_each(?1)", line);
  while (sqlite3_step(members.get()) == SQLITE_ROW) {
    const std::string key = textOf(members, 0), type = textOf(members, 1);
    if (type == "text")
      object.strings[key] = textOf(members, 2);
    else if (type == "integer")
      object.numbers[key] = sqlite3_column_int64(members.get(), 2);
    else if (type != "null") // a value that is not there stays out of both maps
      return false;
  }
  return true;
}
