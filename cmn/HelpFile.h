// The help file installed beside the libraries.
#pragma once

// The zero-terminated path of tuk_mhmail.help in the directory of this library. The text
// lives as long as the library.
const char *GetHelpFilePath();
