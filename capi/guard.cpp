#include "capi/guard.h"

#include <algorithm>

namespace ovix::capi {

namespace {

/// Of the last failure on a thread.
thread_local std::optional<CError> lastError;
thread_local bool withoutMemory = false;

#define OVIX_SAME(name, value) static_assert(static_cast<int>(EError::value) == (name))
OVIX_SAME(OVIX_WRONG_ARGUMENT, WrongArgument);
OVIX_SAME(OVIX_UNIT_NOT_OFFERED, UnitNotOffered);
OVIX_SAME(OVIX_NOT_NUMBERED, NotNumbered);
OVIX_SAME(OVIX_FILE_MISSING, FileMissing);
OVIX_SAME(OVIX_UNKNOWN_FORMAT, UnknownFormat);
OVIX_SAME(OVIX_NO_FRAMES, NoFrames);
OVIX_SAME(OVIX_WRONG_GEOMETRY, WrongGeometry);
OVIX_SAME(OVIX_FRAME_CUT, FrameCut);
OVIX_SAME(OVIX_SUM_DIFFERS, SumDiffers);
OVIX_SAME(OVIX_NO_CALIBRATION, NoCalibration);
OVIX_SAME(OVIX_FIT_UNDETERMINED, FitUndetermined);
OVIX_SAME(OVIX_HELPER_MISSING, HelperMissing);
OVIX_SAME(OVIX_INTERRUPTED, Interrupted);
#undef OVIX_SAME

/// A choice that counts from 1, with 0 for none.
template <class Choice>
std::optional<Choice> ChoiceOf(std::int32_t number, Choice last, const char* what) {
    if (number < 0 || number > static_cast<std::int32_t>(last) + 1)
        throw WrongArgument(std::string("options: there is no such ") + what);
    return number ? std::optional(static_cast<Choice>(number - 1)) : std::nullopt;
}

/// In the order of the library's table, which says between what a value gives sense.
measure::SSceneValues SceneOf(const ovix_options& options) {
    measure::SSceneValues scene;
    std::optional<float>* const places[] = {&scene.emissivity,      &scene.distance,        &scene.reflectedTemp,
                                            &scene.atmosphereTemp,  &scene.extOpticsTemp,   &scene.extOpticsTrans,
                                            &scene.atmosphereTrans, &scene.relativeHumidity};
    static_assert(std::size(places) == std::size(ovix_options{}.scene));
    if (options.scene_given >> std::size(places)) throw WrongArgument("options: there are eight values of a scene");
    for (std::size_t i = 0; i < std::size(places); ++i) {
        if (!(options.scene_given >> i & 1)) continue;
        const reduce::SObjectParameter& row = reduce::ObjectParameters()[i];
        if (!(options.scene[i] >= row.lowest && options.scene[i] <= row.highest))
            throw WrongArgument(std::string("options: no such ") + row.name);
        *places[i] = options.scene[i];
    }
    return scene;
}

}  // namespace

int Fail(const CError& error) noexcept {
    withoutMemory = false;
    lastError.emplace(error);
    return static_cast<int>(error.Id());
}

int FailWithoutMemory() noexcept {
    withoutMemory = true;
    return OVIX_SYSTEM_FAILED;
}

SAsked::SAsked(const ovix_options* given) {
    const ovix_options options = Take(given, "options");
    constexpr std::uint32_t kFlags = OVIX_ACCEPT_DAMAGE | OVIX_UNCORRECTED | OVIX_FOLLOW;
    if (options.flags & ~kFlags) throw WrongArgument("options: there is no such flag");
    if (options.scale < OVIX_CELSIUS || options.scale > OVIX_RANKINE) throw WrongArgument("options: no such scale");
    open = {.pixelType = options.pixel_type ? options.pixel_type : "",
            .width = options.width,
            .height = options.height,
            .frameSize = options.frame_size,
            .follow = (options.flags & OVIX_FOLLOW) != 0,
            .acceptDamage = (options.flags & OVIX_ACCEPT_DAMAGE) != 0};
    measure.quantity = ChoiceOf(options.quantity, measure::EQuantity::Average, "quantity");
    measure.calibration = ChoiceOf(options.calibration, measure::ECalibration::User, "calibration");
    measure.scale = static_cast<ETempType>(options.scale);
    measure.scene = SceneOf(options);
    measure.correct = !(options.flags & OVIX_UNCORRECTED);
    if (options.correction) measure.corrections.push_back({.stem = options.correction});
}

}  // namespace ovix::capi

using namespace ovix::capi;

int ovix_last_error(ovix_error* given) {
    return Guard([&]() -> int {
        const std::size_t size = CheckedSize(given, "error");
        ovix_error error{};
        error.frame = error.offset = -1;
        error.id = OVIX_SYSTEM_FAILED;
        error.line = error.problem = "there is not enough memory";
        error.file = error.block = error.expected = error.found = error.advice = "";
        if (!withoutMemory) {
            if (!lastError) return OVIX_END;
            const ovix::measure::SErrorFacts& facts = lastError->Facts();
            error.id = static_cast<std::int32_t>(facts.id);
            error.system_error = facts.systemError;
            error.frame = OrNone(facts.frame);
            error.offset = OrNone(facts.offset);
            error.line = lastError->what();
            error.file = facts.file.c_str();
            error.block = facts.block.c_str();
            error.problem = facts.problem.c_str();
            error.expected = facts.expected.c_str();
            error.found = facts.found.c_str();
            error.advice = facts.advice.c_str();
        }
        Give(given, error, size);
        return OVIX_OK;
    });
}

const char* ovix_version(void) { return ovix::Version(); }
