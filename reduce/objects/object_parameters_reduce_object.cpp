#include "reduce/objects/object_parameters_reduce_object.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CParameters = CObjectParametersReduceObject;

constexpr float kLeastShare = 0.001f;  ///< the models divide by these
constexpr float kHottest = 1e6f;       ///< kelvin
constexpr float kFarthest = 1e6f;      ///< metres

constexpr SObjectParameter kParameters[] = {
    {"emissivity", "emissivity", "", &CParameters::emissivity, kLeastShare, 1, 9},
    {"distance", "distance", "m", &CParameters::distance, 0, kFarthest, 13},
    {"reflected-temp", "reflected temperature", "K", &CParameters::reflectedTemp, 0, kHottest, 17},
    {"atmosphere-temp", "atmosphere temperature", "K", &CParameters::atmosphereTemp, 0, kHottest, 21},
    {"ext-optics-temp", "external optics temperature", "K", &CParameters::extOpticsTemp, 0, kHottest, 25},
    {"ext-optics-trans", "external optics transmission", "", &CParameters::extOpticsTrans, kLeastShare, 1, 29},
    {"atmosphere-trans", "atmosphere transmission", "", &CParameters::atmosphereTrans, 0, 1, 33},
    {"humidity", "relative humidity", "", &CParameters::relativeHumidity, 0, 1, 41},
};

template <std::size_t kIndex>
constexpr auto ParameterField() {
    constexpr const SObjectParameter& parameter = kParameters[kIndex];
    return Field<parameter.member>(parameter.recordOffset, parameter.name);
}

constexpr u32 kParametersSize = 96;

/// The record behind its size and its version; the form older than 0x10001 is nothing but these.
constexpr TRecordField<CParameters> kParametersFields[] = {
    Field<&CParameters::fromSource>(8),
    ParameterField<0>(),
    ParameterField<1>(),
    ParameterField<2>(),
    ParameterField<3>(),
    ParameterField<4>(),
    ParameterField<5>(),
    ParameterField<6>(),
    Field<&CParameters::estimatedAtmosphereTrans>(37),
    ParameterField<7>(),
    Field<&CParameters::parameterMask>(45),
};
static_assert(RecordEnd(kParametersFields) == 49 && IsGapless(kParametersFields));

constexpr u32 kFovSize = 64;
/// One more than other records allow: there are files whose records bear version 0x20000 itself.
constexpr u32 kFovVersionLimit = 0x20001;

/// As above: record and oldest form.
constexpr TRecordField<CFOVReduceObject> kFovFields[] = {
    Field<&CFOVReduceObject::IHFOV>(8),
    Field<&CFOVReduceObject::IVFOV>(16),
};
static_assert(RecordEnd(kFovFields) == 24 && IsGapless(kFovFields));

}  // namespace

CObjectParametersReduceObject::CObjectParametersReduceObject() {
    valid = true;
    version = 0x10001;
}

bool CObjectParametersReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return ReadFields<kParametersFields>(*file, *this);
    return LoadWholeRecord<kParametersFields, kParametersSize>(*file, *this, 0x20000);
}

bool CObjectParametersReduceObject::Save(TSharedPtr<IFile> file, u32 flags) {
    CObjectParametersReduceObject saved = *this;
    saved.fromSource = fromSource || (flags & PersistInitialState);
    return SaveWholeRecord<kParametersFields, kParametersSize>(*file, saved);
}

bool CObjectParametersReduceObject::Equals(const CObjectParametersReduceObject* other) const {
    return std::all_of(std::begin(kParameters), std::end(kParameters), [&](const SObjectParameter& parameter) {
        return static_cast<double>(std::fabs(this->*parameter.member - other->*parameter.member)) < 1e-8;
    });
}

CFOVReduceObject::CFOVReduceObject() { version = 0x10001; }

bool CFOVReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return ReadFields<kFovFields>(*file, *this);
    return LoadWholeRecord<kFovFields, kFovSize>(*file, *this, kFovVersionLimit);
}

bool CFOVReduceObject::Save(TSharedPtr<IFile> file, u32) { return SaveWholeRecord<kFovFields, kFovSize>(*file, *this); }

std::span<const SObjectParameter> ObjectParameters() { return kParameters; }

}  // namespace ovix::reduce
