#include "apps/ovix/facts/provenance.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>

#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/facts/user_calibration.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"

namespace ovix::app {

namespace {

Json& CommandLine() {
    static Json line = Json::array();  // set once, before anything runs
    return line;
}

Json MetadataJson(const std::string& file) {
    Json metadata = Json::array();
    for (const measure::SBlock& block : measure::BlocksOf(file)) {
        if (block.crcRight)
            metadata.push_back({{"block", block.name}, {"crc32", fmt::format("{:08x}", block.header.crc)}});
    }
    return metadata;
}

/// Of a pipe its name alone.
Json InputJson(const measure::CSource& source) {
    const std::string& file = source.Name();
    Json input{{"file", file}};
    std::error_code none;
    if (!std::filesystem::is_regular_file(file, none)) return input;
    if (const auto bytes = std::filesystem::file_size(file, none); !none) input["bytes"] = bytes;
    if (source.Kind() == measure::ESource::Recording) input["metadata"] = MetadataJson(file);
    return input;
}

/// The point in time that is said by who wants the same bytes twice.
Json CreatedJson() {
    const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
    if (!epoch) return nullptr;
    const auto seconds = ParseNumber<u32>(epoch);
    if (!seconds) throw UsageFault(fmt::format("SOURCE_DATE_EPOCH: expected seconds since 1970, found \"{}\"", epoch));
    return TimeText(measure::Time(std::chrono::seconds(*seconds)));
}

}  // namespace

void RememberCommandLine(const std::vector<std::string>& arguments) {
    CommandLine() = Json::array({"ovix"});
    for (const std::string& argument : arguments) CommandLine().push_back(argument);
}

Json ProvenanceJson(const measure::CSource& source, const measure::SMeasureOptions& options) {
    Json json{{"software", "ovix " OVIX_VERSION}, {"command", CommandLine()}};
    if (Json created = CreatedJson(); !created.is_null()) json["created"] = std::move(created);
    json["input"] = InputJson(source);
    if (options.clip)
        json["clip"] = options.clip->on ? Json{ShortestDouble(options.clip->low), ShortestDouble(options.clip->high)}
                                        : Json("off");
    if (options.userCalibration) json["userCalibration"] = UserCalibrationDocument(*options.userCalibration);
    return json;
}

}  // namespace ovix::app
