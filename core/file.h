#pragma once

#include <span>

#include "core/bytes.h"
#include "core/shared_ptr.h"
#include "core/string.h"

namespace ovix {

/// An abstract file: bytes at a position that each read or write moves on. Not for two threads at once.
/// The `Get` operations read one little-endian value and are false at the end of the file, leaving the value alone.
///
/// Who implements one owes these: `Read` and `Write` move as many bytes as they can and the position by as many;
/// `Read` answers less than asked for only at the end. `Seek` knows the origins `FromStart` and `FromCurrent` and
/// answers false, with the position where it was, for what it cannot do; positions up to the end must be reached.
/// `FromEnd` is a courtesy that makes finding the end quick: without it the end is found by trying bytes.
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
    /// The position then: 0, unless the file cannot be moved.
    u64 SeekToBegin();
    /// Bytes from the position to the end of the file; the position stays. False when that cannot be known.
    bool FindRemaining(u64& remaining);
    /// The same; 0 when it cannot be known.
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

/// A file in memory. It grows as it is written, unless it works on a caller's buffer.
class OVIX_API CMemFile final : public IFile {
  public:
    CMemFile() = default;
    CMemFile(const CMemFile&) = delete;
    CMemFile& operator=(const CMemFile&) = delete;
    ~CMemFile() override;

    /// Works on a caller's buffer of fixed size, which is freed with `Free` at the end when `own` is set.
    void Attach(u8* buffer, u32 size, bool own);
    /// New bytes are zero; a position past the end moves to the end. False when memory fails, or when the buffer is
    /// the caller's and too small. A caller's buffer that was made smaller can be written full again.
    bool SetSize(i64 size);
    u8* GetData() { return data_; }
    u64 GetSize() const { return size_; }
    /// Drops the content.
    void Reset();

    u32 Write(const void* data, u32 size) override;
    u32 Read(void* data, u32 size) override;
    u64 GetPosition() override { return position_; }
    /// A position past the end is allowed; the gap fills with zeros at the next write.
    bool Seek(i64 offset, int origin) override;

  private:
    bool Reserve(u64 capacity);

    u8* data_ = nullptr;
    u64 size_ = 0;
    u64 capacity_ = 0;
    u64 position_ = 0;
    bool fixed_ = false;
    bool own_ = true;
};

/// A file that keeps nothing of what is written but its CRC-32 (the reflected one of zip and Ethernet) and byte count.
class OVIX_API CCalcCRC32File final : public IFile {
  public:
    u32 GetCRC() const { return crc_; }
    u64 GetSize() const { return size_; }

    u32 Write(const void* data, u32 size) override;
    u32 Read(void*, u32) override { return 0; }
    u64 GetPosition() override { return size_; }
    bool Seek(i64, int) override { return false; }

  private:
    u32 crc_ = 0;
    u64 size_ = 0;
};

/// The same CRC-32 over a file from its current position to the end. False when a read fails or there is no telling
/// where the end is.
OVIX_API bool CalcCRC32(u32& crc, TSharedPtr<IFile> file);

/// The same CRC-32 over bytes.
OVIX_API u32 CrcOf(std::span<const u8> bytes);

}  // namespace ovix
