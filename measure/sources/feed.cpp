#include "measure/sources/feed.h"

#include <algorithm>
#include <thread>

namespace ovix::measure {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{10};
constexpr std::size_t kPiece = std::size_t{1} << 20;

}  // namespace

bool CFeed::Fill(u64 wanted) {
    // By pieces, so that memory follows what comes and not what somebody says will come.
    while (Window().size() < wanted && !ended_) Take(std::min<u64>(wanted - Window().size(), kPiece));
    return Window().size() >= wanted;
}

bool CFeed::TakeWhatIsThere() {
    if (!ended_) Take(kPiece);
    return !ended_;
}

void CFeed::Take(std::size_t most) {
    if (start_ > bytes_.size() / 2) {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(start_));
        start_ = 0;
    }
    const std::size_t had = bytes_.size();
    bytes_.resize(had + most);
    const std::size_t read = ReadSome(std::span(bytes_).subspan(had));
    bytes_.resize(had + read);
    if (!read && stop_.stop_requested())
        throw CError({.id = EError::Interrupted, .file = file_->Name(), .problem = "the waiting was ended on request"});
    ended_ = read == 0;
}

void CFeed::Drop(u64 count) {
    start_ += count;
    offset_ += count;
}

std::size_t CFeed::ReadSome(std::span<u8> bytes) {
    if (!patience_) {
        while (stop_.stop_possible() && !file_->AwaitNext(kBetweenLooks)) {
            if (stop_.stop_requested()) return 0;
        }
        return file_->ReadNext(bytes);
    }
    const auto deadline = std::chrono::steady_clock::now() + *patience_;
    const u64 at = offset_ + Window().size() - bytes.size();
    for (;;) {
        const bool complete = complete_ && complete_();  // asked first: what it speaks of is there then
        if (const std::size_t read = file_->ReadAt(at, bytes)) return read;
        if (complete || stop_.stop_requested() || std::chrono::steady_clock::now() >= deadline) return 0;
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

}  // namespace ovix::measure
