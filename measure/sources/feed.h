#pragma once

#include <chrono>
#include <functional>
#include <stop_token>

#include "measure/sources/input_file.h"

namespace ovix::measure {

/// Bytes that come one after the other, from a pipe or from a file that grows, through a window that holds no more than
/// was asked for, once the first frame was found. One thread at a time.
class CFeed {
  public:
    /// `patience` is how long a file that grows may stand still before it counts as ended; nothing for a pipe, which
    /// ends by itself.
    CFeed(std::shared_ptr<const CInputFile> file, std::optional<std::chrono::milliseconds> patience)
        : file_(std::move(file)), patience_(patience) {}

    /// Once it is asked for, waiting ends with `CError` (Interrupted); what came until then stays in the window.
    void StopOn(std::stop_token stop) { stop_ = std::move(stop); }
    /// Waits until there are `wanted` bytes in the window, or the end; answers whether they are there.
    bool Fill(u64 wanted);
    /// Waits for a byte more than the window has.
    bool FillMore() { return Fill(Window().size() + 1); }
    /// Waits for more and takes all of it that is there, up to a mebibyte; false at the end.
    bool TakeWhatIsThere();
    /// Whether more is there already.
    bool HasMore() const { return !ended_ && file_->AwaitNext(std::chrono::milliseconds(0)); }
    std::span<const u8> Window() const { return std::span(bytes_).subspan(start_); }
    /// Gives up bytes at the front of the window.
    void Drop(u64 count);
    /// Of the front of the window in the source.
    u64 Offset() const { return offset_; }
    /// Is asked while a file stands still, whether it is complete as it is.
    void EndWhen(std::function<bool()> complete) { complete_ = std::move(complete); }
    const CInputFile& File() const { return *file_; }
    std::shared_ptr<const CInputFile> Shared() const { return file_; }

  private:
    void Take(std::size_t most);
    std::size_t ReadSome(std::span<u8> bytes);

    std::shared_ptr<const CInputFile> file_;
    std::optional<std::chrono::milliseconds> patience_;
    std::vector<u8> bytes_;
    std::size_t start_ = 0;
    u64 offset_ = 0;
    std::function<bool()> complete_;
    std::stop_token stop_;
    bool ended_ = false;
};

}  // namespace ovix::measure
