#include "core/file.h"

#include <algorithm>
#include <cstring>

#include "core/array.h"

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

u64 IFile::GetRemaining() {
    const u64 position = GetPosition();
    if (!Seek(0, FromEnd)) return 0;
    const u64 end = GetPosition();
    Seek(static_cast<i64>(position), FromStart);
    return end > position ? end - position : 0;
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

}  // namespace ovix
