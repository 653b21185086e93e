#include "measure/uncertainty/model.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "measure/error.h"
#include "measure/frame/frame_work.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr double kAnything = std::numeric_limits<double>::infinity();

using reduce::CCurlewFactoryCalReduceObject;
using reduce::CMerlinFactoryCalReduceObject;
using reduce::CRCalReduceObject;
using reduce::CTernFactoryCalReduceObject;

}  // namespace

CModel::CModel(const CFrame& frame) : unit_(frame.unit), scale_(frame.scale), preset_(frame.preset.value_or(0)) {
    CopyObjects(frame.Objects(), objects_);
    // What is shared with other frames is copied as well: its constants are changed here.
    if (const auto user = objects_.Get<CRCalReduceObject>(-1, false)) {
        objects_.RemoveAllObjectsOfType(CRCalReduceObject::typeID);
        objects_.Add(user->Duplicate());
    }
    AddScene(frame);
    IsUserUnit(unit_) ? AddUser() : AddFactory();
    context_.setReduceObjs(&objects_);
    if (!context_.SetUnit(unit_, scale_))
        throw CError({.id = EError::UnitNotOffered, .problem = "there is no conversion to " + UnitWords(unit_)});
    Update();
}

void CModel::Update() {
    Presets presets = {};
    presets[preset_] = true;
    if (!context_.Update(presets.data(), static_cast<u8>(presets.size()), preset_))
        throw CError({.id = EError::NoCalibration, .problem = "the calibration is not usable"});
}

void CModel::AddScene(const CFrame& frame) {
    const auto scene = objects_.GetObjectParameters(true);
    const std::vector<SParameter> used = frame.Parameters();
    for (const reduce::SObjectParameter& row : reduce::ObjectParameters()) {
        const auto value = std::ranges::find(used, row.key, &SParameter::key);
        if (value == used.end() || value->origin == EOrigin::Computed) continue;  // of the others, no input of its own
        const bool share = value->unit.empty();
        const bool divides = value->key == "emissivity" || value->key == "ext-optics-trans";
        inputs_.push_back({*value, false, divides ? 0.001 : 0, share ? 1 : kAnything,
                           [scene, member = row.member](double x) { (*scene).*member = static_cast<float>(x); }});
    }
}

template <class Cal, class Member>
void CModel::AddConstant(const TSharedPtr<Cal>& calibration, const char* key, const char* unit, Member Cal::*member) {
    inputs_.push_back({{key, key, unit, static_cast<double>((*calibration).*member), EOrigin::File},
                       true,
                       -kAnything,
                       kAnything,
                       [calibration, member](double x) { (*calibration).*member = static_cast<Member>(x); },
                       std::is_integral_v<Member>});
}

template <class Cal>
void CModel::AddCurve(const TSharedPtr<Cal>& c) {
    AddConstant(c, "planckR", "", &Cal::planckR);
    AddConstant(c, "planckB", "K", &Cal::planckB);
    AddConstant(c, "planckF", "", &Cal::planckF);
    AddConstant(c, "atmosphereAlpha1", "", &Cal::atmAlpha1);
    AddConstant(c, "atmosphereAlpha2", "", &Cal::atmAlpha2);
    AddConstant(c, "atmosphereBeta1", "", &Cal::atmBeta1);
    AddConstant(c, "atmosphereBeta2", "", &Cal::atmBeta2);
    AddConstant(c, "atmosphereX", "", &Cal::atmX);
}

void CModel::AddFactory() {
    const GUID converter = reduce::converterFactory()->ConverterGUIDForUnit(objects_, TemperatureFactory);
    if (converter == reduce::CTernConverter::kID) {
        const auto c = objects_.Get<CTernFactoryCalReduceObject>(preset_, false);
        if (!c) return;
        AddConstant(c, "gain", "", &CTernFactoryCalReduceObject::adjustGain);
        AddConstant(c, "offset", "counts", &CTernFactoryCalReduceObject::adjustOffset);
        AddCurve(c);
    } else if (converter == reduce::CMerlinConverter::kID) {
        const auto c = objects_.Get<CMerlinFactoryCalReduceObject>(preset_, false);
        if (!c) return;
        AddConstant(c, "signalOffset", "counts", &CMerlinFactoryCalReduceObject::signalOffset);
        AddCurve(c);
    } else if (converter == reduce::CCurlewConverter::kID) {
        const auto c = objects_.Get<CCurlewFactoryCalReduceObject>(0, false);  // one for all presets
        if (!c) return;
        AddConstant(c, "gain", "", &CCurlewFactoryCalReduceObject::gain);
        AddConstant(c, "offset", "counts", &CCurlewFactoryCalReduceObject::offset);
        AddCurve(c);
    }
}

void CModel::AddUser() {
    const auto user = objects_.Get<CRCalReduceObject>(-1, false);
    int order = 0;
    if (!user || !user->cal.GetPolyOrder(preset_, order)) return;
    TArray<double> coefficients;
    user->cal.GetCoefficients(preset_, coefficients);
    for (u32 i = 0; i < coefficients.size(); ++i) {
        const std::string key = Say("coefficient", i);
        inputs_.push_back({{key, key, "", coefficients.GetAt(i), EOrigin::File},
                           true,
                           -kAnything,
                           kAnything,
                           [user, i, order, preset = preset_](double x) {
                               TArray<double> all;
                               user->cal.GetCoefficients(preset, all);
                               all[i] = x;
                               user->cal.SetPolynomial(preset, order, all);
                           }});
    }
}

double CModel::AtWhole(u16 counts) {
    float value = 0;
    u8 status = 0;
    bool done = false;
    if (IsUserUnit(unit_)) {  // knows buffers alone
        float in = counts;
        done = context_.Convert(STypedData{&in, Flt32}, STypedData{&value, Flt32}, &status, 1);
    } else {
        done = context_.Convert(static_cast<float>(counts), value, status, preset_);
    }
    constexpr u8 kLimited = 2 | 4 | 32;  // the value is then that of a limit
    if (!done || status & kLimited || !std::isfinite(value))
        throw CError({.id = EError::FrameRefused,
                      .problem = Say(counts, " counts lie outside of what the calibration covers with these inputs")});
    return value;
}

double CModel::Value(double counts) {
    constexpr double kMost = 65535;
    const double whole = std::floor(std::clamp(counts, 0.0, kMost));
    const double below = AtWhole(static_cast<u16>(whole));
    if (counts == whole || whole == kMost) return below;
    return below + (counts - whole) * (AtWhole(static_cast<u16>(whole + 1)) - below);
}

}  // namespace ovix::measure
