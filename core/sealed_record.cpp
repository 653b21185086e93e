#include "core/sealed_record.h"

#include <cstring>

#include "core/file.h"

namespace ovix {

namespace {

constexpr u32 kMagicSize = 8;
constexpr u32 kSizeOffset = 12;
constexpr u32 kHeaderSize = 16;
constexpr u32 kCrcSize = 4;

}  // namespace

CSealedWriter::CSealedWriter(const SSealedKind& kind) {
    record_.SetGrowthRate(65535);  // doubles
    Elements(kind.magic, kMagicSize);
    Field(kind.version);
    Field(u32{0});  // the size, when it is known
}

u8* CSealedWriter::Extend(u64 count, u64 size) {
    const u32 end = record_.size();
    whole_ =
        whole_ && count <= (~u32{0} - kCrcSize - end) / size && record_.SetSize(end + static_cast<u32>(count * size));
    return whole_ && count ? record_.data() + end : nullptr;
}

bool CSealedWriter::WriteTo(IFile& file) {
    if (!whole_) return false;
    const u32 end = record_.size();
    StoreLittle(record_.data() + kSizeOffset, end - kHeaderSize);
    return file.WriteBytes(record_.data(), end) && file.PutUInt32(CrcOf({record_.data(), end}));
}

bool CSealedReader::ReadFrom(IFile& file, const SSealedKind& kind) {
    u8 header[kHeaderSize];
    const u64 remaining = file.GetRemaining();
    if (remaining < kHeaderSize + kCrcSize || !file.ReadBytes(header, kHeaderSize)) return false;
    const u32 version = LoadLittle<u32>(header + kMagicSize);
    const u32 size = LoadLittle<u32>(header + kSizeOffset);
    if (std::memcmp(header, kind.magic, kMagicSize) != 0 || version >> 16 != kind.version >> 16 ||
        size > remaining - kHeaderSize - kCrcSize || size > ~u32{0} - kHeaderSize) {
        return false;
    }
    u32 crc = 0;
    if (!record_.SetSize(kHeaderSize + size)) return false;
    std::memcpy(record_.data(), header, kHeaderSize);
    if (!file.ReadBytes(record_.data() + kHeaderSize, size) || !file.GetUInt32(crc)) return false;
    if (crc != CrcOf({record_.data(), record_.size()})) return false;
    cursor_ = CByteCursor(record_.data() + kHeaderSize, size);
    return true;
}

}  // namespace ovix
