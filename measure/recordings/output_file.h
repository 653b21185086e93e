#pragma once

#include <filesystem>

#include <span>

#include "core/core.h"
#include "measure/api.h"

namespace ovix::measure {

/// A file that appears whole or not at all: it is written beside its place, made safe on the medium and renamed by
/// `Commit`. Without that it goes with the object, unless its part is to be kept. For one thread at a time. Failures
/// throw `CError` (FileUnwritable, FileExists) with the target's name and the system's reason.
class OVIX_MEASURE_API COutputFile {
  public:
    enum class EPart : u8 {
        Hidden,  ///< ".TARGET.PROCESS-N.part"
        Named,   ///< "TARGET.part"
        Kept,    ///< likewise, and left where it is when it is never committed
    };

    /// Refuses a target that is there unless `overwrite` is set, one that is no regular file in any case, and a part
    /// that is there already, which somebody else is writing or never finished.
    COutputFile(std::filesystem::path target, bool overwrite, EPart part = EPart::Hidden);
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// At the end of all that is written so far.
    void Write(std::span<const u8> bytes) { WriteAt(size_, bytes); }
    /// Over or behind what is there.
    void WriteAt(u64 offset, std::span<const u8> bytes);
    /// The number of bytes read back, less than asked for at the end.
    std::size_t ReadAt(u64 offset, std::span<u8> bytes) const;
    u64 Size() const { return size_; }
    const std::filesystem::path& Target() const { return target_; }
    const std::filesystem::path& Part() const { return part_; }

    /// A hidden part bears the name "TARGET.part" from now on: what is written so far can be read. Refuses as the
    /// constructor does where there is one.
    void Show();
    /// All that is written has reached the medium, and with it the name of the part.
    void Sync();
    /// Puts the file into its place. Without `overwrite`, a file that has come into being there meanwhile stays.
    void Commit();

  private:
    [[noreturn]] void FailWith(const std::filesystem::path& part) const;
    [[noreturn]] void Fail(const char* problem) const;
    void SyncBytes();

    std::filesystem::path target_;
    std::filesystem::path part_;
    int file_ = -1;
    u64 size_ = 0;
    bool overwrite_;
    bool keeps_;
};

/// The output as the library writes a file; it is borrowed. A write that fails throws through the library, so that one
/// that the library does not look at cannot fail unseen.
class OVIX_MEASURE_API COutputAsFile final : public IFile {
  public:
    explicit COutputAsFile(COutputFile& output) : output_(output) {}
    ~COutputAsFile() override;

    u32 Write(const void* data, u32 size) override;
    u32 Read(void* data, u32 size) override;
    u64 GetPosition() override { return position_; }
    bool Seek(i64 offset, int origin) override;
    /// To the medium, so that what is written later cannot be there before what was written earlier.
    bool Flush() override;

  private:
    COutputFile& output_;
    u64 position_ = 0;
};

}  // namespace ovix::measure
