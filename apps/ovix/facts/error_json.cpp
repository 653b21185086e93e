#include "apps/ovix/facts/error_json.h"

#include <filesystem>
#include <new>

#include "apps/ovix/text/console.h"

namespace ovix::app {

namespace {

bool jsonErrors = false;  ///< set once, before anything runs

std::string IdOf(const SFault& facts) {
    if (!facts.id.empty()) return facts.id;
    return facts.exit == ExitUsage ? "OVX-1" : facts.exit == ExitFile ? "OVX-3" : "OVX-2";
}

}  // namespace

CFault CurrentFault() {
    try {
        throw;
    } catch (const CFault& fault) {
        return fault;
    } catch (const CAppError& error) {
        return CFault({.exit = error.Exit(), .problem = error.what()});
    } catch (const measure::CError& error) {
        return FaultOf(error);
    } catch (const std::filesystem::filesystem_error& error) {
        return SystemFault(ExitFile, error.path1().string(), "cannot be used", error.code().value());
    } catch (const std::bad_alloc&) {
        return CFault({.problem = "there is not enough memory"});
    } catch (const std::exception& error) {
        return CFault({.problem = error.what()});
    }
}

Json ErrorJson(const CFault& fault) {
    const SFault& facts = fault.Facts();
    Json error = {{"id", IdOf(facts)}, {"exit", static_cast<int>(facts.exit)}, {"line", fault.what()}};
    const auto text = [&error](const char* key, const std::string& value) {
        if (!value.empty()) error[key] = value;
    };
    text("file", facts.file);
    if (facts.frame) error["frame"] = *facts.frame;
    text("block", facts.block);
    if (facts.offset) error["offset"] = *facts.offset;
    text("problem", facts.problem);
    text("expected", facts.expected);
    text("found", facts.found);
    text("advice", facts.advice);
    return error;
}

void UseJsonErrors() { jsonErrors = true; }

void SayFault(const CFault& fault) {
    SayError(jsonErrors ? JsonText({{"schema", kSchemaVersion}, {"error", ErrorJson(fault)}})
                        : std::string("ovix: ") + fault.what());
}

}  // namespace ovix::app
