#pragma once

#include <string_view>

namespace ovix::app {

/// The page without its data: web/dist/page.html, whose bytes are in the program. "{{data}}" marks the place of the
/// data.
std::string_view PageTemplate();

}  // namespace ovix::app
