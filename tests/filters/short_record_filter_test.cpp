#include <gtest/gtest.h>

#include <algorithm>

#include "core/pixel_types.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "support/short_record_frames.h"

/// MV310 and Plover.
namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight, kImage = 2 * kPixels;
// 1,700,000,000 seconds and 250 milliseconds after 1970, as ticks since 1601.
constexpr i64 kRecordTime = 133'444'736'002'500'000;

struct SFamily {
    const wchar_t* name;
    GUID infrared;
    std::vector<GUID> videos;
};
const SFamily kFamilies[] = {{L"MV310", kMV310, {kMV310Screen, kMV310YUV}}, {L"Plover", kPlover, {kPloverYUV}}};

/// A decoder with the objects of its source.
struct SStream {
    explicit SStream(const wchar_t* name) : filter(filterFactory()->Create(name)) {}

    template <class Operation, class... Results>
    bool Call(Operation operation, Bytes& frame, GUID type, Results&... results) {
        return (filter.ptr()->*operation)(frame.data(), type, width, height, static_cast<u32>(frame.size()),
                                          results...);
    }
    bool Parse(Bytes& frame, GUID type, STypedData dest = {nullptr, NoPixels}) {
        u8 preset = 99;
        const bool done = Call(&IFilter::ParseFrame, frame, type, dest, objects, preset);
        EXPECT_EQ(preset, 0);
        return done;
    }
    /// What `ParseFrameCounter` and `ParseBasicInfo` count, and the time: 0 for that of now.
    struct SScan {
        u64 counter, basicCounter;
        i64 time;
        bool operator==(const SScan&) const = default;
    };
    SScan Scan(const Bytes& sent, GUID type) {
        const CDateTime before;
        u8 preset = 99;
        SScan scan{99, 99, 0};
        CDateTime time, basicTime;
        Bytes first = sent, second = sent, third = sent;
        EXPECT_TRUE(Call(&IFilter::ParseFrameCounter, first, type, scan.counter));
        EXPECT_TRUE(Call(&IFilter::ParseTime, second, type, time));
        EXPECT_TRUE(Call(&IFilter::ParseBasicInfo, third, type, preset, scan.basicCounter, basicTime));
        EXPECT_TRUE(preset == 0 && (time == basicTime || time.GetTimestamp() >= before.GetTimestamp()));
        if (basicTime.GetTimestamp() < before.GetTimestamp()) scan.time = basicTime.GetTimestamp();
        return scan;
    }
    auto Info() { return objects.Get<CFrameInfoReduceObject>(0, false); }
    auto Camera() { return objects.Get<CCurlewCameraInfoReduceObject>(-1, false); }
    auto Cal() { return objects.Get<CCurlewFactoryCalReduceObject>(0, false); }

    TSharedPtr<IFilter> filter;
    CReduceObjectArray objects;
    u16 width = kWidth, height = kHeight;
};

