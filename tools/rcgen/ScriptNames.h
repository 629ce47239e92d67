// The Windows names and defaults that a resource script may use without a header: style
// bits, the standard control ids, and each control statement's class and default style as
// the Windows resource compiler gives them.
//
// Part of tuk_rcgen.
#pragma once

#include <cstdint>

namespace rcgen {

// The standard names a script may use without a header of its own.
struct StandardName {
  const char *name;
  int64_t value;
};
const StandardName kStandardNames[] = {
    {"WS_OVERLAPPED", 0},
    {"WS_POPUP", 0x80000000},
    {"WS_CHILD", 0x40000000},
    {"WS_MINIMIZE", 0x20000000},
    {"WS_VISIBLE", 0x10000000},
    {"WS_DISABLED", 0x08000000},
    {"WS_CLIPSIBLINGS", 0x04000000},
    {"WS_CLIPCHILDREN", 0x02000000},
    {"WS_MAXIMIZE", 0x01000000},
    {"WS_CAPTION", 0x00C00000},
    {"WS_BORDER", 0x00800000},
    {"WS_DLGFRAME", 0x00400000},
    {"WS_VSCROLL", 0x00200000},
    {"WS_HSCROLL", 0x00100000},
    {"WS_SYSMENU", 0x00080000},
    {"WS_THICKFRAME", 0x00040000},
    {"WS_GROUP", 0x00020000},
    {"WS_TABSTOP", 0x00010000},
    {"WS_MINIMIZEBOX", 0x00020000},
    {"WS_MAXIMIZEBOX", 0x00010000},
    {"WS_EX_CLIENTEDGE", 0x00000200},
    {"WS_EX_CONTROLPARENT", 0x00010000},
    {"DS_3DLOOK", 0x4},
    {"DS_FIXEDSYS", 0x8},
    {"DS_SETFONT", 0x40},
    {"DS_MODALFRAME", 0x80},
    {"DS_SETFOREGROUND", 0x200},
    {"DS_CONTROL", 0x400},
    {"DS_CENTER", 0x800},
    {"ES_LEFT", 0},
    {"ES_CENTER", 0x1},
    {"ES_RIGHT", 0x2},
    {"ES_MULTILINE", 0x4},
    {"ES_AUTOVSCROLL", 0x40},
    {"ES_AUTOHSCROLL", 0x80},
    {"ES_NOHIDESEL", 0x100},
    {"ES_READONLY", 0x800},
    {"ES_WANTRETURN", 0x1000},
    {"BS_PUSHBUTTON", 0},
    {"BS_DEFPUSHBUTTON", 0x1},
    {"BS_CHECKBOX", 0x2},
    {"BS_AUTOCHECKBOX", 0x3},
    {"BS_GROUPBOX", 0x7},
    {"SS_LEFT", 0},
    {"SS_CENTER", 0x1},
    {"SS_RIGHT", 0x2},
    {"SS_NOPREFIX", 0x80},
    {"IDOK", 1},
    {"IDCANCEL", 2},
    {"IDC_STATIC", -1},
};

constexpr int64_t kChildVisible = 0x50000000; // WS_CHILD | WS_VISIBLE

// The control statements: class and default style, and whether a text comes first.
struct ControlKind {
  const char *keyword;
  const char *className;
  int64_t defaultStyle;
  bool hasText;
};
const ControlKind kControlKinds[] = {
    {"LTEXT", "STATIC", kChildVisible | 0x00020000, true},         // WS_GROUP | SS_LEFT
    {"RTEXT", "STATIC", kChildVisible | 0x00020002, true},         // WS_GROUP | SS_RIGHT
    {"CTEXT", "STATIC", kChildVisible | 0x00020001, true},         // WS_GROUP | SS_CENTER
    {"EDITTEXT", "EDIT", kChildVisible | 0x00810000, false},       // WS_BORDER | WS_TABSTOP
    {"PUSHBUTTON", "BUTTON", kChildVisible | 0x00010000, true},    // WS_TABSTOP
    {"DEFPUSHBUTTON", "BUTTON", kChildVisible | 0x00010001, true}, // | BS_DEFPUSHBUTTON
    {"AUTOCHECKBOX", "BUTTON", kChildVisible | 0x00010003, true},  // | BS_AUTOCHECKBOX
};

} // namespace rcgen
