#pragma once

#include "core/file.h"

namespace ovix {

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

}  // namespace ovix
