#include "core/file.h"

#include <zlib.h>
#include <algorithm>
#include <cstring>

#include "core/array.h"
#include "core/process.h"

namespace ovix {

IFile::~IFile() = default;

bool IFile::Flush() { return true; }
bool IFile::Close() { return Flush(); }

bool IFile::ReadBytes(void* data, u32 n) { return Read(data, n) == n; }
bool IFile::WriteBytes(const void* data, u32 n) { return Write(data, n) == n; }

bool IFile::WriteZeros(u64 n) {
    static constexpr u8 kZeros[4096] = {};
    while (n) {
        const u32 step = static_cast<u32>(std::min<u64>(n, sizeof kZeros));
        if (!WriteBytes(kZeros, step)) return false;
        n -= step;
    }
    return true;
}

u64 IFile::SeekToBegin() {
    Seek(0, FromStart);
    return GetPosition();
}

namespace {

bool HasByteAt(IFile& file, u64 position) {
    u8 byte;
    return file.Seek(static_cast<i64>(position), IFile::FromStart) && file.Read(&byte, 1) == 1;
}

/// The first position behind `from` where there is no byte: in doubling steps, then by halves.
u64 FindEnd(IFile& file, u64 from) {
    constexpr u64 kFarthest = u64{1} << 62;
    u64 step = 1;
    while (from + step < kFarthest && HasByteAt(file, from + step - 1)) {
        from += step;
        step *= 2;
    }
    while (step > 1) {
        step /= 2;
        if (HasByteAt(file, from + step - 1)) from += step;
    }
    return from;
}

}  // namespace

bool IFile::FindRemaining(u64& remaining) {
    const u64 position = GetPosition();
    const auto back = [&] { return Seek(static_cast<i64>(position), FromStart) && GetPosition() == position; };
    const u64 end = Seek(0, FromEnd) ? GetPosition() : back() ? FindEnd(*this, position) : 0;
    if (!back()) return false;
    remaining = end > position ? end - position : 0;
    return true;
}

u64 IFile::GetRemaining() {
    u64 remaining = 0;
    return FindRemaining(remaining) ? remaining : 0;
}

bool IFile::GetBool(bool& value) {
    u8 byte = 0;
    if (!GetUInt8(byte)) return false;
    value = byte != 0;
    return true;
}

bool IFile::GetGUID(GUID& value) {
    u8 bytes[16];
    if (!ReadBytes(bytes, sizeof bytes)) return false;
    value = LoadGuid(bytes);
    return true;
}

bool IFile::PutGUID(const GUID& value) {
    u8 bytes[16];
    StoreGuid(bytes, value);
    return WriteBytes(bytes, sizeof bytes);
}

bool IFile::GetFixedLengthString(char* dest, u32 n) {
    if (!ReadBytes(dest, n)) return false;
    dest[n] = 0;
    return true;
}

bool IFile::PutFixedLengthString(const char* text, u32 n) {
    const u32 length = static_cast<u32>(::strnlen(text, n));
    return WriteBytes(text, length) && WriteZeros(n - length);
}

bool IFile::GetString(CString& text) {
    u32 size = 0;
    if (!GetUInt32(size) || size > GetRemaining()) return false;
    TArray<char> bytes;
    if (!bytes.SetSize(size) || !ReadBytes(bytes.data(), size)) return false;
    text = CString(bytes.data(), static_cast<int>(std::min<u32>(size, 0x7FFFFFFF)));
    return true;
}

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

u32 CCalcCRC32File::Write(const void* data, u32 size) {
    if (!size) return 0;  // a null buffer would start zlib's sum again
    crc_ = static_cast<u32>(::crc32(crc_, static_cast<const Bytef*>(data), size));
    size_ += size;
    return size;
}

bool CalcCRC32(u32& crc, TSharedPtr<IFile> file) {
    u64 left = 0;
    if (!file || !file->FindRemaining(left)) return false;
    CCalcCRC32File sum;
    u8 block[16384];
    while (left) {
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
