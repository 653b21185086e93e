#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace ovix::app {

/// JSON whose keys stay in the order in which they were written.
using Json = nlohmann::ordered_json;

/// The text of a document, in one line without an indent. Text that is no UTF-8, as file names may hold, is made so.
inline std::string JsonText(const Json& value, int indent = -1, bool onlyAscii = false) {
    return value.dump(indent, ' ', onlyAscii, Json::error_handler_t::replace);
}

/// The "schema" of everything that the tool writes as JSON; it rises when a reader would have to change.
inline constexpr int kSchemaVersion = 1;

}  // namespace ovix::app
