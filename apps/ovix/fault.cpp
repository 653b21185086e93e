#include "apps/ovix/fault.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

namespace ovix::app {

namespace {

std::string LineOf(const SFault& facts) {
    std::string line;
    const auto add = [&line](const char* separator, const std::string& text) {
        if (text.empty()) return;
        if (!line.empty()) line += separator;
        line += text;
    };
    add("", facts.file);
    if (facts.frame) add(": ", fmt::format("frame {}", *facts.frame));
    if (facts.offset) add(facts.frame ? ", " : ": ", fmt::format("offset {}", *facts.offset));
    add(": ", facts.problem);
    if (!facts.expected.empty()) add(": ", "expected " + facts.expected);
    if (!facts.found.empty()) add(", ", "found " + facts.found);
    for (char& c : line) {
        if (c == '\n' || c == '\r') c = ' ';  // names and texts from files may hold anything
    }
    return line;
}

}  // namespace

CFault::CFault(SFault facts) : CAppError(facts.exit, facts.problem), facts_(std::move(facts)), line_(LineOf(facts_)) {}

CFault CFault::Of(const std::string& file, u64 frame) const {
    SFault facts = facts_;
    facts.file = file;
    facts.frame = frame;
    return CFault(std::move(facts));
}

CFault UsageFault(std::string problem) { return CFault({.exit = ExitUsage, .problem = std::move(problem)}); }

CFault SystemFault(EExit exit, std::string file, const std::string& doing, int errorNumber) {
    return CFault({.exit = exit,
                   .file = std::move(file),
                   .problem = doing + ": " + std::generic_category().message(errorNumber)});
}

}  // namespace ovix::app
