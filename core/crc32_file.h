#pragma once

#include <span>

#include "core/file.h"

namespace ovix {

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

/// The same CRC-32 over a file from its current position to the end. False when a read fails.
OVIX_API bool CalcCRC32(u32& crc, TSharedPtr<IFile> file);

/// The same CRC-32 over bytes.
OVIX_API u32 CrcOf(std::span<const u8> bytes);

}  // namespace ovix
