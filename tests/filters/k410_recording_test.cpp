#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "support/frame_reader.h"
#include "support/k410_frames.h"

/// What a recorder asks of the decoder: triggers, and single frames out of packets.
namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight;
constexpr u32 kImage = 2 * kPixels;

SFrameReader Reader(GUID type) { return {L"K410", type, kWidth, kHeight}; }

TEST(K410Recording, DigitalTriggers) {
    const struct {
        SK410DigitalHeader header;
        u8 field;
        bool triggered;
    } cases[] = {{{.mark = 3, .in1 = 0, .in2 = 1}, 0, false},
                 {{.in1 = 1}, 0, true},
                 {{.in1 = 1}, 1, false},
                 {{.in2 = 0x80}, 1, true},
                 {{.mark = 1}, 2, true},
                 {{.mark = 2}, 2, true},
                 {{.mark = 0xFC}, 2, false},
                 {{.mark = 3, .in1 = 1, .in2 = 1}, 3, false}};
    for (const auto& c : cases) {
        const Bytes frame = DigitalFrame(Ramp(kPixels), c.header, {});
        for (const GUID& type : {kK410F7M0, kK410FNM0, kK410GigE}) {
            EXPECT_EQ(Reader(type).Trigger(frame, 1, c.field), c.triggered - 1) << &c - cases;
        }
        for (const GUID& type : {kK410GigEFlipped, kK410MJLS, kK410YUY2, rootIRType}) {
            EXPECT_EQ(Reader(type).Trigger(frame, 1, c.field), std::nullopt);
        }
    }
    EXPECT_EQ(Reader(kK410GigE).Trigger(Bytes(3000), 1, 2), -1);  // neither form
}

TEST(K410Recording, MarkCounterTriggersWhenItRises) {
    const auto frame = [](u32 mark, bool swapped) {
        return PlainFrame(Ramp(kPixels), {.record = {.swapped = swapped, .mark = mark}});
    };
    const struct {
        u32 mark;
        u8 field;
        bool triggered;
    } steps[] = {{7, 2, false}, {7, 2, false},         {8, 2, true},  {9, 1, false},
                 {9, 2, false}, {0xFFFFFFFF, 2, true}, {0, 2, false}, {1, 2, true}};
    for (const bool swapped : {false, true}) {
        const SFrameReader reader = Reader(kK410FNM0);
        for (const auto& step : steps) {
            EXPECT_EQ(reader.Trigger(frame(step.mark, swapped), 1, step.field), step.triggered - 1);
        }
    }
    const Bytes broken = PlainFrame(Ramp(kPixels), {.secondEntry = 2, .record = {.mark = 100}});
    const SFrameReader reader = Reader(kK410F7M0);
    EXPECT_EQ(reader.Trigger(frame(1, false), 1, 2), -1);
    EXPECT_EQ(reader.Trigger(broken, 1, 2), std::nullopt);
    EXPECT_EQ(reader.Trigger(frame(2, false), 1, 2), 0);  // the broken one was not remembered
}

TEST(K410Recording, PacketsAreCutIntoFrames) {
    const std::vector<u16> images = Ramp(3 * kPixels);
    const SK410DigitalHeader header{.counter = 0x9234};
    const Bytes digital = header.Make(), container = SK410Container().Make();
    const struct {
        const char* name;
        GUID type;
        u16 count, index;
        Bytes tail;
        u32 counter;  ///< expected in the header, when there is one
        bool stored;
    } cases[] = {
        {"two of two", kK410GigE, 2, 1, Join({digital, container}), 0x2469, true},
        {"one of two", kK410F7M0, 2, 0, Join({digital, container}), 0x2468, true},
        {"three keep theirs", kK410GigE, 3, 1, Join({digital, container}), 0x9234, true},
        {"other types keep theirs", kK410FNM0, 2, 1, Join({digital, container}), 0x9234, true},
        {"plain", kK410GigE, 3, 2, container, 0, true},
        {"any tail", kK410MJLS, 2, 1, Bytes(20), 0, true},  // these types are not looked into
        {"any tail", kK410FNM0, 3, 2, Bytes(40), 0, true},
        {"neither form", kK410GigEFlipped, 3, 2, Bytes(40), 0, false},
        {"neither form", kK410GigE, 3, 2, Bytes(40), 0, false},
        {"no tail", kK410F7M0, 3, 2, {}, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<u16> packet(images.begin(), images.begin() + c.count * kPixels);
        const Bytes source = Join({PixelBytes(packet), c.tail});
        Bytes expected = PixelBytes({packet.begin() + c.index * kPixels, packet.begin() + (c.index + 1) * kPixels});
        expected = Join({expected, c.tail, Bytes(5, 0xEE)});
        if (c.counter) Patch(expected, kImage + 12, c.counter, 2, true);
        Bytes dest(expected.size(), 0xEE);
        EXPECT_EQ(Reader(c.type).filter->StoreFrame(source.data(), SFrameReader::Size(source), c.type, kWidth, kHeight,
                                                    c.count, c.index, dest.data(), SFrameReader::Size(dest)),
                  c.stored);
        EXPECT_EQ(dest, expected);
    }
}

TEST(K410Recording, StoreFrameKeepsItsBounds) {
    const Bytes tail = SK410Container().Make();
    const Bytes packet = Join({PixelBytes(Ramp(2 * kPixels)), tail});
    const std::size_t whole = kImage + tail.size();
    const struct {
        const char* name;
        std::size_t sourceSize, destSize;
        u16 count, index;
    } cases[] = {
        {"destination too small", packet.size(), whole - 1, 2, 1},
        {"index beyond the packet", packet.size(), whole, 2, 2},
        {"source too small", 2 * kImage - 1, whole, 2, 0},
        {"more images than there are", packet.size(), packet.size(), 60000, 0},
    };
    for (const auto& c : cases) {
        const Bytes source(packet.begin(), packet.begin() + static_cast<long>(c.sourceSize));
        EXPECT_TRUE(Reader(kK410GigE).Store(source, c.count, c.index, c.destSize).empty()) << c.name;
    }
    // Products beyond 32 bits: 65535 images of 65535 x 65535 are not in 64 bytes.
    SFrameReader large = Reader(kK410GigE);
    large.width = large.height = 65535;
    EXPECT_TRUE(large.Store(Bytes(64), 65535, 65534, 64).empty());
    // A single frame is copied as far as it goes.
    for (const u32 count : {0u, 1u}) {
        EXPECT_EQ(Reader(kK410GigE).Store(packet, count, 0, 10), Bytes(packet.begin(), packet.begin() + 10));
    }
}

}  // namespace
}  // namespace ovix::reduce
