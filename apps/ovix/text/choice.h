#pragma once

#include <string>
#include <utility>
#include <vector>

#include "apps/ovix/fault.h"
#include "apps/ovix/text/suggestion.h"
#include "core/core.h"

namespace ovix::app {

/// The value of the word that the text is, case aside. Throws wrong usage that lists the words for another text.
template <class Value>
Value ParseChoice(const std::string& option, const std::string& text,
                  const std::vector<std::pair<std::string, Value>>& words) {
    std::string list;
    std::vector<std::string> all;
    for (const auto& [word, value] : words) {
        if (CString(word.c_str()).EqualsNoCase(CString(text.c_str()))) return value;
        list += (list.empty() ? "" : ", ") + word;
        all.push_back(word);
    }
    throw UsageFault(option + ": expected one of " + list + ", found \"" + text + "\"" + DidYouMean(text, all));
}

/// A temperature scale by its letter.
inline ETempType ParseScale(const std::string& option, const std::string& text) {
    return ParseChoice<ETempType>(option, text, {{"C", Celsius}, {"F", Fahrenheit}, {"K", Kelvin}, {"R", Rankine}});
}

}  // namespace ovix::app
