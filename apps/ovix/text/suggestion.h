#pragma once

#include <span>
#include <string>

namespace ovix::app {

/// The word that somebody who wrote `text` most likely meant, case aside; empty when none is near.
std::string NearestWord(const std::string& text, std::span<const std::string> words);

/// ", did you mean \"word\"?" with the nearest word, or nothing.
std::string DidYouMean(const std::string& text, std::span<const std::string> words);

}  // namespace ovix::app
