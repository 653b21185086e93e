#pragma once

#include <nlohmann/json.hpp>

namespace ovix::app {

/// JSON whose keys stay in the order in which they were written.
using Json = nlohmann::ordered_json;

/// The "schema" of everything that the tool writes as JSON; it rises when a reader would have to change.
inline constexpr int kSchemaVersion = 1;

}  // namespace ovix::app
