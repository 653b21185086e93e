#include "measure/error.h"

#include <string.h>

#include <utility>

#include "measure/text.h"

namespace ovix::measure {

namespace {

std::string LineOf(const SErrorFacts& facts) {
    std::string line;
    const auto add = [&line](std::string_view separator, const std::string& text) {
        if (text.empty()) return;
        if (!line.empty()) line += separator;
        line += text;
    };
    add("", facts.file);
    if (facts.frame) add(": ", Say("frame ", *facts.frame));
    if (!facts.block.empty()) add(": ", "block " + facts.block);
    if (facts.offset) add(facts.frame ? ", " : ": ", Say("offset ", *facts.offset));
    add(": ", facts.problem);
    if (facts.systemError) {
        const char* words = ::strerrordesc_np(facts.systemError);  // knows no locale
        add(": ", words ? std::string(words) : Say("system error ", facts.systemError));
    }
    if (!facts.expected.empty()) add(": ", "expected " + facts.expected);
    if (!facts.found.empty()) add(", ", "found " + facts.found);
    add("; ", facts.advice);
    return line;
}

}  // namespace

CError::CError(SErrorFacts facts)
    : std::runtime_error(LineOf(facts)), facts_(std::make_shared<const SErrorFacts>(std::move(facts))) {}

CError::CError(const CError&) noexcept = default;
CError::~CError() = default;

CError CError::Of(const std::string& file, std::optional<u64> frame) const {
    SErrorFacts facts = *facts_;
    if (facts.file.empty()) facts.file = file;
    if (!facts.frame) facts.frame = frame;
    return CError(std::move(facts));
}

}  // namespace ovix::measure
