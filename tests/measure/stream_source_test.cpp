#include <atomic>

#include "source_files.h"

namespace ovix::measure {
namespace {

using namespace test;
using Clock = std::chrono::steady_clock;

const u64 kFrame = NumberedFrame(0).size();

struct SStream {
    std::vector<Bytes> frames = {};
    std::vector<std::string> torn = {};
    u64 damage = 0;
};

SStream Drain(const CSource& source) {
    SStream stream;
    SRawFrame frame;
    for (;;) {
        try {
            if (!source.Next(frame)) break;
            EXPECT_EQ(frame.number, stream.frames.size());
            stream.frames.push_back(frame.bytes);
        } catch (const CError& error) {
            EXPECT_EQ(error.Id(), EError::FrameRefused);
            stream.torn.push_back(error.Facts().problem);
        }
    }
    for (const SFinding& finding : source.Findings()) stream.damage += finding.weight == EWeight::Damage;
    return stream;
}

SStream Through(const Bytes& bytes, const SOpenOptions& options, std::size_t piece = 1000) {
    const CPipe pipe(bytes, piece);
    const CSource source = OpenDescriptor(pipe.Reader(), "pipe", options);
    EXPECT_FALSE(source.IsNumbered());
    return Drain(source);
}

TEST(StreamSource, HandsOverTheSameFramesAsAFile) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{777}, std::size_t{60000}}) {
        EXPECT_EQ(Through(Frames(6), AsDump(), piece).frames, Numbered(6)) << piece;
        EXPECT_EQ(Through(Frames(6, 100), AsDump(), piece).frames, Numbered(6)) << piece;  // what is padded on is left
        const SStream recording = Through(RecordingOf(6), {}, piece);
        EXPECT_EQ(recording.frames, Numbered(6)) << piece;
        EXPECT_EQ(recording.damage, 0u) << piece;
    }
    const Bytes image = EncodeJpegLs(Ramp(kWidth * kHeight, 14), kWidth, kHeight);
    const Bytes frame = CompressedFrame(image, {});
    EXPECT_EQ(Through(frame + Bytes(40, 0) + frame, AsDump(kStream)).frames, (std::vector<Bytes>{frame, frame}));
    const Bytes counts = PixelBytes(Ramp(kWidth * kHeight));
    EXPECT_EQ(Through(PixelBytes(Ramp(kWidth * kHeight), true), AsDump("counts-be")).frames,
              std::vector<Bytes>{counts});
}

TEST(StreamSource, GoesOnBehindBytesThatWereLostOrInserted) {
    for (const i64 lost : {1, 333, -1, -700}) {
        for (const u16 torn : {u16{1}, u16{5}}) {
            SCOPED_TRACE(std::to_string(torn) + " loses " + std::to_string(lost));
            const SStream stream =
                Through(Torn(Frames(9), torn * kFrame + 100, lost), AsDump(kGigE, static_cast<u32>(kFrame)));
            const u64 passed = lost > 0 ? kFrame - static_cast<u64>(lost) : static_cast<u64>(-lost);
            EXPECT_EQ(stream.torn, std::vector<std::string>{"bytes were lost or inserted: " + std::to_string(passed) +
                                                            " bytes passed over"});
            EXPECT_EQ(stream.frames.size(), lost > 0 ? 8u : 9u);
            EXPECT_EQ(stream.frames.back(), NumberedFrame(8));
            EXPECT_EQ(stream.damage, 1u);
        }
    }
    // A frame that is only damaged keeps its place; one that is cut is told of, and so is a recording that ends early.
    Bytes damaged = Frames(5);
    damaged[2 * kFrame + 2u * kWidth * kHeight] ^= 1;
    EXPECT_EQ(Through(damaged, AsDump()).frames.size(), 5u);
    damaged = Frames(5);
    damaged.resize(damaged.size() - 10);
    EXPECT_EQ(Through(damaged, AsDump()).frames, Numbered(4));
    EXPECT_EQ(Through(damaged, AsDump()).damage, 1u);
    Bytes early = RecordingOf(4);
    early.resize(early.size() - kFrame);
    EXPECT_EQ(Through(early, {}).damage, 1u);
    EXPECT_EQ(IdOf([] { Through(Bytes(9000, 'x'), AsDump()); }), EError::FrameRefused);
    EXPECT_EQ(IdOf([] { Through({}, AsDump()); }), EError::NoFrames);
}

TEST(StreamSource, TheFirstFrameSpeaksForItsTypeAndSize) {
    const Bytes frame = CompressedFrame(EncodeJpegLs(Ramp(80 * 60, 14), 80, 60), {});
    const CPipe pipe({}, 1, true);
    pipe.Write(frame);
    const CSource source = OpenDescriptor(pipe.Reader(), "pipe", {.pixelType = "auto"});
    EXPECT_TRUE(source.Format().pixelTypeName == kStream && source.Format().width == 80);
    SRawFrame first;
    EXPECT_TRUE(source.Next(first) && first.bytes == frame);  // before there is a second one
    EXPECT_EQ(IdOf([&] { source.Read(0, first); }), EError::NotNumbered);
    // Frames that several types share, and bytes that no type takes.
    const Bytes shared = PlainFrame(Ramp(80 * 60), {.record = {.width = 80, .height = 60}});
    for (const Bytes& bytes : {shared, Bytes(9000, 'x')}) {
        const CPipe other(bytes);
        EXPECT_EQ(IdOf([&] { OpenDescriptor(other.Reader(), "pipe", {.pixelType = "auto"}); }), EError::UnknownFormat);
    }
}

TEST(StreamSource, FollowsARecordingUntilItIsFinished) {
    const CTestFolder folder;
    reduce::CReduceObjectArray objects;
    DescribeSource(objects);
    constexpr u16 kWritten = 12;
    std::atomic<bool> started = false;
    std::thread writer([&] {
        CRecordingWriter recording(folder.At("run.krt"), objects, FindFormat(kGigE, kWidth, kHeight),
                                   static_cast<u32>(kFrame), {});
        started = true;
        for (u16 i = 0; i < kWritten; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(33));
            recording.Add(NumberedFrame(i));
        }
        recording.Finish();
    });
    while (!started) std::this_thread::yield();
    const CSource source = Open(folder.At("run.krt.part"), {.follow = true});
    const auto start = Clock::now();
    EXPECT_EQ(Drain(source).frames, Numbered(kWritten));
    writer.join();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(9));  // it did not wait for its patience
    EXPECT_NE(source.Worst(), EWeight::Damage);

    // A dump ends when nothing came for as long as the caller has patience.
    SOpenOptions options = AsDump();
    options.follow = true;
    options.patience = std::chrono::milliseconds(50);
    EXPECT_EQ(Drain(Open(folder.Put("dump", Frames(3)), options)).frames, Numbered(3));
}

}  // namespace
}  // namespace ovix::measure
