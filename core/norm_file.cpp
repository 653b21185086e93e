#include "core/norm_file.h"

#include <utility>

#include "core/sealed_record.h"

namespace ovix {

namespace {

constexpr SSealedKind kKind{"OVIXNORM", 0x10000};
constexpr u32 kGreatestSide = 0xFFFF;

/// Writes the head of a file, then what `tables` puts behind it.
template <class Tables>
bool Save(IFileSystem* fileSystem, const wchar_t* path, FILE_TYPE type, u16 width, u16 height, u16 preset,
          Tables&& tables) {
    const u64 count = u64{width} * height;
    CSealedWriter writer(kKind);
    if (!count || !writer.Field(u32{type}) || !writer.Field(u32{width}) || !writer.Field(u32{height}) ||
        !writer.Field(preset) || !writer.Field(u16{0}) || !tables(writer, count)) {
        return false;
    }
    const TSharedPtr<IFile> file = fileSystem->Open(path, IFileSystem::CreateForWriting);
    return file && writer.WriteTo(*file) && file->Close();
}

}  // namespace

bool CNormFile::Load(IFileSystem* fileSystem, const wchar_t* path) {
    const TSharedPtr<IFile> file = fileSystem->Open(path, IFileSystem::OpenForReading);
    CSealedReader reader;
    CNormFile loaded;
    if (!file || !reader.ReadFrom(*file, kKind) || file->GetRemaining() || !loaded.LoadTables(reader)) return false;
    *this = std::move(loaded);
    return true;
}

bool CNormFile::LoadTables(CSealedReader& reader) {
    u32 type = 0;
    u16 unused = 0;
    if (!reader.Field(type) || !reader.Field(width_) || !reader.Field(height_) || !reader.Field(preset_) ||
        !reader.Field(unused) || !width_ || !height_ || width_ > kGreatestSide || height_ > kGreatestSide) {
        return false;
    }
    const u32 count = width_ * height_;
    type_ = static_cast<FILE_TYPE>(type);
    switch (type_) {
        case GainTable:
            return reader.Elements(gains_, count);
        case OffsetTable:
            return reader.Elements(offsets_, count);
        case BadPixelTable:
            if (!reader.Elements(mask_, count) || !reader.Elements(map_, count)) return false;
            for (u32 i = 0; i < count; ++i) {
                if (map_[i] >= count) map_[i] = i;
            }
            return true;
    }
    return false;
}

bool CNormFile::SaveGainTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                              const float* gain) {
    return Save(fileSystem, path, GainTable, width, height, preset,
                [&](CSealedWriter& writer, u64 count) { return writer.Elements(gain, count); });
}

bool CNormFile::SaveOffsetTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                                const i16* offset) {
    return Save(fileSystem, path, OffsetTable, width, height, preset,
                [&](CSealedWriter& writer, u64 count) { return writer.Elements(offset, count); });
}

bool CNormFile::SaveBadPixelTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                                  const u8* mask, const u32* map) {
    return Save(fileSystem, path, BadPixelTable, width, height, preset, [&](CSealedWriter& writer, u64 count) {
        return writer.Elements(mask, count) && writer.Elements(map, count);
    });
}

}  // namespace ovix
