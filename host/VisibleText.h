// Text from mail made safe for a terminal: control characters and escape sequences shown as
// what they are, never sent to the terminal to act.
#pragma once

#include <string>
#include <string_view>

// `text` with line ends and tabs kept and every other control character visible: C0 as
// caret notation (ESC is "^["), DEL as "^?", the C1 controls as "\u0080" to "\u009f", and a
// byte that is no part of valid UTF-8 as "\xNN".
std::string visibleText(std::string_view text);
