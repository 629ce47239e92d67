// ResourceTable: the string table and dialog templates (DialogTemplate) a module holds.
//
// One resource script in resources/ is the source; the build turns it into a
// ResourceTable (tools/rcgen). A language module exports its table under the C symbol
// tukResourceTable.
#pragma once

#include "Modules.h"

#include <cstdint>

struct ResourceString {
  uint32_t id;
  uint32_t length;  // bytes of text, without the terminating zero
  const char *text; // zero-terminated
};

struct DialogItem {
  int32_t id;            // -1 for a static without an id
  const char *className; // "BUTTON", "EDIT", "STATIC"
  const char *text;
  int16_t x, y, cx, cy; // dialog units
  uint32_t style;
  uint32_t exStyle;
};

struct DialogTemplate {
  uint32_t id;
  uint32_t style;
  uint32_t exStyle;
  int16_t x, y, cx, cy; // dialog units
  const char *caption;  // "" when none
  const char *fontName; // "" when none
  uint16_t pointSize;
  uint8_t charset;
  uint8_t extended; // 1 for DIALOGEX
  const DialogItem *items;
  uint32_t itemCount;
};

struct ResourceTable {
  const ResourceString *strings; // sorted by id
  uint32_t stringCount;
  const DialogTemplate *dialogs; // sorted by id
  uint32_t dialogCount;
};

#define TUK_RESOURCE_SYMBOL "tukResourceTable"

// Looks `id` up in `module`, and when it has none there, in the module of the current state's
// instance handle, so that a language module that lacks a string leaves the built-in one.
// Null when neither has it.
const ResourceString *findString(HINSTANCE module, UINT id);
const DialogTemplate *findDialog(HINSTANCE module, UINT id);
