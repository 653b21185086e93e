#pragma once

#include "core/file_system.h"

namespace ovix {

enum FILE_TYPE : u32 {
    GainTable = 0,
    OffsetTable = 1,
    BadPixelTable = 2,
};

/// The two tables of bad pixels: a mask (not 0 marks a bad one) and, for each pixel, the index of the pixel whose data
/// stand in for it. Both are owned by the `CNormFile`.
struct BPINFO {
    u8* mask = nullptr;
    u32* map = nullptr;
};

/// A file with one table of the non-uniformity correction: gains, offsets or bad pixels (`docs/formats/norm_file.md`).
/// A value: copies are independent. Empty until it is loaded.
class OVIX_API CNormFile {
  public:
    /// False, with the object as it was, for a file that cannot be read, is damaged or of another format. An entry of
    /// the map that lies beyond the table becomes the pixel itself.
    bool Load(IFileSystem* fileSystem, const wchar_t* path);

    FILE_TYPE GetType() const { return type_; }
    u32 xPixels() const { return width_; }
    u32 yPixels() const { return height_; }
    u16 GetPreset() const { return preset_; }
    /// Width times height elements, owned by this object; null when the file holds another table.
    float* GetGains() { return gains_.data(); }
    i16* GetOffsets() { return offsets_.data(); }
    BPINFO GetBadPixels() { return {mask_.data(), map_.data()}; }

    /// True when the file stands whole on the medium. Otherwise what stands at the path is no file that `Load` takes.
    /// False also for a table without pixels or of 4 GiB and more, with nothing written.
    static bool SaveGainTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                              const float* gain);
    static bool SaveOffsetTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                                const i16* offset);
    static bool SaveBadPixelTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                                  const u8* mask, const u32* map);

  private:
    bool LoadTables(class CSealedReader& reader);

    FILE_TYPE type_ = GainTable;
    u32 width_ = 0;
    u32 height_ = 0;
    u16 preset_ = 0;
    TArray<float> gains_;
    TArray<i16> offsets_;
    TArray<u8> mask_;
    TArray<u32> map_;
};

}  // namespace ovix
