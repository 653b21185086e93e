#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "support/frame_reader.h"
#include "support/k410_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight, kTail = 2 * kPixels;

bool Check(const Bytes& frame, GUID type, SFrameFault* fault = nullptr) {
    return SFrameReader(L"K410", type, kWidth, kHeight).Check(frame, fault);
}
bool Says(const CString& text, const wchar_t* part) { return std::wcsstr(text, part) != nullptr; }

TEST(K410Check, FaultsOfTheContainer) {
    // Offsets from the container's start.
    const std::tuple<const char*, SK410Container, u64, const wchar_t*, const wchar_t*> cases[] = {
        {"signature", {.signature = 0x014D4B4D}, 0, L"0x004D4B4D", L"0x014D4B4D"},
        {"first entry", {.firstEntry = 33}, 64, L"32 (the camera record", L"33"},
        {"second entry", {.secondEntry = 0x101}, 96, L"1 (the pixels", L"257"},
        {"record offset", {.recordOffset = 129}, 129, L"the camera record (2428 bytes)", L"the end"},
        {"wrapping offset", {.recordOffset = 0xFFFFFFF0}, 0xFFFFFFF0, L"the camera record", L"the end"},
        {"record size", {.recordOffset = 2548, .recordSize = 9}, 2548, L"(9 bytes)", L"the end"}};
    for (const auto& [name, container, offset, expected, found] : cases) {
        const Bytes stream = EncodeJpegLs(Ramp(kPixels, 14), kWidth, kHeight);
        const std::tuple<Bytes, GUID, u64> frames[] = {
            {PlainFrame(Ramp(kPixels), container), kK410FNM0, kTail},
            {DigitalFrame(Ramp(kPixels), {}, container), kK410GigE, kTail + 32},
            {CompressedFrame(stream, container), kK410MJLS, 4 + stream.size()}};
        for (const auto& [frame, type, start] : frames) {
            SCOPED_TRACE(name);
            SFrameFault fault;
            EXPECT_FALSE(Check(frame, type, &fault));
            // Without the signature nobody knows that there is a digital header.
            const bool unknownForm = offset == 0 && type == kK410GigE;
            EXPECT_EQ(fault.offset, unknownForm ? kTail : start + offset);
            EXPECT_TRUE(Says(fault.expected, expected)) << fault.expected.GetUTF8();
            EXPECT_TRUE(unknownForm || Says(fault.found, found)) << fault.found.GetUTF8();
        }
    }
}

