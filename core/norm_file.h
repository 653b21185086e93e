#pragma once

#include <memory>

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
class OVIX_API CNormFile {
  public:
    CNormFile();
    CNormFile(const CNormFile&) = delete;
    CNormFile& operator=(const CNormFile&) = delete;
    ~CNormFile();

    /// False, with the object as it was, for a file that cannot be read, is damaged or of another format.
    bool Load(IFileSystem* fileSystem, const wchar_t* path);

    FILE_TYPE GetType() const;
    u32 xPixels() const;
    u32 yPixels() const;
    u16 GetPreset() const;
    /// Width times height elements, owned by this object; null when the file holds another table.
    float* GetGains();
    i16* GetOffsets();
    BPINFO GetBadPixels();

    /// True when the file stands whole.
    static bool SaveGainTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                              const float* gain);
    static bool SaveOffsetTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                                const i16* offset);
    static bool SaveBadPixelTable(IFileSystem* fileSystem, const wchar_t* path, u16 width, u16 height, u16 preset,
                                  const u8* mask, const u32* map);

  private:
    struct SContent;
    std::unique_ptr<SContent> content_;
};

}  // namespace ovix
