#include "core/mem_file.h"

#include <algorithm>

#include "core/memory.h"

namespace ovix {

namespace {

/// No machine has more, and sums of two such numbers do not wrap.
constexpr u64 kMost = u64{1} << 48;

}  // namespace

CMemFile::~CMemFile() { Reset(); }

void CMemFile::Attach(u8* buffer, u32 size, bool own) {
    Reset();
    data_ = buffer;
    size_ = capacity_ = size;
    fixed_ = true;
    own_ = own;
}

void CMemFile::Reset() {
    if (own_) Free(data_);
    data_ = nullptr;
    size_ = capacity_ = position_ = 0;
    fixed_ = false;
    own_ = true;
}

bool CMemFile::Reserve(u64 capacity) {
    if (capacity <= capacity_) return true;
    if (fixed_ || capacity > kMost) return false;
    capacity = std::max(capacity, capacity_ + capacity_ / 2);
    auto* grown = static_cast<u8*>(Realloc(data_, capacity));
    if (!grown) return false;
    data_ = grown;
    capacity_ = capacity;
    return true;
}

bool CMemFile::SetSize(i64 size) {
    if (size < 0 || !Reserve(static_cast<u64>(size))) return false;
    const u64 wanted = static_cast<u64>(size);
    if (wanted > size_) std::memset(data_ + size_, 0, wanted - size_);
    size_ = wanted;
    position_ = std::min(position_, size_);
    return true;
}

u32 CMemFile::Write(const void* data, u32 size) {
    if (!size) return 0;
    if (fixed_) size = static_cast<u32>(std::min<u64>(size, capacity_ > position_ ? capacity_ - position_ : 0));
    const u64 end = position_ + size;
    if (!size || (end > size_ && !SetSize(static_cast<i64>(end)))) return 0;
    std::memcpy(data_ + position_, data, size);
    position_ = end;
    return size;
}

u32 CMemFile::Read(void* data, u32 size) {
    const u32 n = static_cast<u32>(std::min<u64>(size, size_ > position_ ? size_ - position_ : 0));
    if (n) std::memcpy(data, data_ + position_, n);
    position_ += n;
    return n;
}

bool CMemFile::Seek(i64 offset, int origin) {
    const u64 base = origin == FromStart ? 0 : origin == FromCurrent ? position_ : size_;
    if (offset < 0 && static_cast<u64>(-(offset + 1)) + 1 > base) return false;
    const u64 target = base + static_cast<u64>(offset);
    if (origin < FromStart || origin > FromEnd || target > kMost) return false;
    position_ = target;
    return true;
}

}  // namespace ovix
