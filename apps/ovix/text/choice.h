#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "apps/ovix/fault.h"
#include "core/core.h"
#include "measure/measure.h"

namespace ovix::app {

/// ", did you mean \"word\"?" with the nearest of the words, or nothing.
inline std::string DidYouMean(const std::string& text, std::span<const std::string> words) {
    const std::string nearest = measure::NearestWord(text, words);
    return nearest.empty() ? "" : ", did you mean \"" + nearest + "\"?";
}

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
