#pragma once

#include "core/bytes.h"
#include "core/shared_ptr.h"
#include "core/string.h"

namespace ovix {

/// An abstract file: bytes at a position that each read or write moves on. Not for two threads at once.
/// The `Get` operations read one little-endian value and are false at the end of the file, leaving the value alone.
class OVIX_API IFile {
  public:
    enum ESeekOrigin : int {
        FromStart = 1,
        FromCurrent = 2,
        FromEnd = 3,
    };

    virtual ~IFile();
    /// The number of bytes written.
    virtual u32 Write(const void* data, u32 size) = 0;
    /// The number of bytes read, less than asked for at the end of the file.
    virtual u32 Read(void* data, u32 size) = 0;
    virtual u64 GetPosition() = 0;
    virtual bool Seek(i64 offset, int origin) = 0;
    /// Hands what is buffered to the system. False when a byte written so far was lost.
    virtual bool Flush();
    /// Flushes and gives the file up: nothing else works afterwards. False when a byte was lost, which some media find
    /// out only now. A file that is just dropped is closed too, and nobody learns.
    virtual bool Close();

    /// True only if all n bytes moved.
    bool ReadBytes(void* data, u32 n);
    bool WriteBytes(const void* data, u32 n);
    bool WriteZeros(u64 n);
    u64 SeekToBegin();
    /// Bytes from the position to the end of the file.
    u64 GetRemaining();

    bool GetBool(bool& value);
    bool GetInt8(i8& value) { return GetNumber(value); }
    bool GetUInt8(u8& value) { return GetNumber(value); }
    bool GetInt16(i16& value) { return GetNumber(value); }
    bool GetUInt16(u16& value) { return GetNumber(value); }
    bool GetInt32(i32& value) { return GetNumber(value); }
    bool GetUInt32(u32& value) { return GetNumber(value); }
    bool GetInt64(i64& value) { return GetNumber(value); }
    bool GetUInt64(u64& value) { return GetNumber(value); }
    bool GetFlt32(float& value) { return GetNumber(value); }
    bool GetFlt64(double& value) { return GetNumber(value); }
    bool GetGUID(GUID& value);

    bool PutBool(bool value) { return PutNumber<u8>(value ? 1 : 0); }
    bool PutInt8(i8 value) { return PutNumber(value); }
    bool PutUInt8(u8 value) { return PutNumber(value); }
    bool PutUInt16(u16 value) { return PutNumber(value); }
    bool PutInt32(i32 value) { return PutNumber(value); }
    bool PutUInt32(u32 value) { return PutNumber(value); }
    bool PutUInt64(u64 value) { return PutNumber(value); }
    bool PutFlt32(float value) { return PutNumber(value); }
    bool PutFlt64(double value) { return PutNumber(value); }
    bool PutGUID(const GUID& value);

    /// n bytes of the file and a terminator behind them: `dest` has room for n + 1.
    bool GetFixedLengthString(char* dest, u32 n);
    /// Exactly n bytes: the text cut to n, then zeros. A text of n bytes and more needs no terminator.
    bool PutFixedLengthString(const char* text, u32 n);
    /// A string of variable length: a 32-bit byte count, then UTF-8. A count beyond what remains fails.
    bool GetString(CString& text);

  private:
    template <Number T>
    bool GetNumber(T& value) {
        u8 bytes[sizeof(T)];
        if (!ReadBytes(bytes, sizeof bytes)) return false;
        value = LoadLittle<T>(bytes);
        return true;
    }
    template <Number T>
    bool PutNumber(T value) {
        u8 bytes[sizeof(T)];
        StoreLittle(bytes, value);
        return WriteBytes(bytes, sizeof bytes);
    }
};

}  // namespace ovix
