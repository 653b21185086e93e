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

constexpr u32 kRecordSize = 96;
constexpr u32 kFromSource = 8;

/// The record behind its size and its version; the form older than 0x10001 is nothing but these.
constexpr TRecordField<CParameters> kFields[] = {
    Field<&CParameters::fromSource>(kFromSource),
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
static_assert(RecordEnd(kFields) == 49 && RecordEnd(kFields) <= kRecordSize && IsGapless(kFields));

}  // namespace

CObjectParametersReduceObject::CObjectParametersReduceObject() {
    valid = true;
    version = 0x10001;
}

bool CObjectParametersReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return ReadFields<kFields>(*file, *this);
    u8 record[kRecordSize];
    if (!ReadRecord(*file, record, 0x20000)) return false;
    LoadRecord(*this, kFields, record);
    return true;
}

bool CObjectParametersReduceObject::Save(TSharedPtr<IFile> file, u32 flags) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    if (flags & PersistInitialState) record[kFromSource] = 1;
    return file->WriteBytes(record, sizeof record);
}

bool CObjectParametersReduceObject::Equals(const CObjectParametersReduceObject* other) const {
    return std::all_of(std::begin(kParameters), std::end(kParameters), [&](const SObjectParameter& parameter) {
        return static_cast<double>(std::fabs(this->*parameter.member - other->*parameter.member)) < 1e-8;
    });
}

std::span<const SObjectParameter> ObjectParameters() { return kParameters; }

}  // namespace ovix::reduce
