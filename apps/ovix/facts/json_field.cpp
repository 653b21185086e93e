#include "apps/ovix/facts/json_field.h"

#include "apps/ovix/facts/small_text.h"

namespace ovix::app {

Json ReadJson(const std::string& file, const char* expected) {
    try {
        return Json::parse(ReadSmallText(file, expected));
    } catch (const Json::exception& error) {
        // Ahead of the words stands the name of the exception in brackets.
        const std::string_view text = error.what();
        const auto words = text.find("] ");
        throw CFault(
            {.file = file, .problem = fmt::format("is no JSON: {}", text.substr(words == text.npos ? 0 : words + 2))});
    }
}

/// Lists and objects are shown by their type alone: they may be nested deeper than the stack could follow.
void CField::Fail(std::string expected) const {
    constexpr std::size_t kMostShown = 40;
    std::string found = value_.type_name();
    if (value_.is_primitive()) found = value_.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (found.size() > kMostShown) found = value_.type_name();
    throw CFault({.file = file_, .problem = path_, .expected = std::move(expected), .found = std::move(found)});
}

}  // namespace ovix::app
