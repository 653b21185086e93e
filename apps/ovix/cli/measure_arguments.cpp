#include "apps/ovix/cli/measure_arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <set>

#include "apps/ovix/facts/user_calibration.h"
#include "apps/ovix/input_files.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"

namespace ovix::app {

using measure::ECalibration;
using measure::EQuantity;
using measure::SClip;
using measure::SCorrectionFiles;
using measure::SMeasureOptions;
using measure::SSceneValues;

namespace {

using Text = const std::string&;

/// The parsed text, or nothing where the option was not given.
template <class Parse>
auto IfGiven(const std::string& text, Parse parse) -> std::optional<decltype(parse(text))> {
    if (text.empty()) return {};
    return parse(text);
}

std::optional<float> Within(const std::string& option, const std::string& text, float low, float high) {
    return IfGiven(text, [&](Text given) { return ParseWithin(option, given, low, high); });
}

std::optional<float> Temperature(const std::string& option, const std::string& text) {
    return IfGiven(text, [&](Text given) { return ParseTemperature(option, given); });
}

SClip ParseClip(const std::string& text) {
    if (text == "off") return {.on = false};
    const auto [low, high] = ParseRange("--clip", text);
    return {true, low, high};
}

}  // namespace

void CMeasureArguments::Add(CLI::App& verb) {
    const char* group = "Measurement";
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
        verb.add_option(name, value, help)->type_name(type)->group(group);
    };
    add("--unit", unit_, "UNIT",
        "counts, signal, radiance, temperature; of video red, green, blue, average (else temperature, if there is "
        "one)");
    add("--cal", calibration_, "factory|user", "whose calibration (else the factory's, if there is one)");
    add("--scale", scale_, "C|F|K|R", "scale of temperatures (else C)");
    add("--clip", clip_, "LO,HI|off", "limits of the corrected counts (else 0,16383)");
    given_.Add(verb);
}

void CSceneArguments::Add(CLI::App& verb) {
    verb.add_option("--correction", corrections_,
                    "correct the counts with the tables STEM.mvg, .mvo and .mvb; P=STEM for preset P alone")
        ->type_name("STEM")
        ->allow_extra_args(false)
        ->group("Measurement");
    verb.add_option("--user-cal", userCalibration_,
                    "a user calibration that \"ovix calibrate\" wrote; where temperatures are asked for it is the one "
                    "used, unless --cal says otherwise")
        ->type_name("FILE")
        ->group("Measurement");
    const char* group = "Scene (instead of what was recorded)";
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
        verb.add_option(name, value, help)->type_name(type)->group(group);
    };
    add("--emissivity", emissivity_, "0..1", "emissivity of the target");
    add("--distance", distance_, "METRES", "distance to the target");
    add("--reflected-temp", reflectedTemp_, "TEMP", "reflected temperature, as in 20C, 68F, 293.15K");
    add("--atmosphere-temp", atmosphereTemp_, "TEMP", "temperature of the air");
    add("--atmosphere-trans", atmosphereTrans_, "0..1", "transmission of the air; 0 has it computed");
    add("--humidity", humidity_, "0..1", "relative humidity");
    add("--ext-optics-temp", extOpticsTemp_, "TEMP", "temperature of external optics");
    add("--ext-optics-trans", extOpticsTrans_, "0..1", "transmission of external optics");
}

void CSceneArguments::Set(const std::string& text) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign + 1 == text.size())
        throw UsageFault("--set: expected NAME=VALUE, as in emissivity=0.9, found \"" + text + "\"");
    std::string* value = ParseChoice<std::string*>("--set", text.substr(0, sign),
                                                   {{"emissivity", &emissivity_},
                                                    {"distance", &distance_},
                                                    {"reflected-temp", &reflectedTemp_},
                                                    {"atmosphere-temp", &atmosphereTemp_},
                                                    {"atmosphere-trans", &atmosphereTrans_},
                                                    {"humidity", &humidity_},
                                                    {"ext-optics-temp", &extOpticsTemp_},
                                                    {"ext-optics-trans", &extOpticsTrans_}});
    *value = text.substr(sign + 1);
}

SSceneValues CSceneArguments::Scene() const {
    constexpr float kLeastShare = 0.001f;  // the models divide by these
    return {.emissivity = Within("--emissivity", emissivity_, kLeastShare, 1),
            .distance = Within("--distance", distance_, 0, 1e6f),
            .reflectedTemp = Temperature("--reflected-temp", reflectedTemp_),
            .atmosphereTemp = Temperature("--atmosphere-temp", atmosphereTemp_),
            .atmosphereTrans = Within("--atmosphere-trans", atmosphereTrans_, 0, 1),
            .relativeHumidity = Within("--humidity", humidity_, 0, 1),
            .extOpticsTemp = Temperature("--ext-optics-temp", extOpticsTemp_),
            .extOpticsTrans = Within("--ext-optics-trans", extOpticsTrans_, kLeastShare, 1)};
}

