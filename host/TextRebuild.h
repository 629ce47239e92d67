// Making the full-text table anew. It keeps no copy of the text, so the row of a removed
// message can't be taken out; such rows are found by no search, but they take room and time.
// Once they outnumber a quarter of the messages (and a thousand), every message of every store is
// read again through its store's agent into a new table, which then takes the old one's place. Ids
// and everything else the index holds stay.
#pragma once

#include "host/HostSettings.h"
#include "host/IndexDb.h"

#include <string>

// Whether the stale rows call for a rebuild: more than a quarter of the messages, and more
// than a few.
bool textsWantRebuild(IndexDb &db);

// Rebuilds in one transaction. A message that no longer reads goes from the index, and its
// mailbox is read again by the next run. False with `error` when a store's agent can't be
// loaded or the database fails: the old table then stays.
bool rebuildTexts(IndexDb &db, const HostSettings &settings, std::string &error);
