#include "reduce/pixels/correction_objects.h"

#include <algorithm>
#include <numeric>

#include "core/norm_file.h"
#include "core/record.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

namespace {

using CCorrection = CCorrectionReduceObject;

constexpr u32 kHeaderSize = 32;
constexpr u32 kPresent = 16;

constexpr TRecordField<CCorrection> kHeaderFields[] = {
    Field<&CCorrection::width>(8),
    Field<&CCorrection::height>(12),
    Field<&CCorrection::present>(kPresent),
};
static_assert(RecordEnd(kHeaderFields) == 17 && RecordEnd(kHeaderFields) <= kHeaderSize);

/// The form older than 0x10001 has the same without a header.
using OldHeader = TMemberStream<&CCorrection::width, &CCorrection::height, &CCorrection::present>;

u32 BytesPerPixel(u8 tables) {
    return (tables & CorrectionGain ? 4u : 0u) + (tables & CorrectionOffset ? 2u : 0u) +
           (tables & CorrectionBadPixels ? 5u : 0u);
}

template <class T>
void FlipTable(T* table, u32 width, u32 height, bool leftRight, bool topBottom) {
    const auto row = [&](u32 y) { return table + u64{y} * width; };
    if (leftRight && topBottom) {
        std::reverse(table, row(height));
    } else if (leftRight) {
        for (u32 y = 0; y < height; ++y) std::reverse(row(y), row(y) + width);
    } else {
        for (u32 y = 0; y < height / 2; ++y) std::swap_ranges(row(y), row(y) + width, row(height - 1 - y));
    }
}

struct SKind {
    const wchar_t* extension;
    FILE_TYPE type;
    ECorrectionTables table;
};
constexpr SKind kKinds[] = {
    {L".mvg", GainTable, CorrectionGain},
    {L".mvo", OffsetTable, CorrectionOffset},
    {L".mvb", BadPixelTable, CorrectionBadPixels},
};

/// A path with one of the three extensions names the stem, any other path is one.
CString NameOf(const CString& path, const SKind& kind) {
    const bool hasExtension = std::any_of(std::begin(kKinds), std::end(kKinds),
                                          [&](const SKind& any) { return path.EndsWithNoCase(any.extension); });
    return hasExtension ? path::ChangeExtension(path, kind.extension) : path + kind.extension;
}

}  // namespace

CCorrectionReduceObject::CCorrectionReduceObject() { version = 0x10001; }

TSharedPtr<CCorrectionReduceObject> CReduceObjectArray::GetCorrection(u8 preset, bool create) {
    return Get<CCorrectionReduceObject>(preset, create);
}

TSharedPtr<IReduceObject> CCorrectionReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> made = TReduceObject::Duplicate();
    const TSharedPtr<CCorrectionReduceObject> copy = made.Cast<CCorrectionReduceObject>();
    copy->gain.Unshare(PixelCount());
    copy->offset.Unshare(PixelCount());
    copy->mask.Unshare(PixelCount());
    copy->map.Unshare(PixelCount());
    return made;
}

u8 CCorrectionReduceObject::ExistingTables() const {
    return static_cast<u8>((gain ? CorrectionGain : 0) | (offset ? CorrectionOffset : 0) |
                           (mask ? CorrectionBadPixels : 0));
}

void CCorrectionReduceObject::Create(u32 newWidth, u32 newHeight, i32 newPreset, u8 tables) {
    if (newWidth == 0 || newHeight == 0) return;
    const u8 presetByte = static_cast<u8>(newPreset);
    if (newWidth != width || newHeight != height || presetByte != preset) {
        Default();
        width = newWidth;
        height = newHeight;
        preset = presetByte;
    }
    present = static_cast<u8>(present | tables);
    const u8 missing = static_cast<u8>(tables & ~ExistingTables());
    if (missing & CorrectionGain) gain.Allocate(PixelCount());
    if (missing & CorrectionOffset) offset.Allocate(PixelCount());
    if (missing & CorrectionBadPixels) {
        map.Allocate(PixelCount());  // first, so that there is never a mask without a map
        mask.Allocate(PixelCount());
    }
    FillIdentity(missing);
}

void CCorrectionReduceObject::Init(u8 tables) { FillIdentity(static_cast<u8>(tables & ExistingTables())); }

void CCorrectionReduceObject::FillIdentity(u8 tables) {
    if (tables & CorrectionGain) std::fill_n(gain.get(), PixelCount(), 1.0f);
    if (tables & CorrectionOffset) std::fill_n(offset.get(), PixelCount(), i16{0});
    if (tables & CorrectionBadPixels) {
        std::fill_n(mask.get(), PixelCount(), u8{0});
        std::iota(map.get(), map.get() + PixelCount(), u32{0});
    }
}

bool CCorrectionReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    CCorrectionReduceObject stored;
    if (blockVersion >= 0x10001) {
        u8 header[kHeaderSize];
        if (!ReadRecord(*file, header, 0x20000)) return false;
        LoadRecord(stored, kHeaderFields, header);
    } else if (!OldHeader::Read(*file, stored)) {
        return false;
    }
    const u32 bytesPerPixel = BytesPerPixel(stored.present);
    if (bytesPerPixel && stored.PixelCount() > file->GetRemaining() / bytesPerPixel) return false;
    Create(stored.width, stored.height, preset, stored.present);
    if (blockVersion < 0x10001) present = stored.present;  // also where an empty size made no table
    return ReadTables(*file, stored.present);
}