/// A frame of 2 x 1 pixels as an MV310 sends it: the record is big-endian, the pixels are not.
TEST(ShortRecordFilter, FrameByBytes) {
    Bytes frame = Join({
        {0x34, 0x12, 0x78, 0x56},  // 0: pixels 0x1234, 0x5678
        {0, 2},                    // 4: record; byte order
        {0, 9, 0, 9},              // 6: a width and a height that give way
        Bytes(26),                 // 10: unread
        {0x3F, 0x40, 0, 0},        // 36: emissivity 0.75
        Bytes(4),                  // 40: distance 0
        {0x43, 0x96, 0, 0},        // 44: reflected 300 K
        Bytes(44),                 // 48: zeros
        {0x44, 0xB2, 0x80, 0},     // 92: Planck R 1428 at 88 of the record
        Bytes(684),                // 96: zeros
        {0, 0, 0x13, 0x88},        // 780: offset 5000
        {0x3F, 0x00, 0, 0},        // 784: gain 0.5
        {0, 16, 0x3F, 0xFF},       // 788: counts from 16 to 16383
        Bytes(112),                // 792: zeros
        {0x65, 0x53, 0xF1, 0x00},  // 904: 1,700,000,000 seconds
        {0, 0, 0, 250},            // 908: 250 milliseconds
        Bytes(222),                // 912: zeros
        {0, 1},                    // 1134: not a valid frame
        Bytes(16),                 // 1136: to the end of the short record
    });
    ASSERT_EQ(frame.size(), 4u + 1148);
    ASSERT_TRUE(CheckFrame(L"MV310", frame.data(), kMV310, 2, 1, 4 + 1148));
    SStream stream(L"MV310");
    stream.width = 2;
    stream.height = 1;
    u16 pixels[3] = {0, 0, 0xDEAD};
    ASSERT_TRUE(stream.Parse(frame, kMV310, {pixels, UInt16}));
    EXPECT_TRUE(pixels[0] == 0x1234 && pixels[1] == 0x5678 && pixels[2] == 0xDEAD);
    const auto p = stream.objects.GetObjectParameters(false);
    EXPECT_TRUE(p->fromSource && p->parameterMask == 255 && p->emissivity == 0.75f && p->reflectedTemp == 300.0f);
    const auto c = stream.Cal();
    EXPECT_TRUE(c->valid && c->planckR == 1428.0f && c->offset == 5000 && c->gain == 0.5f);
    EXPECT_TRUE(c->imgMin == 16 && c->imgMax == 16383);
    EXPECT_FALSE(stream.Info()->frameFilled);
    EXPECT_EQ(stream.Info()->time.GetTimestamp(), kRecordTime);
    // What was turned around in the frame, and the geometry that was put there.
    EXPECT_EQ(Bytes(frame.begin() + 4, frame.begin() + 22),
              (Bytes{2, 0, 2, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Bytes(frame.begin() + 36, frame.begin() + 40), (Bytes{0, 0, 0x40, 0x3F}));
}

TEST(ShortRecordFilter, RecordIsTurnedInTheFrameOnceAndKept) {
    for (const SFamily& family : kFamilies) {
        for (const bool swapped : {false, true}) {
            SCOPED_TRACE(testing::Message() << CString(family.name).GetUTF8() << swapped);
            SStream stream(family.name);
            Bytes expected = ShortRecord({.width = 77, .invalidFrame = 1});
            if (family.infrared == kMV310) {
                const std::pair<u32, u32> geometry[] = {{2, 6}, {4, 4}, {12, 5}, {16, 3}};
                for (const auto& [at, value] : geometry) Patch(expected, at, value, 2);
            } else {
                Patch(expected, 22, 0, 2);
            }
            const std::vector<u16> pixels = Ramp(kPixels);
            const SK410Record camera{.swapped = swapped, .width = 77, .invalidFrame = 1};
            Bytes frame = Join({ShortRecordFrame(pixels, camera), Bytes(2000, 0xEE)});
            std::fill_n(stream.objects.Get<CCurlewCameraInfoReduceObject>(-1, true)->record, 2428, u8{0x55});
            for (int parse = 0; parse < 2; ++parse) {
                std::vector<u16> found(kPixels);
                ASSERT_TRUE(stream.Parse(frame, family.infrared, {found.data(), UInt16}));
                EXPECT_EQ(found, pixels);
                EXPECT_EQ(frame, Join({PixelBytes(pixels), expected, Bytes(2000, 0xEE)}));
                const auto kept = stream.Camera();
                EXPECT_TRUE(kept->valid && !kept->recordPresent && !kept->digitalHeaderPresent);
                EXPECT_EQ(Bytes(kept->record, kept->record + 2428), Join({expected, Bytes(1280)}));
                EXPECT_EQ(stream.Info()->frameFilled, family.infrared == kPlover);
                EXPECT_EQ(stream.Info()->time.GetTimestamp(), kRecordTime);
                EXPECT_EQ(stream.Cal()->radFitLowTemp, 148.25f);
            }
        }
    }
}

TEST(ShortRecordFilter, NumbersAndTimes) {
    using SScan = SStream::SScan;
    SStream mv310(L"MV310"), plover(L"Plover");
    const Bytes sent = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
    Bytes turned = ShortRecordFrame(Ramp(kPixels), {}), video(2 * kPixels);

    // One number for all frames of an MV310, whatever the record says.
    const GUID order[] = {kMV310, kMV310YUV, kMV310, kMV310Screen};
    for (u64 n = 0; n < 4; ++n) {
        Bytes frame = order[n] == kMV310 ? sent : video;
        EXPECT_EQ(mv310.Scan(frame, order[n]), (SScan{n, n, order[n] == kMV310 ? kRecordTime : 0}));
        ASSERT_TRUE(mv310.Parse(frame, order[n]));
        EXPECT_EQ(mv310.Info()->frameNumber, n);
    }
    for (u32 n = 4; n < 65536; ++n) mv310.Parse(video, kMV310YUV);
    EXPECT_EQ(mv310.Info()->frameNumber, 65535u);
    EXPECT_EQ(mv310.Scan(sent, kMV310).counter, 0u);

    // A Plover's record has the number, which one operation takes for big-endian in any case. The own one counts video
    // frames alone, and another operation does not know it.
    EXPECT_EQ(plover.Scan(sent, kPlover), (SScan{0x1234, 0x1234, kRecordTime}));
    EXPECT_EQ(plover.Scan(turned, kPlover), (SScan{0x3412, 0x1234, kRecordTime}));
    ASSERT_TRUE(plover.Parse(turned, kPlover));
    EXPECT_EQ(plover.Info()->frameNumber, 0x1234u);
    for (u64 n = 0; n < 2; ++n) {
        EXPECT_EQ(plover.Scan(video, kPloverYUV), (SScan{n, 0, 0}));
        ASSERT_TRUE(plover.Parse(video, kPloverYUV));
        EXPECT_EQ(plover.Info()->frameNumber, n);
    }
}

TEST(ShortRecordFilter, VideoAndRefusals) {
    for (const SFamily& family : kFamilies) {
        for (const GUID& type : family.videos) {
            SStream stream(family.name);
            Bytes infrared = ShortRecordFrame(Ramp(kPixels), {});
            ASSERT_TRUE(stream.Parse(infrared, family.infrared));
            // U, Y0, V, Y1: red of the studio range, then black with the same colour. The third pixel has no partner.
            Bytes frame{90, 82, 240, 16, 1, 2}, rgb(9, 77);
            stream.width = 3;
            stream.height = 1;
            ASSERT_TRUE(stream.Parse(frame, type, {rgb.data(), Opaque}));
            EXPECT_EQ(rgb, (Bytes{255, 1, 0, 179, 0, 0, 77, 77, 77}));
            EXPECT_TRUE(stream.Info()->frameFilled && !stream.Cal()->valid && !stream.Camera()->valid);
        }
        const std::pair<GUID, EDataType> refused[] = {
            {family.infrared, Opaque}, {family.infrared, Flt32}, {family.videos[0], UInt16}, {rootIRType, UInt16}};
        for (const auto& [type, element] : refused) {
            SStream stream(family.name);
            const Bytes sent = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
            Bytes frame = sent, dest(3 * kPixels, 7);
            EXPECT_FALSE(stream.Parse(frame, type, {dest.data(), element}));
            EXPECT_EQ(stream.objects.size(), 4u);
            EXPECT_TRUE(frame == sent && dest == Bytes(3 * kPixels, 7));
        }
    }
}

TEST(ShortRecordFilter, PacketsAreSpacedOver33Milliseconds) {
    const TSharedPtr<IFilter> filter = filterFactory()->Create(L"MV310");
    struct SCase {
        const char* name;
        GUID type;
        u16 count, index;
        u32 missing;     ///< bytes at the end of the source
        u32 tail, dest;  ///< bytes behind the images, and room behind the stored one
        u32 later;       ///< milliseconds
        bool stored;
    };
    const SCase cases[] = {
        {"third of three", kMV310, 3, 2, 0, 1148, 1148, 22, true},
        {"third of four", kMV310, 4, 2, 0, 1148, 1200, 16, true},
        {"more images than milliseconds", kMV310, 40, 39, 0, 1148, 1148, 0, true},
        {"whatever the type", kMV310YUV, 2, 1, 0, 1148, 1148, 16, true},
        {"video without a record", kMV310YUV, 2, 1, 0, 0, 0, 0, true},
        {"record that ends in the time", kMV310, 2, 1, 0, 907, 1148, 0, false},
        {"no such image", kMV310, 2, 2, 0, 1148, 1148, 0, false},
        {"no room", kMV310, 2, 1, 0, 1148, 1147, 0, false},
        {"less than three images", kMV310YUV, 3, 0, 1, 0, 0, 0, false},
    };
    for (const SCase& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes record = ShortRecord({.swapped = true});  // 250 milliseconds
        record.resize(c.tail);
        Bytes source = Join({PixelBytes(Ramp(c.count * kPixels)), record});
        source.resize(source.size() - c.missing);
        Bytes expected(kImage + c.dest, 0xEE), dest(kImage + c.dest, 0xEE);
        if (c.stored) {
            std::copy_n(source.begin() + c.index * kImage, kImage, expected.begin());
            std::copy(record.begin(), record.end(), expected.begin() + kImage);
            if (c.tail) Patch(expected, kImage + 904, 250 + c.later, 4, true);
        }
        EXPECT_EQ(filter->StoreFrame(source.data(), static_cast<u32>(source.size()), c.type, kWidth, kHeight, c.count,
                                     c.index, dest.data(), static_cast<u32>(dest.size())),
                  c.stored);
        EXPECT_EQ(dest, expected);
    }
}

}  // namespace
}  // namespace ovix::reduce
