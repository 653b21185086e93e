#include "apps/ovix/demo_agreement.h"

#include <fmt/format.h>

#include <cmath>

namespace ovix::app {

Json SAgreement::Document() const {
    return {{"goodPixels", good},
            {"maximumDifferenceKelvin", max},
            {"rmsDifferenceKelvin", rms},
            {"replacedPixels", replaced},
            {"flaggedPixels", flagged}};
}

SAgreement CompareWithScene(std::span<const float> values, std::span<const u8> status, const u8* badPixels,
                            std::span<const float> kelvin, ETempType scale) {
    SAgreement agreement;
    double squares = 0;
    for (std::size_t i = 0; i < kelvin.size(); ++i) {
        const double measured = CMath::ConvertTemperature(values[i], scale, Kelvin);
        const double away = std::abs(measured - kelvin[i]);
        if (status[i] != 0) {
            ++agreement.flagged;
        } else if (badPixels[i]) {  // it shows what its neighbour sees
            ++agreement.replaced;
            agreement.replacedMax = std::max(agreement.replacedMax, away);
        } else {
            ++agreement.good;
            agreement.max = std::max(agreement.max, away);
            squares += away * away;
        }
    }
    if (agreement.good > 0) agreement.rms = std::sqrt(squares / static_cast<double>(agreement.good));
    return agreement;
}

CAgreementTable::CAgreementTable(const char* what, CTextTable::SColumn fact)
    : table_({{what, CTextTable::Left},
              std::move(fact),
              {"Good (px)", CTextTable::Right},
              {"Greatest (K)", CTextTable::Right},
              {"RMS (K)", CTextTable::Right},
              {"Replaced (px)", CTextTable::Right},
              {"Greatest (K)", CTextTable::Right},
              {"Flagged (px)", CTextTable::Right}}) {}

void CAgreementTable::Row(const std::string& what, const std::string& fact, const SAgreement& a) {
    table_.Row({what, fact, fmt::format("{}", a.good), fmt::format("{:.4f}", a.max), fmt::format("{:.4f}", a.rms),
                fmt::format("{}", a.replaced), fmt::format("{:.2f}", a.replacedMax), fmt::format("{}", a.flagged)});
}

}  // namespace ovix::app