std::vector<SCorrectionFiles> CSceneArguments::Corrections() const {
    std::vector<SCorrectionFiles> files;
    for (const std::string& text : corrections_) {
        if (text.size() > 2 && text[1] == '=' && text[0] >= '0' && text[0] <= '7')
            files.push_back({static_cast<u8>(text[0] - '0'), text.substr(2)});
        else
            files.push_back({{}, text});
    }
    return files;
}

std::optional<CRCalFile> CSceneArguments::UserCalibration() const {
    RememberInput(userCalibration_);
    return IfGiven(userCalibration_, ReadUserCalibration);
}

std::vector<std::string> CSceneArguments::IdleIn(EUnit unit) const {
    const bool byUser = unit == RadianceUser || unit == TemperatureUser;
    const bool noScene = !byUser && unit != ObjectSignal && unit != RadianceFactory && !IsTemperature(unit);
    std::vector<std::string> idle;
    const auto look = [&](const char* option, const std::string& value, bool ofUser) {
        if (!value.empty() && (noScene || (byUser && !ofUser))) idle.push_back(option);
    };
    look("--emissivity", emissivity_, true);
    look("--distance", distance_, false);
    look("--reflected-temp", reflectedTemp_, false);
    look("--atmosphere-temp", atmosphereTemp_, false);
    look("--atmosphere-trans", atmosphereTrans_, true);
    look("--humidity", humidity_, false);
    look("--ext-optics-temp", extOpticsTemp_, false);
    look("--ext-optics-trans", extOpticsTrans_, false);
    return idle;
}

void CMeasureArguments::RefuseIdle(EUnit unit) const {
    std::vector<std::string> idle = given_.IdleIn(unit);
    const bool byUser = unit == RadianceUser || unit == TemperatureUser;
    const bool calibrated = byUser || unit == ObjectSignal || unit == RadianceFactory || unit == TemperatureFactory;
    if (!scale_.empty() && !IsTemperature(unit)) idle.push_back("--scale");
    if (!calibration_.empty() && !calibrated) idle.push_back("--cal");
    if (given_.HasUserCalibration() && !byUser) idle.push_back("--user-cal");
    if (!idle.empty()) throw UsageFault(idle.front() + ": has no effect on " + measure::UnitWords(unit));
}

void CMeasureArguments::RefuseIdle(const measure::CMeasurement& measurement,
                                   const std::optional<measure::CFrameNumbers>& frames) const {
    if (const auto unit = measurement.Unit()) RefuseIdle(*unit);
    std::set<u8> missing;
    for (const SCorrectionFiles& files : measurement.Options().corrections) {
        if (files.preset) missing.insert(*files.preset);
    }
    const measure::CSource& source = measurement.Source();
    measure::SRawFrame raw;
    for (u64 n = 0; source.IsNumbered() && !missing.empty(); ++n) {
        if (n == (frames ? frames->Count() : *source.Count()))
            throw UsageFault(
                fmt::format("--correction {}=: no frame bears preset {}", *missing.begin(), *missing.begin()));
        try {
            source.Read(frames ? (*frames)[n] : n, raw);
            missing.erase(measurement.PresetOf(raw));
        } catch (const measure::CError&) {
            continue;  // the run says so
        }
    }
}

SMeasureOptions CMeasureArguments::Options() const {
    std::vector<std::pair<std::string, EQuantity>> quantities;
    for (const SQuantityWord& word : QuantityWords()) quantities.emplace_back(word.word, word.quantity);
    SMeasureOptions options;
    options.quantity = IfGiven(unit_, [&](Text text) { return ParseChoice("--unit", text, quantities); });
    options.calibration = IfGiven(calibration_, [](Text text) {
        return ParseChoice<ECalibration>("--cal", text,
                                         {{"factory", ECalibration::Factory}, {"user", ECalibration::User}});
    });
    options.userCalibration = given_.UserCalibration();
    if (options.userCalibration && !options.calibration) options.calibration = ECalibration::User;
    if (!scale_.empty()) options.scale = ParseScale("--scale", scale_);
    options.scene = given_.Scene();
    options.corrections = given_.Corrections();
    options.clip = IfGiven(clip_, ParseClip);
    return options;
}

}  // namespace ovix::app
