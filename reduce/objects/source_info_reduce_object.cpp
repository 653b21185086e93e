#include "reduce/objects/source_info_reduce_object.h"

#include <cstddef>
#include <cstring>

#include "core/record.h"

namespace ovix {

namespace {

/// The numeric fields; texts and bytes between them stay.
constexpr SSwapRun kNumbers[] = {
    {0, 1, 4},   {16, 2, 8},  {32, 2, 4},  {64, 1, 4},  {74, 1, 2},  {76, 3, 4},
    {116, 1, 4}, {120, 2, 8}, {136, 2, 4}, {176, 2, 2}, {180, 1, 4},
};
static_assert(offsetof(SGPSData, double16) == 16 && offsetof(SGPSData, single64) == 64 &&
              offsetof(SGPSData, datum) == 88 && offsetof(SGPSData, double120) == 120 &&
              offsetof(SGPSData, byteOrderMark) == 178);
static_assert(std::is_trivially_copyable_v<SGPSData>);

}  // namespace

void SGPSData::invalidate() {
    std::memset(static_cast<void*>(this), 0, sizeof *this);
    double16 = double24 = double120 = double128 = -1.0;
    single32 = single64 = single76 = single80 = single84 = single136 = single140 = -1.0f;
    std::memcpy(datum, "WGS84", 5);
    byteOrderMark = kByteOrderMark;
}

void SGPSData::swap() { SwapFields(reinterpret_cast<u8*>(this), kNumbers); }

namespace reduce {

namespace {

using CInfo = CSourceInfoReduceObject;
using SPreset = CInfo::SPresetInfo;

constexpr u32 kOldRecordSize = 1536;  ///< room for four presets
constexpr u8 kOldPresets = 4;
constexpr u32 kPresetSize = 128;

// What is patched in place.
constexpr u32 kPacketWidth = 127;
constexpr u32 kPacketHeight = 129;
constexpr u32 kPacketExtra = 131;
constexpr u32 kPresets = 1024;
constexpr u32 kPresetEnabled = 0;
constexpr u32 kPresetFrameCount = 15;
static_assert(CInfo::FrameCountOffset(2) == kPresets + 2 * kPresetSize + kPresetFrameCount);

constexpr TRecordField<SPreset> kPresetFields[] = {
    Field<&SPreset::enabled>(kPresetEnabled, "use"),
    Field<&SPreset::valueA>(1, "value A"),
    Field<&SPreset::flagA>(9, "flag A"),
    Field<&SPreset::scale>(10, "scale"),
    Field<&SPreset::flagB>(14, "flag B"),
    Field<&SPreset::frameCount>(kPresetFrameCount, "frames"),
    Field<&SPreset::flagC>(19, "flag C"),
    Field<&SPreset::valueB>(20, "value B"),
    Field<&SPreset::valueC>(28, "value C"),
};
static_assert(RecordEnd(kPresetFields) == 36);

constexpr TRecordField<RECT> kRectFields[] = {
    Field<&RECT::left>(0, "left"),
    Field<&RECT::top>(4, "top"),
    Field<&RECT::right>(8, "right"),
    Field<&RECT::bottom>(12, "bottom"),
};

constexpr TRecordField<CInfo> kFields[] = {
    Field<&CInfo::sourceBits>(8, "source bits"),
    TextField<&CInfo::cameraName, 64>(12, "camera name"),
    Field<&CInfo::flagA>(76, "flag A"),
    Field<&CInfo::flagB>(77, "flag B"),
    Field<&CInfo::fixedPreset>(CInfo::FixedPresetOffset, "fixed preset"),
    Field<&CInfo::sourceKind>(79, "source kind"),
    Field<&CInfo::width>(80, "width"),
    Field<&CInfo::height>(82, "height"),
    SubRecords<&CInfo::frameRect, kRectFields>(84, "the frame rectangle"),
    Field<&CInfo::frameRectSet>(100, "use of the frame rectangle"),
    Field<&CInfo::pixelType>(101, "pixel type"),
    Field<&CInfo::sourceValue>(117, "source value"),
    ByteField<&CInfo::baseUnit>(121, "unit"),
    ByteField<&CInfo::baseTempType>(122, "temperature scale"),
    Field<&CInfo::frameWidth>(123, "width of a frame"),
    Field<&CInfo::frameHeight>(125, "height of a frame"),
    Field<&CInfo::packetWidth>(kPacketWidth, "width of a packet"),
    Field<&CInfo::packetHeight>(kPacketHeight, "height of a packet"),
    Field<&CInfo::packetExtra>(kPacketExtra, "third packet value"),
    Field<&CInfo::time>(133, "time"),
    Field<&CInfo::hasIdentity>(141, "use of the texts"),
    TextField<&CInfo::text0, 32>(142, "text 0"),
    TextField<&CInfo::text1, 16>(174, "text 1"),
    TextField<&CInfo::text2, 16>(190, "text 2"),
    TextField<&CInfo::text3, 32>(206, "text 3"),
    TextField<&CInfo::text4, 16>(238, "text 4"),
    TextField<&CInfo::text5, 16>(254, "text 5"),
    TextField<&CInfo::text6, 32>(270, "text 6"),
    TextField<&CInfo::text7, 16>(302, "text 7"),
    TextField<&CInfo::text8, 16>(318, "text 8"),
    TextField<&CInfo::text9, 32>(334, "text 9"),
    TextField<&CInfo::text10, 16>(366, "text 10"),
    TextField<&CInfo::text11, 16>(382, "text 11"),
    TextField<&CInfo::text12, 32>(398, "text 12"),
    Field<&CInfo::rangeALow>(430, "low end of range A"),
    Field<&CInfo::rangeAHigh>(438, "high end of range A"),
    Field<&CInfo::rangeASet>(446, "use of range A"),
    Field<&CInfo::rangeBLow>(447, "low end of range B"),
    Field<&CInfo::rangeBHigh>(455, "high end of range B"),
    Field<&CInfo::rangeBSet>(463, "use of range B"),
    Field<&CInfo::presetCount>(464, "presets"),
    SubRecords<&CInfo::presets, kPresetFields, kPresetSize>(kPresets, "preset"),
};
static_assert(RecordEnd(kFields) == CInfo::RecordSize);
static_assert(kOldRecordSize == kPresets + kOldPresets * kPresetSize);

// The form older than 0x10001, piece by piece.
using OldRect = TMemberStream<&RECT::top, &RECT::left, &RECT::bottom, &RECT::right>;  // not the record's order
using OldHead = TMemberStream<&CInfo::sourceBits, &CInfo::cameraName, &CInfo::flagA, &CInfo::flagB, &CInfo::sourceKind,
                              &CInfo::width, &CInfo::height>;
using OldFrame = TMemberStream<&CInfo::frameWidth, &CInfo::frameHeight, &CInfo::packetWidth, &CInfo::packetHeight,
                               &CInfo::packetExtra, &CInfo::time, &CInfo::hasIdentity>;
using OldTexts =
    TMemberStream<&CInfo::text0, &CInfo::text1, &CInfo::text2, &CInfo::text3, &CInfo::text4, &CInfo::text5,
                  &CInfo::text6, &CInfo::text7, &CInfo::text8, &CInfo::text9, &CInfo::text10, &CInfo::text11>;
using OldPreset = TMemberStream<&SPreset::enabled, &SPreset::valueA, &SPreset::flagA, &SPreset::scale, &SPreset::flagB,
                                &SPreset::frameCount, &SPreset::flagC, &SPreset::valueB, &SPreset::valueC>;

/// The oldest files name the pixel type by a number.
bool ReadPixelType(IFile& file, u32 blockVersion, GUID& type) {
    if (blockVersion != 0) return file.GetGUID(type);
    u32 code = 0;
    if (!file.GetUInt32(code)) return false;
    type = OldPixelTypeUInt32ToNewPixelType(code);
    return true;
}

}  // namespace

CSourceInfoReduceObject::CSourceInfoReduceObject() {
    valid = true;
    version = 0x20000;
    presets[0].enabled = true;
}

StoredLayout CSourceInfoReduceObject::RecordLayout() { return kLayoutOf<kFields>; }

void CSourceInfoReduceObject::Default() {
    const RECT keptRect = frameRect;
    const bool keptRectSet = frameRectSet;
    const GUID keptType = pixelType;
    TReduceObject::Default();
    frameRect = keptRect;
    frameRectSet = keptRectSet;
    pixelType = keptType;
}

bool CSourceInfoReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return LoadOldStream(*file, blockVersion);
    const bool old = blockVersion < 0x20000;
    u8 record[RecordSize] = {};
    if (!ReadRecord(*file, std::span(record, old ? kOldRecordSize : RecordSize), old ? 0x20000 : 0x30000)) return false;
    LoadRecord(*this, kFields, record);  // of an old record, presets 4 to 7 come out all zero, `scale` included
    if (old) presetCount = kOldPresets;
    return true;
}

bool CSourceInfoReduceObject::LoadOldStream(IFile& file, u32 blockVersion) {
    if (!OldHead::Read(file, *this) || !OldRect::Read(file, frameRect) || !file.GetBool(frameRectSet) ||
        !ReadPixelType(file, blockVersion, pixelType) || !file.GetInt32(sourceValue) || !ReadByte(file, baseUnit) ||
        !ReadByte(file, baseTempType) || !OldFrame::Read(file, *this) || !OldTexts::Read(file, *this)) {
        return false;
    }
    for (u8 i = 0; i < kOldPresets; ++i) {
        if (!OldPreset::Read(file, presets[i])) return false;
    }
    presetCount = kOldPresets;
    text12 = L"";
    return true;
}

bool CSourceInfoReduceObject::Save(TSharedPtr<IFile> file, u32) {
    return SaveWholeRecord<kFields, RecordSize>(*file, *this);
}

bool CSourceInfoReduceObject::UpdateNumFrames(void* record, u32 size, const u32* counts, u8 n) {
    if (!record || size < RecordSize || n > MaxPresets) return false;
    u8* bytes = static_cast<u8*>(record);
    for (u8 i = 0; i < n; ++i) {
        u8* presetRecord = bytes + kPresets + i * kPresetSize;
        if (bytes[CInfo::FixedPresetOffset] == 0) presetRecord[kPresetEnabled] = counts[i] >= 1 ? 1 : 0;
        StoreLittle(presetRecord + kPresetFrameCount, counts[i]);
    }
    return true;
}

bool CSourceInfoReduceObject::UpdatePacketing(void* record, u32 size, u16 width, u16 height, u16 extra) {
    if (!record || size < RecordSize) return false;
    u8* bytes = static_cast<u8*>(record);
    StoreLittle(bytes + kPacketWidth, width);
    StoreLittle(bytes + kPacketHeight, height);
    StoreLittle(bytes + kPacketExtra, extra);
    return true;
}

}  // namespace reduce

}  // namespace ovix
