// JSON documents of the search page's API.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

// The document as text; bytes of mail that are not valid UTF-8 become U+FFFD.
inline std::string jsonText(const nlohmann::json &document) {
  return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}
