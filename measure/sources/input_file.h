#pragma once

#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "measure/sources/bytes.h"

namespace ovix::measure {

/// A descriptor of the system, closed with its owner; -1 for none.
class CDescriptor {
  public:
    explicit CDescriptor(int number = -1) : number_(number) {}
    CDescriptor(CDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~CDescriptor();
    operator int() const { return number_; }

  private:
    int number_;
};

/// Which file it is, whatever its names are.
struct SFileIdentity {
    u64 device = 0;
    u64 inode = 0;
    bool operator==(const SFileIdentity&) const = default;
};
/// Nothing for a name that leads nowhere.
std::optional<SFileIdentity> IdentityOf(const std::filesystem::path& path);

/// What was opened for reading: a regular file, or a pipe or socket of which bytes come one after the other.
class CInputFile final : public IBytes {
  public:
    /// "-" is the standard input. Throws `CError` for what is missing, cannot be read, or is neither file nor pipe.
    /// With `waits` false a named pipe opens before somebody writes to it; then `AwaitNext` is to be asked before
    /// `ReadNext`.
    explicit CInputFile(const std::filesystem::path& path, bool waits = true);
    /// A descriptor that stays the caller's.
    CInputFile(int descriptor, std::string name);
    /// A copy of bytes, kept in memory.
    CInputFile(std::span<const u8> bytes, std::string name);
    /// None at all, for frames that lie in memory.
    CInputFile(std::nullptr_t, std::string name) : name_(std::move(name)) {}

    const std::string& Name() const override { return name_; }
    /// Of a regular file when it was opened; 0 of others.
    u64 Size() const override { return size_; }
    std::size_t ReadAt(u64 offset, std::span<u8> bytes) const override;

    bool IsRegular() const { return regular_; }
    SFileIdentity Identity() const { return identity_; }
    /// The size by now.
    u64 SizeNow() const;
    /// Of a pipe: waits until there are bytes; 0 at its end.
    std::size_t ReadNext(std::span<u8> bytes) const;
    /// Whether `ReadNext` would not wait, after at most that time.
    bool AwaitNext(std::chrono::milliseconds atMost) const;

  private:
    void Inspect();
    struct stat Facts() const;

    std::string name_;
    CDescriptor file_;
    SFileIdentity identity_;
    u64 size_ = 0;
    bool regular_ = false;
};

}  // namespace ovix::measure
