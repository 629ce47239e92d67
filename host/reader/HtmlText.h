// HTML as the text a reader sees: no tags, no script or style content, entities decoded,
// block elements on lines of their own, inline elements joined to their neighbours.
#pragma once

#include <string>
#include <string_view>

// Appends the text of `html` (UTF-8) to `out`, in UTF-8. Bounded in time, memory and stack
// for any input.
void appendHtmlText(std::string_view html, std::string &out);
