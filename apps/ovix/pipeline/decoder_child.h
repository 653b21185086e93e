#pragma once

#include <functional>
#include <span>
#include <string>
#include <utility>

#include "core/core.h"

namespace ovix::app {

/// Memory that stays shared with child processes started later.
class CSharedMemory {
  public:
    CSharedMemory() = default;
    /// Throws `CFault` when there is none.
    explicit CSharedMemory(std::size_t bytes);
    CSharedMemory(CSharedMemory&& other) noexcept { Swap(other); }
    CSharedMemory& operator=(CSharedMemory&& other) noexcept {
        Swap(other);
        return *this;
    }
    ~CSharedMemory();

    u8* data() const { return data_; }
    std::size_t size() const { return size_; }

  private:
    void Swap(CSharedMemory& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
    }

    u8* data_ = nullptr;
    std::size_t size_ = 0;
};

/// A child process that runs one function on frame after frame, so that its end is not ours. Frame and pixels lie in
/// memory that both share; the child is started at the first frame and again after it died.
class CDecoderChild {
  public:
    /// Reads the frame, writes `pixelBytes` bytes of pixels; false for a frame that it does not take.
    using Work = std::function<bool(std::span<u8> frame, void* pixels)>;

    CDecoderChild(std::size_t pixelBytes, Work work);
    ~CDecoderChild();
    CDecoderChild(const CDecoderChild&) = delete;
    CDecoderChild& operator=(const CDecoderChild&) = delete;

    /// What the function answers in the child. Throws `CFault` when the child dies or does not answer in time.
    bool Run(std::span<const u8> frame);
    /// The same place for the life of this object.
    void* Pixels() const { return pixels_.data(); }

  private:
    void Start();
    /// Ends the child, if there is one, and answers how it ended in words.
    std::string Stop();
    [[noreturn]] void Serve(int socket);

    Work work_;
    CSharedMemory pixels_;
    CSharedMemory frame_;
    int socket_ = -1;
    int pid_ = -1;
};

}  // namespace ovix::app
