#include "reduce/filters/camera_record_fields.h"

#include <algorithm>
#include <cstring>

#include "core/numbers.h"
#include "core/record.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/frame_table.h"

namespace ovix::reduce::camera_record {

namespace {

CString NumberText(float value) { return CFlt32::ToString(value); }
CString NumberText(i32 value) { return CInt32::ToString(value); }
CString NumberText(u32 value) { return CUInt32::ToString(value); }

template <Number T>
CString TextAt(const u8* bytes, const wchar_t*) {
    return NumberText(LoadLittle<T>(bytes));
}

CString TimeAt(const u8* seconds, const wchar_t*) {
    CDateTime time;
    time.SetTimestamp(UnixTimestamp(LoadLittle<u32>(seconds), LoadLittle<u32>(seconds + kMilliseconds - kSeconds)));
    return time.Format(L"%Y-%m-%d %H:%M:%S.%f");
}

template <Number T>
constexpr STableField Told(u32 offset, const wchar_t* name, const wchar_t* unit = L"") {
    return {.offset = offset, .size = sizeof(T), .name = name, .kind = kToldOnly, .text = TextAt<T>, .unit = unit};
}

/// A field whose value goes to a member of an object.
template <class Object>
struct TKept {
    TRecordField<Object> stored;
    STableField told;
};
template <auto kMember>
constexpr auto Kept(u32 offset, const wchar_t* name, const wchar_t* unit = L"") {
    using Member = detail::TMember<decltype(kMember)>;
    return TKept<typename Member::Object>{Field<kMember>(offset), Told<typename Member::Value>(offset, name, unit)};
}

using CParameters = CObjectParametersReduceObject;
constexpr TKept<CParameters> kParameters[] = {
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
constexpr TKept<CCal> kFactoryCal[] = {
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
    Told<u16>(kWidth, L"Width", L"pixels"),
    Told<u16>(kHeight, L"Height", L"pixels"),
    Told<u16>(kLastColumn, L"LastColumn"),
    Told<u16>(kLastRow, L"LastRow"),
    Told<u16>(kClearedByPlover, L"ClearedByPlover"),
    Told<u16>(kFrameCounter, L"FrameCounter"),
    {.offset = kSeconds, .size = 8, .name = L"Time", .kind = kToldOnly, .text = TimeAt, .unit = L"UTC"},
    Told<u32>(kSeconds, L"Seconds", L"s since 1970"),
    Told<u32>(kMilliseconds, L"Milliseconds", L"ms"),
    Told<u32>(kMarkCounter, L"MarkCounter"),
    Told<u16>(kInvalidFrame, L"InvalidFrame"),
};

constexpr const STableField& ToldOf(const STableField& field) { return field; }
template <class Object>
constexpr const STableField& ToldOf(const TKept<Object>& field) {
    return field.told;
}

constexpr bool AreInShortRecord(const auto& table) {
    return std::all_of(std::begin(table), std::end(table),
                       [](const auto& row) { return ToldOf(row).offset + ToldOf(row).size <= kShortSize; });
}
static_assert(AreInShortRecord(kParameters) && AreInShortRecord(kFactoryCal) && AreInShortRecord(kOthers));

template <class Object, std::size_t N>
void LoadKept(Object& object, const TKept<Object> (&table)[N], const u8* record) {
    for (const TKept<Object>& field : table) field.stored.load(object, record + field.stored.offset);
}

}  // namespace

void Load(CObjectParametersReduceObject& parameters, const u8* record) { LoadKept(parameters, kParameters, record); }
void Load(CCurlewFactoryCalReduceObject& factoryCal, const u8* record) { LoadKept(factoryCal, kFactoryCal, record); }

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
        for (const auto& row : table) {
            const STableField& field = ToldOf(row);
            if (field.offset + field.size <= size) DescribeField(fields, field, native, offset);
        }
    };
    describe(kOthers);
    describe(kParameters);
    describe(kFactoryCal);
}

}  // namespace ovix::reduce::camera_record
