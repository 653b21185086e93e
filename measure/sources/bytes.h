#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "measure/error.h"

namespace ovix::measure {

/// Bytes that can be read at any place, by any number of threads at once.
class IBytes {
  public:
    virtual ~IBytes() = default;

    /// For errors.
    virtual const std::string& Name() const = 0;
    virtual u64 Size() const = 0;
    /// The number of bytes read: less than asked for only at the end.
    virtual std::size_t ReadAt(u64 offset, std::span<u8> bytes) const = 0;

    /// All of them. Throws `CError` (FileChanged), for a place that was there when `Size()` was asked for.
    void ReadAllAt(u64 offset, std::span<u8> bytes) const;
    /// At most `most` bytes, as many as there are.
    std::vector<u8> Get(u64 offset, u64 most) const;
    /// CRC-32 of `size` bytes, or of those that are there.
    u32 CrcOf(u64 offset, u64 size) const;
};

/// The start of a stream that was read already.
class CBytesInMemory final : public IBytes {
  public:
    CBytesInMemory(std::string name, std::vector<u8> bytes) : name_(std::move(name)), bytes_(std::move(bytes)) {}

    const std::string& Name() const override { return name_; }
    u64 Size() const override { return bytes_.size(); }
    std::size_t ReadAt(u64 offset, std::span<u8> bytes) const override;

  private:
    std::string name_;
    std::vector<u8> bytes_;
};

/// Bytes as the library reads a file. They are borrowed; writing fails.
class CBytesFile final : public IFile {
  public:
    explicit CBytesFile(const IBytes& bytes) : bytes_(bytes) {}

    u32 Write(const void*, u32) override { return 0; }
    u32 Read(void* data, u32 size) override;
    u64 GetPosition() override { return position_; }
    bool Seek(i64 offset, int origin) override { return MoveTo(position_, bytes_.Size(), offset, origin); }

    /// Moves a position as `Seek` does. Places before the start are refused; those behind the end are not.
    static bool MoveTo(u64& position, u64 end, i64 offset, int origin);

  private:
    const IBytes& bytes_;
    u64 position_ = 0;
};

}  // namespace ovix::measure