TEST(K410Check, OnlyOneKindOfJpegLsStreamPasses) {
    const std::vector<u16> pixels = Ramp(kPixels, 14);
    const auto refused = [&](const Bytes& stream, const wchar_t* expected, const char* name) {
        SCOPED_TRACE(name);
        SFrameFault fault;
        EXPECT_FALSE(Check(CompressedFrame(stream, {}), kK410MJLS, &fault));
        EXPECT_TRUE(Says(fault.expected, expected)) << fault.expected.GetUTF8();
        return fault.offset;
    };
    // Streams that the codec itself would take.
    EXPECT_EQ(refused(EncodeJpegLs(pixels, kHeight, kWidth), L"a picture of 6 x 4", "another shape"), 4u + 7u);
    refused(EncodeJpegLs(pixels, kWidth, kHeight, {.nearLossless = 1}), L"default", "near-lossless");
    refused(EncodeJpegLs(pixels, kWidth, kHeight, {.parameters = {16383, 20, 70, 280, 64}}), L"default", "thresholds");
    refused(EncodeJpegLs(Ramp(kPixels, 8), kWidth, kHeight, {.bits = 10, .parameters = {1023, 5, 18, 72, 32}}),
            L"default", "reset");

    // Segments as a hand writes them.
    const Bytes start{0xFF, 0xD8}, scan{0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 0, 0, 0xFF, 0xD9};
    const auto header = [](u8 bits, u8 components = 1, u8 sampling = 0x11) {
        return Bytes{0xFF, 0xF7, 0, 11, bits, 0, 4, 0, 6, components, 1, sampling, 0};
    };
    const Bytes comment{0xFF, 0xFE, 0, 4, 'h', 'i'}, camera{0xFF, 0xE1, 0, 2}, restart{0xFF, 0xDD, 0, 4, 0, 2};
    const Bytes zeros{0xFF, 0xF8, 0, 13, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const Bytes nineBits{0xFF, 0xF8, 0, 13, 1, 0x01, 0xFF, 0, 4, 0, 11, 0, 38, 0, 64};
    for (const Bytes& good : {Join({start, header(16), scan}), Join({start, comment, camera, header(9), restart, scan}),
                              Join({start, header(14), zeros, scan}), Join({start, nineBits, header(9), scan}),
                              Join({start, {0xFF, 0xFF}, header(12), scan})}) {
        EXPECT_TRUE(Check(CompressedFrame(good, {}), kK410MJLS));
        for (i64 size = 0; size < std::ssize(good); ++size)
            EXPECT_FALSE(Check(CompressedFrame({good.begin(), good.begin() + size}, {}), kK410MJLS)) << size;
    }
    const auto changedScan = [&](std::size_t at, u8 value) {
        Bytes changed = Join({start, header(14), scan});
        Patch(changed, 15 + at, value, 1);
        return changed;
    };
    refused(Join({start, header(8), scan}), L"9 to 16 bits", "8 bits");
    refused(Join({start, header(17), scan}), L"9 to 16 bits", "17 bits");
    refused(Join({start, header(12, 3), scan}), L"one component", "three components");
    refused(Join({start, header(12, 1, 0x22), scan}), L"subsampling", "subsampled");
    refused(Join({start, header(12), header(12), scan}), L"one frame header", "two frame headers");
    refused(Join({start, scan}), L"a JPEG-LS frame header", "no frame header");
    refused(Join({start, header(12), nineBits, scan}), L"default coding parameters", "thresholds of another depth");
    refused(Join({start, zeros, zeros, header(12), scan}), L"once", "parameters twice");
    refused(Join({start, {0xFF, 0xF8, 0, 5, 4, 0, 0}, header(12), scan}), L"coding parameters (1)", "larger sizes");
    refused(Join({start, {0xFF, 0xE8, 0, 7, 'm', 'r', 'f', 'x', 1}, header(12), scan}), L"one component", "colour");
    refused(Join({start, {0xFF, 0xC0, 0, 2}, header(12), scan}), L"lossless", "another JPEG");
    refused(Join({start, {0xFF, 0xFE, 0, 1}, header(12), scan}), L"2 bytes or more", "a segment of 1 byte");
    refused(Join({{0xFF, 0xD9}, header(12), scan}), L"the start", "no start of image");
    refused(Join({{0x4D, 0x4B}, header(12), scan}), L"a JPEG-LS marker", "no marker");
    refused(changedScan(4, 2), L"one component", "two in the scan");
    refused(changedScan(6, 1), L"mapping table", "mapping table");
    refused(changedScan(7, 2), L"lossless", "near in the scan");
    refused(changedScan(8, 1), L"interleaving", "interleaved");
    for (const u8 bits : std::initializer_list<u8>{1, 2, 0x10, 0x80})
        EXPECT_EQ(refused(changedScan(9, bits), L"no point transform", "point transform"), 4 + 2 + 13 + 9u);
    // The end mark is the last of the stream.
    Bytes cut = EncodeJpegLs(pixels, kWidth, kHeight);
    cut.pop_back();
    EXPECT_EQ(refused(cut, L"the end mark", "half an end mark"), 4 + cut.size() - 2);
    refused(Join({start, header(14), scan, {0}}), L"the end mark", "a byte behind the end mark");
}

}  // namespace
}  // namespace ovix::reduce
