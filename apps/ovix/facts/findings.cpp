#include "apps/ovix/facts/findings.h"

#include <fmt/format.h>

#include "apps/ovix/fault.h"

namespace ovix::app {

using measure::SFinding;

namespace {

const char* WordOf(measure::EWeight weight) {
    switch (weight) {
        case measure::EWeight::Note:
            return "note";
        case measure::EWeight::Doubt:
            return "doubt";
        case measure::EWeight::Damage:
            return "damage";
    }
    return "damage";
}

}  // namespace

std::string FindingLine(const std::string& file, const SFinding& finding) {
    return CFault({.file = fmt::format("{}: {}", file, WordOf(finding.weight)),
                   .frame = finding.frame,
                   .block = finding.block,
                   .offset = finding.offset,
                   .problem = finding.what,
                   .expected = finding.expected,
                   .found = finding.found})
        .what();
}

Json FindingsJson(std::span<const SFinding> findings) {
    constexpr std::size_t kMostListed = 1000;
    Json list = Json::array();
    for (const SFinding& finding : findings.first(std::min(findings.size(), kMostListed))) {
        Json item = {{"id", fmt::format("OVX-F{:03}", static_cast<unsigned>(finding.id))},
                     {"weight", WordOf(finding.weight)}};
        if (finding.frame) item["frame"] = *finding.frame;
        if (!finding.block.empty()) item["block"] = finding.block;
        if (finding.offset) item["offset"] = *finding.offset;
        item.update({{"what", finding.what}, {"expected", finding.expected}, {"found", finding.found}});
        list.push_back(std::move(item));
    }
    return list;
}

}  // namespace ovix::app
