#include "apps/ovix/input/dump_layout.h"

#include <gtest/gtest.h>

#include "apps/ovix/input/pixel_type_names.h"
#include "support/k410_frames.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

/// 16 x 8 pixels.
std::string PlainFrame(std::size_t padding = 0) {
    const test::Bytes frame = test::PlainFrame(std::vector<u16>(16 * 8, 0x1111), {});
    return std::string(frame.begin(), frame.end()) + std::string(padding, '\x22');
}

std::string StreamFrame(std::size_t imageBytes) {
    const test::Bytes frame = test::CompressedFrame(test::Bytes(imageBytes, 0x33), {});
    return {frame.begin(), frame.end()};
}

struct SFound {
    u64 frameSize;
    std::vector<u64> offsets;
    u64 lastSize;

    bool operator==(const SFound&) const = default;
};

void PrintTo(const SFound& found, std::ostream* out) {
    *out << "size " << found.frameSize << ", last " << found.lastSize << ", at";
    for (const u64 offset : found.offsets) *out << ' ' << offset;
}

SFound Find(const char* pixelType, const std::string& bytes, u32 frameSize = 0) {
    const test::CToolFolder folder;
    test::WriteText(folder.Path("dump"), bytes);
    const CInputFile file(folder.Path("dump"));
    const auto layout = FindLayout(file, FindFormat(pixelType, 16, 8), frameSize);
    SFound found{layout->FrameSize(), {}, 0};
    for (u64 i = 0; i < layout->Count(); ++i) {
        found.offsets.push_back(layout->Of(i).offset);
        found.lastSize = layout->Of(i).size;
    }
    return found;
}

TEST(DumpLayout, FindsEqualFramesWhateverStandsBehindTheirRecords) {
    const u64 m = PlainFrame().size();
    const char* gige = "k410 ir (gige)";
    const std::string three = PlainFrame(100) + PlainFrame(100) + PlainFrame(100);
    const struct {
        const char* what;
        std::string bytes;
        u32 given;
        SFound found;
    } cases[] = {
        {"one", PlainFrame(), 0, {m, {0}, m}},
        {"three", PlainFrame() + PlainFrame() + PlainFrame(), 0, {m, {0, m, 2 * m}, m}},
        {"padded", three, 0, {m + 100, {0, m + 100, 2 * (m + 100)}, m + 100}},
        {"padded and cut", three.substr(0, three.size() - 150), 0, {m + 100, {0, m + 100, 2 * (m + 100)}, m - 50}},
        {"cut", (PlainFrame() + PlainFrame()).substr(0, m + 7), 0, {m + 7, {0}, m + 7}},  // a frame and some padding
        {"cut in the middle", (PlainFrame(5000) + PlainFrame()).substr(0, m + 5100), 0, {m, {0, m, 2 * m}, 5100 - m}},
        {"as told", three, static_cast<u32>(m + 50), {m + 50, {0, m + 50, 2 * m + 100, 3 * m + 150}, 150}},
    };
    for (const auto& c : cases) EXPECT_EQ(Find(gige, c.bytes, c.given), c.found) << c.what;
    // Where nothing in the frame tells it from another, the pixels alone give the size.
    EXPECT_EQ(Find("K410 YUV (UYVY)", std::string(700, 'v')), (SFound{256, {0, 256, 512}, 188}));
}

TEST(DumpLayout, FollowsTheLengthsOfAStreamOverPaddingAndDamage) {
    const std::string a = StreamFrame(50);
    const std::string b = StreamFrame(7000);
    const std::string c = StreamFrame(3);
    const char* stream = "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}";
    const u64 ab = a.size() + b.size();
    EXPECT_EQ(Find(stream, a + b + c), (SFound{0, {0, a.size(), ab}, c.size()}));
    EXPECT_EQ(Find(stream, a + std::string(64, '\0') + b + std::string(20, '\0')),
              (SFound{0, {0, a.size() + 64}, b.size()}));

    std::string damaged = b;
    damaged[1] = '\x7F';  // a length far beyond the file
    EXPECT_EQ(Find(stream, a + damaged + c), (SFound{0, {0, a.size(), ab}, c.size()}));
    EXPECT_EQ(Find(stream, a + b.substr(0, 1000)), (SFound{0, {0, a.size()}, 1000}));
    EXPECT_EQ(Find(stream, "rubbish"), (SFound{0, {0}, 7}));
}

TEST(DumpLayout, RefusesWhatHoldsNoFrame) {
    for (const std::string& bytes :
         {std::string(), std::string(100, 'x'), std::string(5000, 'x'), PlainFrame().substr(0, 300)}) {
        EXPECT_EQ(test::ExitOf([&] { Find("K410 IR (GigE)", bytes); }), ExitBadData) << bytes.size();
    }
}

}  // namespace
}  // namespace ovix::app
