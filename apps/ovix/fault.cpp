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
    if (!facts.block.empty()) add(": ", "block " + facts.block);
    if (facts.offset) add(facts.frame ? ", " : ": ", fmt::format("offset {}", *facts.offset));
    add(": ", facts.problem);
    if (!facts.expected.empty()) add(": ", "expected " + facts.expected);
    if (!facts.found.empty()) add(", ", "found " + facts.found);
    add("; ", facts.advice);
    return Printable(line);
}

EExit ExitOf(measure::EError id, bool ofFile) {
    using measure::EError;
    switch (id) {
        case EError::WrongArgument:
        case EError::NoSuchFrame:
        case EError::NotNumbered:
            return ExitUsage;
        case EError::FileMissing:
        case EError::FileUnreadable:
        case EError::FileUnwritable:
        case EError::FileExists:
        case EError::FileIsInput:
        case EError::FileChanged:
        case EError::UnknownFormat:
        case EError::HelperMissing:
        case EError::SystemFailed:
            return ExitFile;
        case EError::NoDecoder:  // for a type that the caller named, or that a file names
            return ofFile ? ExitBadData : ExitUsage;
        case EError::Interrupted:
            return ExitInterrupted;
        default:
            return ExitBadData;
    }
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // The second range of control characters as UTF-8 has them.
        const bool second = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (byte == '\n' || byte == '\r') {
            shown += ' ';
        } else if (byte < 0x20 || byte == 0x7F) {
            shown += fmt::format("\\x{:02X}", byte);
        } else if (second) {
            shown += fmt::format("\\x{:02X}", static_cast<unsigned char>(text[++i]));
        } else {
            shown += text[i];
        }
    }
    return shown;
}

CFault::CFault(SFault facts) : CAppError(facts.exit, facts.problem), facts_(std::move(facts)), line_(LineOf(facts_)) {}

CFault FaultOf(const measure::CError& error) {
    const measure::SErrorFacts& facts = error.Facts();
    std::string problem = facts.problem;
    if (facts.systemError) {
        const std::string words = std::generic_category().message(facts.systemError);
        problem += (problem.empty() ? "" : ": ") + words;
    }
    return CFault({.exit = ExitOf(facts.id, !facts.file.empty()),
                   .id = fmt::format("OVX-{}", static_cast<unsigned>(facts.id)),
                   .file = facts.file,
                   .frame = facts.frame,
                   .block = facts.block,
                   .offset = facts.offset,
                   .problem = std::move(problem),
                   .expected = facts.expected,
                   .found = facts.found,
                   .advice = facts.id == measure::EError::FileExists && facts.advice.empty() ? "--overwrite replaces it"
                                                                                             : facts.advice});
}

CFault UsageFault(std::string problem) { return CFault({.exit = ExitUsage, .problem = std::move(problem)}); }

CFault SystemFault(EExit exit, std::string file, const std::string& doing, int errorNumber) {
    return CFault({.exit = exit,
                   .file = std::move(file),
                   .problem = doing + ": " + std::generic_category().message(errorNumber)});
}

}  // namespace ovix::app
