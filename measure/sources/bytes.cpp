#include "measure/sources/bytes.h"

#include <algorithm>
#include <cstring>

#include "measure/text.h"

namespace ovix::measure {

void IBytes::ReadAllAt(u64 offset, std::span<u8> bytes) const {
    const std::size_t read = ReadAt(offset, bytes);
    if (read == bytes.size()) return;
    throw CError({.id = EError::FileChanged,
                  .file = Name(),
                  .offset = offset + read,
                  .problem = "the file became shorter while it was read",
                  .expected = Say(bytes.size() - read, " bytes more"),
                  .found = "its end"});
}

std::vector<u8> IBytes::Get(u64 offset, u64 most) const {
    std::vector<u8> bytes(std::min(most, Size() - std::min(offset, Size())));
    bytes.resize(ReadAt(offset, bytes));
    return bytes;
}

u32 IBytes::CrcOf(u64 offset, u64 size) const {
    CCalcCRC32File sum;
    std::vector<u8> bytes(std::min<u64>(size, u64{256} << 10));
    while (size) {
        const std::size_t read = ReadAt(offset, std::span(bytes).first(std::min<u64>(size, bytes.size())));
        if (!read) break;
        sum.Write(bytes.data(), static_cast<u32>(read));
        offset += read;
        size -= read;
    }
    return sum.GetCRC();
}

std::size_t CBytesInMemory::ReadAt(u64 offset, std::span<u8> bytes) const {
    const std::size_t start = std::min<u64>(offset, bytes_.size());
    const std::size_t count = std::min(bytes.size(), bytes_.size() - start);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(start), count, bytes.begin());
    return count;
}

u32 CBytesFile::Read(void* data, u32 size) {
    const auto read = static_cast<u32>(bytes_.ReadAt(position_, {static_cast<u8*>(data), size}));
    position_ += read;
    return read;
}

bool CBytesFile::MoveTo(u64& position, u64 end, i64 offset, int origin) {
    const u64 base = origin == FromStart ? 0 : origin == FromCurrent ? position : end;
    const u64 target = base + static_cast<u64>(offset);
    const bool before = offset < 0 && target > base;
    const bool wraps = offset >= 0 && target < base;
    if (origin < FromStart || origin > FromEnd || before || wraps || target > u64{1} << 62) return false;
    position = target;
    return true;
}

}  // namespace ovix::measure
