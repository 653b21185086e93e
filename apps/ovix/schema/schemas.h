#pragma once

#include <string_view>

namespace ovix::app {

/// The bytes of schemas.json: a JSON Schema for the output of each verb under "verbs", and under "$defs" what they
/// share.
std::string_view Schemas();

}  // namespace ovix::app