bool CCorrectionReduceObject::ReadTables(IFile& file, u8 tables) {
    const u64 n = PixelCount();
    if ((tables & CorrectionGain) && !ReadTable(file, gain.get(), n)) return false;
    if ((tables & CorrectionOffset) && !ReadTable(file, offset.get(), n)) return false;
    if (!(tables & CorrectionBadPixels)) return true;
    const bool read = ReadTable(file, mask.get(), n) && ReadTable(file, map.get(), n);
    DropForeignMapEntries();
    return read;
}

void CCorrectionReduceObject::DropForeignMapEntries() {
    for (u64 i = 0; i < PixelCount(); ++i) {
        if (map[i] >= PixelCount()) map[i] = static_cast<u32>(i);
    }
}

bool CCorrectionReduceObject::Save(TSharedPtr<IFile> file, u32) {
    u8 header[kHeaderSize];
    StartRecord(header, version);
    SaveRecord(*this, kHeaderFields, header);
    header[kPresent] = ExistingTables();
    if (!file->WriteBytes(header, sizeof header)) return false;
    Flip(flippedLeftRight, flippedTopBottom);
    if (!WriteTables(*file)) return false;  // required as it is: the tables stay turned
    Flip(flippedLeftRight, flippedTopBottom);
    return true;
}

bool CCorrectionReduceObject::WriteTables(IFile& file) const {
    const u64 n = PixelCount();
    return (!gain || WriteTable(file, gain.get(), n)) && (!offset || WriteTable(file, offset.get(), n)) &&
           (!mask || (WriteTable(file, mask.get(), n) && WriteTable(file, map.get(), n)));
}

void CCorrectionReduceObject::SetFlipped(bool leftRight, bool topBottom) {
    Flip(leftRight != flippedLeftRight, topBottom != flippedTopBottom);
    flippedLeftRight = leftRight;
    flippedTopBottom = topBottom;
}

void CCorrectionReduceObject::Flip(bool leftRight, bool topBottom) {
    if (!leftRight && !topBottom) return;
    const u8 tables = static_cast<u8>(present & ExistingTables());
    if (tables & CorrectionGain) FlipTable(gain.get(), width, height, leftRight, topBottom);
    if (tables & CorrectionOffset) FlipTable(offset.get(), width, height, leftRight, topBottom);
    if (tables & CorrectionBadPixels) {
        FlipTable(mask.get(), width, height, leftRight, topBottom);
        FlipTable(map.get(), width, height, leftRight, topBottom);
        FlipMapEntries(leftRight, topBottom);
    }
}

void CCorrectionReduceObject::FlipMapEntries(bool leftRight, bool topBottom) {
    for (u64 i = 0; i < PixelCount(); ++i) {
        const u32 x = map[i] % width;
        const u32 y = map[i] / width;
        map[i] = (topBottom ? height - 1 - y : y) * width + (leftRight ? width - 1 - x : x);
    }
}

CCorrectionCfgReduceObject::CCorrectionCfgReduceObject() {
    valid = true;
    persist = false;
}

TSharedPtr<CCorrectionCfgReduceObject> CReduceObjectArray::GetCorrectionCfg(bool create) {
    return Get<CCorrectionCfgReduceObject>(-1, create);
}

CRCalReduceObject::CRCalReduceObject() = default;

bool CRCalReduceObject::Load(TSharedPtr<IFile> file, u32, u32) { return cal.Load(file, 0); }
bool CRCalReduceObject::Save(TSharedPtr<IFile> file, u32) { return cal.Save(file, 0); }

bool CCorrectionReduceObject::Load(IFileSystem* fileSystem, const CString& path) {
    CNormFile files[std::size(kKinds)];
    const CNormFile* first = nullptr;
    u8 found = 0;
    for (std::size_t i = 0; i < std::size(kKinds); ++i) {
        const CNormFile& file = files[i];
        if (!files[i].Load(fileSystem, NameOf(path, kKinds[i]))) continue;
        if (!first) first = &file;
        if (file.GetType() != kKinds[i].type || file.xPixels() != first->xPixels() ||
            file.yPixels() != first->yPixels()) {
            return false;
        }
        found = static_cast<u8>(found | kKinds[i].table);
    }
    if (!first) return false;

    flippedTopBottom = false;  // `flippedLeftRight` stays for callers that set it before
    Create(first->xPixels(), first->yPixels(), preset, found);
    valid = true;
    const u64 n = u64{first->xPixels()} * first->yPixels();
    if (n == 0) return true;
    if (found & CorrectionGain) std::copy_n(files[0].GetGains(), n, gain.get());
    if (found & CorrectionOffset) std::copy_n(files[1].GetOffsets(), n, offset.get());
    if (found & CorrectionBadPixels) {
        std::copy_n(files[2].GetBadPixels().mask, n, mask.get());
        std::copy_n(files[2].GetBadPixels().map, n, map.get());
    }
    return true;
}

bool CCorrectionReduceObject::Save(IFileSystem* fileSystem, const CString& path) {
    if (width > 0xFFFF || height > 0xFFFF) return false;  // the files cannot say so
    const u8 tables = static_cast<u8>(present & ExistingTables());
    const CString name = NameOf(path, kKinds[0]);  // for all three: files written so exist, one over the other
    const u16 w = static_cast<u16>(width);
    const u16 h = static_cast<u16>(height);
    bool done = true;
    if (tables & CorrectionGain) done = CNormFile::SaveGainTable(fileSystem, name, w, h, preset, gain) && done;
    if (tables & CorrectionOffset) done = CNormFile::SaveOffsetTable(fileSystem, name, w, h, preset, offset) && done;
    if (tables & CorrectionBadPixels) {
        done = CNormFile::SaveBadPixelTable(fileSystem, name, w, h, preset, mask, map) && done;
    }
    return done;
}

}  // namespace ovix::reduce
