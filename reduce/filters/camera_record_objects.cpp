#include "reduce/filters/camera_record_objects.h"

#include <algorithm>
#include <cstring>

#include "reduce/filters/frame_table.h"

namespace ovix::reduce {

namespace camera_record {

namespace {

void TimeText(CFieldText& text, const u8* seconds) {
    CDateTime time;
    SetTime(time, seconds - kSeconds);
    text.Add(time.Format(L"%Y-%m-%d %H:%M:%S.%f"));
}

template <class M>
struct TValueOf;
template <class Object, class Value>
struct TValueOf<Value Object::*> {
    using Type = Value;
};
/// A field that stands in the record as in the object.
template <auto kMember>
constexpr auto Kept(u32 offset, const wchar_t* name, const wchar_t* unit = L"") {
    return Number<typename TValueOf<decltype(kMember)>::Type, kMember>(offset, name, kDescribedOnly, unit);
}

using CParameters = CObjectParametersReduceObject;
constexpr TKeptField<CParameters> kParameters[] = {
    Kept<&CParameters::emissivity>(32, L"Emissivity"),
    Kept<&CParameters::distance>(36, L"Distance", L"m"),
    Kept<&CParameters::reflectedTemp>(40, L"ReflectedTemp", L"K"),
    Kept<&CParameters::atmosphereTemp>(44, L"AtmosphereTemp", L"K"),
    Kept<&CParameters::extOpticsTemp>(48, L"ExtOpticsTemp", L"K"),
    Kept<&CParameters::extOpticsTrans>(52, L"ExtOpticsTrans"),
    Kept<&CParameters::atmosphereTrans>(56, L"AtmosphereTrans"),
    Kept<&CParameters::relativeHumidity>(60, L"RelativeHumidity"),
};

using CCal = CCurlewFactoryCalReduceObject;
constexpr TKeptField<CCal> kFactoryCal[] = {
    Kept<&CCal::planckR>(88, L"PlanckR"),
    Kept<&CCal::planckB>(92, L"PlanckB", L"K"),
    Kept<&CCal::planckF>(96, L"PlanckF"),
    Kept<&CCal::atmAlpha1>(112, L"AtmAlpha1"),
    Kept<&CCal::atmAlpha2>(116, L"AtmAlpha2"),
    Kept<&CCal::atmBeta1>(120, L"AtmBeta1"),
    Kept<&CCal::atmBeta2>(124, L"AtmBeta2"),
    Kept<&CCal::atmX>(128, L"AtmX"),
    Kept<&CCal::radFitHighTemp>(144, L"RadFitHighTemp", L"K"),
    Kept<&CCal::radFitLowTemp>(148, L"RadFitLowTemp", L"K"),
    Kept<&CCal::overflowTemp>(152, L"OverflowTemp", L"K"),
    Kept<&CCal::underflowTemp>(156, L"UnderflowTemp", L"K"),
    Kept<&CCal::upperTemp>(160, L"UpperTemp", L"K"),
    Kept<&CCal::lowerTemp>(164, L"LowerTemp", L"K"),
    Kept<&CCal::offset>(776, L"Offset", L"counts"),
    Kept<&CCal::gain>(780, L"Gain"),
    Kept<&CCal::imgMin>(784, L"ImgMin", L"counts"),
    Kept<&CCal::imgMax>(786, L"ImgMax", L"counts"),
    Kept<&CCal::nonlinearOn>(788, L"NonlinearOn"),
    Kept<&CCal::nonlinearGain>(792, L"NonlinearGain"),
    Kept<&CCal::nonlinearOffset>(796, L"NonlinearOffset"),
};

/// What decoders read by itself, or nobody reads.
constexpr STableField kOthers[] = {
    {kWidth, sizeof(u16), L"Width", kDescribedOnly, PlainText<LoadLittle<u16>>, L"pixels"},
    {kHeight, sizeof(u16), L"Height", kDescribedOnly, PlainText<LoadLittle<u16>>, L"pixels"},
    {kLastColumn, sizeof(u16), L"LastColumn", kDescribedOnly, PlainText<LoadLittle<u16>>},
    {kLastRow, sizeof(u16), L"LastRow", kDescribedOnly, PlainText<LoadLittle<u16>>},
    {kClearedByPlover, sizeof(u16), L"ClearedByPlover", kDescribedOnly, PlainText<LoadLittle<u16>>},
    {kFrameCounter, sizeof(u16), L"FrameCounter", kDescribedOnly, PlainText<LoadLittle<u16>>},
    {kSeconds, 8, L"Time", kDescribedOnly, TimeText, L"UTC"},
    {kSeconds, sizeof(u32), L"Seconds", kDescribedOnly, PlainText<LoadLittle<u32>>, L"s since 1970"},
    {kMilliseconds, sizeof(u32), L"Milliseconds", kDescribedOnly, PlainText<LoadLittle<u32>>, L"ms"},
    {kMarkCounter, sizeof(u32), L"MarkCounter", kDescribedOnly, PlainText<LoadLittle<u32>>},
    {kInvalidFrame, sizeof(u16), L"InvalidFrame", kDescribedOnly, PlainText<LoadLittle<u16>>},
};
static_assert(EndOf(kParameters) <= kShortSize && EndOf(kFactoryCal) <= kShortSize && EndOf(kOthers) <= kShortSize);

}  // namespace

void GetEvidence(SFrameEvidence& evidence, const u8* record, u32 size) {
    if (size < kHeight + sizeof(u16)) return;
    const bool native = LoadLittle<u16>(record + kByteOrder) == kNativeOrder;
    const bool swapped = LoadBig<u16>(record + kByteOrder) == kNativeOrder;
    const auto word = [&](u32 offset) {
        return swapped ? LoadBig<u16>(record + offset) : LoadLittle<u16>(record + offset);
    };
    evidence.mark = native || swapped ? EFrameMark::Present : EFrameMark::Absent;
    if (evidence.mark == EFrameMark::Absent) return;
    evidence.width = word(kWidth);
    evidence.height = word(kHeight);
}

void Describe(TArray<SFrameField>& fields, const u8* record, u32 size, u64 offset) {
    u8 native[kShortSize] = {};
    std::memcpy(native, record, std::min(size, kShortSize));
    const bool swapped = IsSwapped(native);
    if (swapped) SwapShort(native);
    if (size >= kByteOrder + sizeof(u16)) {
        fields.Add({offset + kByteOrder, sizeof(u16), L"ByteOrder", swapped ? L"swapped" : L"native"});
    }
    const auto describe = [&](const auto& table) {
        for (const STableField& field : table) {
            if (field.offset + field.size <= size) DescribeField(fields, field, native, offset);
        }
    };
    describe(kOthers);
    describe(kParameters);
    describe(kFactoryCal);
}

}  // namespace camera_record

SCameraRecordObjects::SCameraRecordObjects(CReduceObjectArray& objects)
    : parameters(objects.Get<CObjectParametersReduceObject>(-1, true)),
      factoryCal(objects.Get<CCurlewFactoryCalReduceObject>(0, true)),
      frameInfo(objects.Get<CFrameInfoReduceObject>(0, true)),
      cameraInfo(objects.Get<CCurlewCameraInfoReduceObject>(-1, true)) {}

void SCameraRecordObjects::FillFromRecord(const u8* record) const {
    LoadFields(*parameters, camera_record::kParameters, record);
    parameters->fromSource = true;
    parameters->parameterMask = 255;

    LoadFields(*factoryCal, camera_record::kFactoryCal, record);
    factoryCal->valid = true;

    frameInfo->preset = 0;
    frameInfo->frameFilled = LoadLittle<u16>(record + camera_record::kInvalidFrame) == 0;
}

void SCameraRecordObjects::KeepRecord(const u8* record, u32 size, const u8* digitalHeader) const {
    CCurlewCameraInfoReduceObject& info = *cameraInfo;
    info.valid = true;
    info.recordPresent = size == sizeof info.record;
    std::memcpy(info.record, record, size);
    std::memset(info.record + size, 0, sizeof info.record - size);
    info.digitalHeaderPresent = digitalHeader != nullptr;
    if (digitalHeader) {
        std::memcpy(info.digitalHeader, digitalHeader, sizeof info.digitalHeader);
    } else {
        std::memset(info.digitalHeader, 0, sizeof info.digitalHeader);
    }
}

void SCameraRecordObjects::FillForVideo(u64 frameNumber) const {
    factoryCal->valid = false;
    cameraInfo->valid = false;
    StartFrame(*frameInfo, 0, frameNumber);
    frameInfo->extra.Clear();
    frameInfo->time.Now();
}

}  // namespace ovix::reduce
