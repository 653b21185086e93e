#include "reduce/objects/source_info_reduce_object.h"

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CInfo = CSourceInfoReduceObject;
using SPreset = CInfo::SPresetInfo;

constexpr u32 kOldRecordSize = 1536;  ///< room for four presets
constexpr u8 kOldPresets = 4;
constexpr u32 kPresetSize = 128;

// What is patched in place.
constexpr u32 kFixedPreset = 78;
constexpr u32 kPacketWidth = 127;
constexpr u32 kPacketHeight = 129;
constexpr u32 kPacketExtra = 131;
constexpr u32 kPresets = 1024;
constexpr u32 kPresetEnabled = 0;
constexpr u32 kPresetFrameCount = 15;

constexpr TRecordField<SPreset> kPresetFields[] = {
    Field<&SPreset::enabled>(kPresetEnabled),
    Field<&SPreset::valueA>(1),
    Field<&SPreset::flagA>(9),
    Field<&SPreset::scale>(10),
    Field<&SPreset::flagB>(14),
    Field<&SPreset::frameCount>(kPresetFrameCount),
    Field<&SPreset::flagC>(19),
    Field<&SPreset::valueB>(20),
    Field<&SPreset::valueC>(28),
};
static_assert(RecordEnd(kPresetFields) == 36);

constexpr TRecordField<RECT> kRectFields[] = {
    Field<&RECT::left>(0),
    Field<&RECT::top>(4),
    Field<&RECT::right>(8),
    Field<&RECT::bottom>(12),
};

constexpr TRecordField<CInfo> kFields[] = {
    Field<&CInfo::sourceBits>(8),
    TextField<&CInfo::cameraName, 64>(12),
    Field<&CInfo::flagA>(76),
    Field<&CInfo::flagB>(77),
    Field<&CInfo::fixedPreset>(kFixedPreset),
    Field<&CInfo::sourceKind>(79),
    Field<&CInfo::width>(80),
    Field<&CInfo::height>(82),
    SubRecords<&CInfo::frameRect, kRectFields>(84),
    Field<&CInfo::frameRectSet>(100),
    Field<&CInfo::pixelType>(101),
    Field<&CInfo::sourceValue>(117),
    ByteField<&CInfo::baseUnit>(121),
    ByteField<&CInfo::baseTempType>(122),
    Field<&CInfo::frameWidth>(123),
    Field<&CInfo::frameHeight>(125),
    Field<&CInfo::packetWidth>(kPacketWidth),
    Field<&CInfo::packetHeight>(kPacketHeight),
    Field<&CInfo::packetExtra>(kPacketExtra),
    Field<&CInfo::time>(133),
    Field<&CInfo::hasIdentity>(141),
    TextField<&CInfo::text0, 32>(142),
    TextField<&CInfo::text1, 16>(174),
    TextField<&CInfo::text2, 16>(190),
    TextField<&CInfo::text3, 32>(206),
    TextField<&CInfo::text4, 16>(238),
    TextField<&CInfo::text5, 16>(254),
    TextField<&CInfo::text6, 32>(270),
    TextField<&CInfo::text7, 16>(302),
    TextField<&CInfo::text8, 16>(318),
    TextField<&CInfo::text9, 32>(334),
    TextField<&CInfo::text10, 16>(366),
    TextField<&CInfo::text11, 16>(382),
    TextField<&CInfo::text12, 32>(398),
    Field<&CInfo::rangeALow>(430),
    Field<&CInfo::rangeAHigh>(438),
    Field<&CInfo::rangeASet>(446),
    Field<&CInfo::rangeBLow>(447),
    Field<&CInfo::rangeBHigh>(455),
    Field<&CInfo::rangeBSet>(463),
    Field<&CInfo::presetCount>(464),
    SubRecords<&CInfo::presets, kPresetFields, kPresetSize>(kPresets),
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
    u8 record[RecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    return file->WriteBytes(record, sizeof record);
}

bool CSourceInfoReduceObject::UpdateNumFrames(void* record, u32 size, const u32* counts, u8 n) {
    if (!record || size < RecordSize || n > MaxPresets) return false;
    u8* bytes = static_cast<u8*>(record);
    for (u8 i = 0; i < n; ++i) {
        u8* presetRecord = bytes + kPresets + i * kPresetSize;
        if (bytes[kFixedPreset] == 0) presetRecord[kPresetEnabled] = counts[i] >= 1 ? 1 : 0;
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

}  // namespace ovix::reduce
