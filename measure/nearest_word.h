#pragma once

#include <span>
#include <string>

#include "measure/api.h"

namespace ovix::measure {

/// The word that somebody who wrote `text` most likely meant, for an answer to a name that is none: one that begins
/// like it, or the one with the fewest letters to be put in, taken out or replaced (Levenshtein), a third of them at
/// most. Case aside; empty when none is near.
OVIX_MEASURE_API std::string NearestWord(const std::string& text, std::span<const std::string> words);

}  // namespace ovix::measure
