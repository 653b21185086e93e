#include "reduce/pixels/abate.h"

#include <algorithm>
#include <numeric>

#include "core/record.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

namespace {

constexpr u32 kPresets = 8;
constexpr u32 kOldPresets = 4;
constexpr u8 kLastPreset = 7;

constexpr u32 kEnabled = 8;
constexpr u32 kEntryCount = 10;
constexpr u32 kEntries = 32;
constexpr u32 kEntrySize = 32;
constexpr u32 kRecordSize = kEntries + kPresets * kEntrySize;
constexpr u32 kOldRecordSize = kEntries + kOldPresets * kEntrySize;
static_assert(kRecordSize == 288 && kOldRecordSize == 160);

constexpr TRecordField<CAbateCfgReduceObject> kFields[] = {
    Field<&CAbateCfgReduceObject::enabled>(kEnabled),
    ByteField<&CAbateCfgReduceObject::mode>(9),
};

/// One step of the order, as stored: the thresholds stand with the place, but belong to the preset.
struct SStep {
    u32 size = kEntrySize;
    u8 preset = 0;
    u16 low = CAbateCfgReduceObject::kDefaultLow;
    u16 high = CAbateCfgReduceObject::kDefaultHigh;
};
constexpr TRecordField<SStep> kStepFields[] = {
    Field<&SStep::size>(0),
    Field<&SStep::preset>(4),
    Field<&SStep::low>(5),
    Field<&SStep::high>(7),
};
static_assert(RecordEnd(kStepFields) == 9 && RecordEnd(kStepFields) <= kEntrySize);

}  // namespace

CAbateCfgReduceObject::CAbateCfgReduceObject() {
    valid = true;
    version = 0x20000;
    std::fill(std::begin(low), std::end(low), kDefaultLow);
    std::fill(std::begin(high), std::end(high), kDefaultHigh);
    std::iota(std::begin(order), std::end(order), u8{0});
}

TSharedPtr<CAbateCfgReduceObject> CReduceObjectArray::GetAbateCfg(bool create) {
    return Get<CAbateCfgReduceObject>(-1, create);
}

bool CAbateCfgReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return LoadOldStream(*file);
    const bool old = blockVersion < 0x20000;
    const u32 stored = old ? kOldPresets : kPresets;
    u8 record[kRecordSize] = {};
    if (!ReadRecord(*file, std::span(record, old ? kOldRecordSize : kRecordSize), old ? 0x20000 : 0x30000))
        return false;
    if (record[kEntryCount] != stored) return false;

    SStep steps[kPresets];
    for (u8 s = 0; s < kPresets; ++s) {
        if (s >= stored) {
            steps[s].preset = s;
            continue;
        }
        LoadRecord(steps[s], kStepFields, record + kEntries + s * kEntrySize);
        if (steps[s].size != kEntrySize) return false;
    }
    LoadRecord(*this, kFields, record);
    for (u8 s = 0; s < kPresets; ++s) {
        const u8 p = std::min(steps[s].preset, kLastPreset);
        order[s] = p;
        low[p] = steps[s].low;
        high[p] = steps[s].high;
    }
    return true;
}

bool CAbateCfgReduceObject::LoadOldStream(IFile& file) {
    if (!file.GetBool(enabled) || !ReadByte(file, mode)) return false;
    for (u32 p = 0; p < kOldPresets; ++p) {
        if (!file.GetUInt16(low[p]) || !file.GetUInt16(high[p])) return false;
    }
    for (u32 s = 0; s < kOldPresets; ++s) {
        if (!file.GetUInt8(order[s])) return false;
    }
    return true;
}

bool CAbateCfgReduceObject::Save(TSharedPtr<IFile> file, u32 flags) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    if (flags & PersistInitialState) record[kEnabled] = 1;
    record[kEntryCount] = kPresets;
    for (u32 s = 0; s < kPresets; ++s) {
        const u8 p = std::min(order[s], kLastPreset);
        SaveRecord(SStep{kEntrySize, p, low[p], high[p]}, kStepFields, record + kEntries + s * kEntrySize);
    }
    return file->WriteBytes(record, sizeof record);
}

void SAbateSortHelper::Sort(TArray<SAbateSortHelper>& elements) {
    elements.Sort([](const SAbateSortHelper* a, const SAbateSortHelper* b) {
        if (a->key1 > b->key1) return 1;
        if (a->key1 < b->key1) return -1;
        if (a->key2 > b->key2) return -1;
        return a->key2 < b->key2 ? 1 : 0;
    });
}

}  // namespace ovix::reduce
