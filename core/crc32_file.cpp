#include "core/crc32_file.h"

#include <zlib.h>

#include <algorithm>

namespace ovix {

u32 CCalcCRC32File::Write(const void* data, u32 size) {
    if (!size) return 0;  // a null buffer would start zlib's sum again
    crc_ = static_cast<u32>(::crc32(crc_, static_cast<const Bytef*>(data), size));
    size_ += size;
    return size;
}

bool CalcCRC32(u32& crc, TSharedPtr<IFile> file) {
    if (!file) return false;
    CCalcCRC32File sum;
    u8 block[16384];
    for (u64 left = file->GetRemaining(); left;) {
        const u32 n = static_cast<u32>(std::min<u64>(left, sizeof block));
        if (!file->ReadBytes(block, n)) return false;
        sum.Write(block, n);
        left -= n;
    }
    crc = sum.GetCRC();
    return true;
}

u32 CrcOf(std::span<const u8> bytes) { return static_cast<u32>(::crc32_z(0, bytes.data(), bytes.size())); }

}  // namespace ovix
