#pragma once

#include <unistd.h>

#include <thread>

#include "measure/measure.h"
#include "support/k410_frames.h"
#include "support/test_folder.h"

/// Files of frames of the K410 family, 16 x 8 pixels unless told otherwise, made without the measuring layer.
namespace ovix::test {

/// The thread sanitizer allows no new threads in a child that was forked off while others ran; in such a child of the
/// address sanitizer its allocator may be locked for ever.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr unsigned kThreadsAcrossForks = 1;
#else
inline constexpr unsigned kThreadsAcrossForks = 3;
#endif

inline constexpr u16 kWidth = 16, kHeight = 8;
inline constexpr const char* kGigE = "K410 IR (GigE)";
inline constexpr const char* kStream = "R7X IR (MJLS)";

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes Joined(const std::vector<Bytes>& frames) {
    Bytes all;
    for (const Bytes& frame : frames) all.insert(all.end(), frame.begin(), frame.end());
    return all;
}

/// Pixels, counter and time tell the number.
inline Bytes NumberedFrame(u16 number, std::size_t padding = 0) {
    const SK410Record record{.width = kWidth, .height = kHeight, .counter = number, .milliseconds = number};
    return PlainFrame(std::vector<u16>(kWidth * kHeight, static_cast<u16>(1000 + number)), {.record = record}) +
           Bytes(padding, 0x22);
}
inline std::vector<Bytes> Numbered(u16 count, std::size_t padding = 0) {
    std::vector<Bytes> frames;
    for (u16 i = 0; i < count; ++i) frames.push_back(NumberedFrame(i, padding));
    return frames;
}
inline Bytes Frames(u16 count, std::size_t padding = 0) { return Joined(Numbered(count, padding)); }
/// With so many bytes lost, or inserted where it is less than 0.
inline Bytes Torn(Bytes bytes, u64 offset, i64 lost) {
    const auto at = bytes.begin() + static_cast<i64>(offset);
    lost > 0 ? bytes.erase(at, at + lost) : bytes.insert(at, static_cast<std::size_t>(-lost), 0x77);
    return bytes;
}
inline Bytes StreamFrame(std::size_t imageBytes) { return CompressedFrame(Bytes(imageBytes, 0x33), {}); }

/// A pipe into which a thread writes pieces; `held`: its end stays open.
class CPipe {
  public:
    explicit CPipe(Bytes bytes, std::size_t piece = 1000, bool held = false) {
        EXPECT_EQ(::pipe(ends_), 0);
        writer_ = std::thread([this, piece, held, all = std::move(bytes)] {
            for (std::size_t at = 0; at < all.size(); at += piece)
                Write(std::span(all).subspan(at, std::min(piece, all.size() - at)));
            if (!held) ::close(ends_[1]);
        });
    }
    ~CPipe() {
        ::close(ends_[0]);
        if (writer_.joinable()) writer_.join();
    }
    int Reader() const { return ends_[0]; }
    void Write(std::span<const u8> bytes) const {
        EXPECT_EQ(::write(ends_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

  private:
    int ends_[2] = {};
    std::thread writer_;
};

/// The source of such frames, as recordings tell of it.
inline auto DescribeSource(reduce::CReduceObjectArray& objects) {
    const auto info = objects.GetSourceInfo(true);
    info->pixelType = kK410GigE;
    info->width = info->frameWidth = info->packetWidth = kWidth;
    info->height = info->frameHeight = info->packetHeight = kHeight;
    info->valid = true;
    info->time.SetTimestamp(0);
    return info;
}

/// A finished recording of `count` frames with the objects of `fill` beside its source info.
inline Bytes RecordingOf(u16 count, const std::function<void(reduce::CReduceObjectArray&)>& fill = {}) {
    reduce::CReduceObjectArray objects;
    const auto info = DescribeSource(objects);
    if (fill) fill(objects);
    CMemFile file;
    const TSharedPtr<IFile> out = BorrowShared<IFile>(file);
    reduce::SPixelsHeader header;
    reduce::InitPixelsHeader(header, info, false);
    header.frameSize = header.frameSize2 = static_cast<u32>(NumberedFrame(0).size());
    const Bytes frames = Frames(count);
    const u32 counts[4] = {count};
    EXPECT_TRUE(reduce::StartKRTFile(out, objects, header));
    EXPECT_TRUE(out->WriteBytes(frames.data(), static_cast<u32>(frames.size())));
    EXPECT_TRUE(reduce::FinishKRTFile(out, counts, false));
    return {file.GetData(), file.GetData() + file.GetSize()};
}

inline measure::SOpenOptions AsDump(const char* type = kGigE, u32 frameSize = 0) {
    return {.pixelType = type, .width = kWidth, .height = kHeight, .frameSize = frameSize};
}

/// The facts of the error that an action must end with.
inline measure::SErrorFacts FactsOf(const auto& action) {
    try {
        action();
    } catch (const measure::CError& error) {
        EXPECT_FALSE(std::string(error.what()).empty());
        return error.Facts();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}
inline measure::EError IdOf(const auto& action) { return FactsOf(action).id; }
/// Error and number of the frame.
inline auto FrameFaultOf(const auto& action) {
    const measure::SErrorFacts facts = FactsOf(action);
    return std::pair(facts.id, facts.frame.value_or(~u64{0}));
}

}  // namespace ovix::test
