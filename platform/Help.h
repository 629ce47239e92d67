// WinHelpA: the help topics of a plain-text help file, shown to the process-wide user.
//
// The file's format: a line "@<context id> <title>" (the id in decimal) starts the topic of
// that context id, and the lines that follow, up to the next such line or the end of the
// file, are its text, without the blank lines at either end. Lines in front of the first
// topic are a preamble that is never shown. When an id has two topics, the first counts.
#pragma once

#include "Window.h"

#ifdef _WIN32
#else

enum : UINT { HELP_WM_HELP = 0x000C };

// With HELP_WM_HELP, `data` points at pairs of 32-bit control ids and context ids, ended by
// a pair of zeros: the topic of the pair for the control id of `window` is shown to the user
// (WindowApi.h) as a help event about `window`. TRUE when there was a topic to show; FALSE
// when the command is another, the control has no pair, or the file or the topic is missing.
BOOL WinHelpA(HWND window, const char *helpFile, UINT command, ULONG_PTR data);

#endif // _WIN32
