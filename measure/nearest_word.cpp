#include "measure/nearest_word.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace ovix::measure {

namespace {

std::string Lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return text;
}

/// The fewest letters to put in, take out or replace to turn one text into the other.
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i - 1] != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string NearestWord(const std::string& text, std::span<const std::string> words) {
    const std::string wanted = Lower(text);
    std::string nearest;
    std::size_t least = std::max<std::size_t>(2, wanted.size() / 3) + 1;
    for (const std::string& word : words) {
        const std::string candidate = Lower(word);
        // A beginning is near, however much is missing behind it.
        const bool begins = wanted.size() >= 3 && candidate.starts_with(wanted);
        const std::size_t distance = begins ? 1 : EditDistance(wanted, candidate);
        if (distance >= least || distance >= candidate.size()) continue;
        least = distance;
        nearest = word;
    }
    return nearest;
}

}  // namespace ovix::measure
