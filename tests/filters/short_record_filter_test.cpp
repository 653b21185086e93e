#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <memory>

#include "core/pixel_types.h"
#include "reduce/convert/curlew_factory_cal_reduce_object.h"
#include "reduce/filters/curlew_camera_info_reduce_object.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "support/short_record_frames.h"

/// MV310 and Plover.
namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight;
constexpr u32 kImage = 2 * kPixels;
// 1,700,000,000 seconds and 250 milliseconds after 1970, as ticks since 1601.
constexpr i64 kRecordTime = 133'444'736'002'500'000;

struct SFamily {
    const wchar_t* name;
    GUID infrared;
    std::vector<GUID> videos;
};
const SFamily kFamilies[] = {{L"MV310", kMV310, {kMV310Screen, kMV310Yuv}}, {L"Plover", kPlover, {kPloverYuv}}};

/// A decoder with the objects of its source.
struct SStream {
    explicit SStream(const wchar_t* name) : filter(filterFactory()->Create(name)) {}

    bool Parse(Bytes& frame, GUID type, STypedData dest, u16 width = kWidth, u16 height = kHeight) {
        u8 preset = 99;
        const bool done = filter->ParseFrame(frame.data(), type, width, height, static_cast<u32>(frame.size()), dest,
                                             objects, preset);
        EXPECT_EQ(preset, 0);
        return done;
    }
    bool Parse(Bytes& frame, GUID type) { return Parse(frame, type, {nullptr, NoPixels}); }
    u64 Counter(Bytes frame, GUID type) {
        u64 counter = 99;
        EXPECT_TRUE(
            filter->ParseFrameCounter(frame.data(), type, kWidth, kHeight, static_cast<u32>(frame.size()), counter));
        return counter;
    }
    /// Counter and time; a time of now is 0.
    std::pair<u64, i64> Basics(Bytes frame, GUID type) {
        const CDateTime before;
        u8 preset = 99;
        u64 counter = 99;
        CDateTime time, sameTime;
        const u32 size = static_cast<u32>(frame.size());
        Bytes again = frame;
        EXPECT_TRUE(filter->ParseBasicInfo(frame.data(), type, kWidth, kHeight, size, preset, counter, time));
        EXPECT_TRUE(filter->ParseTime(again.data(), type, kWidth, kHeight, size, sameTime));
        EXPECT_EQ(preset, 0);
        if (time.GetTimestamp() >= before.GetTimestamp()) return {counter, 0};
        EXPECT_EQ(time, sameTime);
        return {counter, time.GetTimestamp()};
    }
    auto Info() { return objects.Get<CFrameInfoReduceObject>(0, false); }
    auto Camera() { return objects.Get<CCurlewCameraInfoReduceObject>(-1, false); }
    auto Cal() { return objects.Get<CCurlewFactoryCalReduceObject>(0, false); }

    TSharedPtr<IFilter> filter;
    CReduceObjectArray objects;
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
    SStream stream(L"MV310");
    u16 pixels[3] = {0, 0, 0xDEAD};
    ASSERT_TRUE(CheckFrame(L"MV310", frame.data(), kMV310, 2, 1, static_cast<u32>(frame.size())));
    ASSERT_TRUE(stream.Parse(frame, kMV310, {pixels, UInt16}, 2, 1));
    EXPECT_TRUE(pixels[0] == 0x1234 && pixels[1] == 0x5678 && pixels[2] == 0xDEAD);
    const auto p = stream.objects.GetObjectParameters(false);
    EXPECT_TRUE(p->fromSource && p->parameterMask == 255 && p->emissivity == 0.75f && p->reflectedTemp == 300.0f);
    const auto c = stream.Cal();
    EXPECT_TRUE(c->valid && c->planckR == 1428.0f && c->offset == 5000 && c->gain == 0.5f);
    EXPECT_TRUE(c->imgMin == 16 && c->imgMax == 16383);
    EXPECT_FALSE(stream.Info()->frameFilled);
    EXPECT_EQ(stream.Info()->time.GetTimestamp(), kRecordTime);
    // What was turned around in the frame, and the geometry that was put there.
    const Bytes start{2, 0, 2, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0};
    EXPECT_TRUE(std::equal(start.begin(), start.end(), frame.begin() + 4));
    EXPECT_EQ(Bytes(frame.begin() + 36, frame.begin() + 40), (Bytes{0, 0, 0x40, 0x3F}));
}

TEST(ShortRecordFilter, RecordIsTurnedInTheFrameOnceAndKept) {
    for (const SFamily& family : kFamilies) {
        for (const bool swapped : {false, true}) {
            SCOPED_TRACE(testing::Message() << CString(family.name).GetUTF8() << swapped);
            SStream stream(family.name);
            const std::vector<u16> pixels = Ramp(kPixels);
            const SK410Record camera{.swapped = swapped, .width = 77, .invalidFrame = 1};
            SK410Record native = camera;
            native.swapped = false;
            Bytes expected = ShortRecord(native);
            if (family.infrared == kMV310) {
                for (const auto& [at, value] : {std::pair{2, 6}, {4, 4}, {12, 5}, {16, 3}})
                    Patch(expected, static_cast<std::size_t>(at), static_cast<u64>(value), 2);
            } else {
                Patch(expected, 22, 0, 2);
            }
            Bytes frame = Join({ShortRecordFrame(pixels, camera), Bytes(2000, 0xEE)});
            for (int parse = 0; parse < 2; ++parse) {
                std::vector<u16> found(kPixels);
                ASSERT_TRUE(stream.Parse(frame, family.infrared, {found.data(), UInt16}));
                EXPECT_EQ(found, pixels);
                EXPECT_EQ(Bytes(frame.begin() + kImage, frame.begin() + kImage + 1148), expected);
                const auto kept = stream.Camera();
                EXPECT_TRUE(kept->valid && !kept->recordPresent && !kept->digitalHeaderPresent);
                EXPECT_TRUE(std::equal(expected.begin(), expected.end(), kept->record));
                EXPECT_EQ(std::count(kept->record + 1148, kept->record + 2428, 0), 1280);
                EXPECT_EQ(stream.Info()->frameFilled, family.infrared == kPlover);
                EXPECT_EQ(stream.Info()->time.GetTimestamp(), kRecordTime);
                EXPECT_EQ(stream.Cal()->radFitLowTemp, 148.25f);
                EXPECT_EQ(stream.Cal()->nonlinearOffset, 79601);
            }
            EXPECT_EQ(Bytes(frame.end() - 2000, frame.end()), Bytes(2000, 0xEE));
        }
    }
}

TEST(ShortRecordFilter, NumbersAndTimes) {
    SStream mv310(L"MV310"), plover(L"Plover");
    const SK410Record bigEndian{.swapped = true}, native;
    const Bytes sent = ShortRecordFrame(Ramp(kPixels), bigEndian), turned = ShortRecordFrame(Ramp(kPixels), native);
    Bytes video(2 * kPixels);
    const std::pair<u64, i64> ofVideo{0, 0};

    // One number for all frames of an MV310, whatever the record says.
    const GUID order[] = {kMV310, kMV310Yuv, kMV310, kMV310Screen};
    for (u64 n = 0; n < 4; ++n) {
        Bytes frame = order[n] == kMV310 ? sent : video;
        EXPECT_EQ(mv310.Counter(frame, order[n]), n);
        EXPECT_EQ(mv310.Basics(frame, order[n]), (std::pair<u64, i64>{n, order[n] == kMV310 ? kRecordTime : 0}));
        ASSERT_TRUE(mv310.Parse(frame, order[n]));
        EXPECT_EQ(mv310.Info()->frameNumber, n);
    }
    for (u32 n = 4; n < 65536; ++n) mv310.Parse(video, kMV310Yuv);
    EXPECT_EQ(mv310.Info()->frameNumber, 65535u);
    EXPECT_EQ(mv310.Counter(sent, kMV310), 0u);

    // A Plover's record has the number; the own one counts video frames alone.
    for (const Bytes& frame : {sent, turned}) {
        Bytes copy = frame;
        ASSERT_TRUE(plover.Parse(copy, kPlover));
        EXPECT_EQ(plover.Info()->frameNumber, 0x1234u);
        EXPECT_EQ(plover.Basics(frame, kPlover), (std::pair<u64, i64>{0x1234, kRecordTime}));
    }
    EXPECT_EQ(plover.Counter(sent, kPlover), 0x1234u);
    EXPECT_EQ(plover.Counter(turned, kPlover), 0x3412u);  // taken for big-endian all the same
    for (u64 n = 0; n < 2; ++n) {
        EXPECT_EQ(plover.Counter(video, kPloverYuv), n);
        EXPECT_EQ(plover.Basics(video, kPloverYuv), ofVideo);
        ASSERT_TRUE(plover.Parse(video, kPloverYuv));
        EXPECT_EQ(plover.Info()->frameNumber, n);
    }
}

TEST(ShortRecordFilter, VideoAndRefusals) {
    for (const SFamily& family : kFamilies) {
        for (const GUID& type : family.videos) {
            SStream stream(family.name);
            Bytes infrared = ShortRecordFrame(Ramp(kPixels), {});
            ASSERT_TRUE(stream.Parse(infrared, family.infrared));
            stream.Info()->extra.Add(L"left", L"over", L"", L"");
            // U, Y0, V, Y1: red of the studio range, then black with the same colour. The third pixel has no partner.
            Bytes frame{90, 82, 240, 16, 1, 2}, rgb(9, 77);
            ASSERT_TRUE(stream.Parse(frame, type, {rgb.data(), Opaque}, 3, 1));
            EXPECT_EQ(rgb, (Bytes{255, 1, 0, 179, 0, 0, 77, 77, 77}));
            EXPECT_FALSE(stream.Cal()->valid || stream.Camera()->valid);
            EXPECT_TRUE(stream.Info()->frameFilled && stream.Info()->extra.nValues() == 0);
            EXPECT_FALSE(stream.filter->HasPixels(type) || stream.filter->HasTime(type));
            EXPECT_FALSE(stream.filter->HasFrameCounter(type));
        }
        const struct {
            GUID type;
            EDataType dest;
        } refused[] = {
            {family.infrared, Opaque}, {family.infrared, Flt32}, {family.videos[0], UInt16}, {rootIRType, UInt16}};
        for (const auto& c : refused) {
            SStream stream(family.name);
            const Bytes sent = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
            Bytes frame = sent, dest(3 * kPixels, 7);
            EXPECT_FALSE(stream.Parse(frame, c.type, {dest.data(), c.dest}));
            EXPECT_EQ(stream.objects.size(), 4u);
            EXPECT_TRUE(frame == sent && dest == Bytes(3 * kPixels, 7));
        }
        const TSharedPtr<IFilter> filter = filterFactory()->CreateForPixelType(family.infrared);
        EXPECT_STREQ(filter->GetName(), family.name);
        EXPECT_TRUE(filter->HasPixels(family.infrared) && filter->HasTime(family.infrared));
        EXPECT_EQ(filter->HasFrameCounter(family.infrared), family.infrared == kPlover);
    }
    SPixelType facts;
    ASSERT_TRUE(GetPixelType(kMV310, facts));
    EXPECT_TRUE(facts.baseType == rootScreenType && facts.type == UInt16);  // counts, all the same
    ASSERT_TRUE(GetPixelType(kPloverYuv, facts));
    EXPECT_TRUE(facts.type == UInt16 && IsPixelBaseType(kPloverYuv, rootScreenType));
    ASSERT_TRUE(GetPixelType(kMV310Yuv, facts) && facts.type == Opaque);
}

TEST(ShortRecordFilter, PacketsAreSpacedOver33Milliseconds) {
    const TSharedPtr<IFilter> filter = filterFactory()->Create(L"MV310");
    struct SCase {
        const char* name;
        GUID type;
        u16 count, index;
        u32 tail, dest;  ///< bytes; `dest` behind the image
        u32 later;       ///< milliseconds
        bool stored;
    };
    const SCase cases[] = {
        {"third of three", kMV310, 3, 2, 1148, 1148, 22, true},
        {"first of three", kMV310, 3, 0, 1148, 1148, 0, true},
        {"third of four", kMV310, 4, 2, 1148, 1200, 16, true},
        {"more images than milliseconds", kMV310, 40, 39, 1148, 1148, 0, true},
        {"whatever the type", kMV310Yuv, 2, 1, 1148, 1148, 16, true},
        {"video without a record", kMV310Yuv, 2, 1, 0, 0, 0, true},
        {"record that ends in the time", kMV310, 2, 1, 907, 1148, 0, false},
        {"no such image", kMV310, 2, 2, 1148, 1148, 0, false},
        {"no room", kMV310, 2, 1, 1148, 1147, 0, false},
    };
    for (const SCase& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<u16> pixels = Ramp(c.count * kPixels);
        Bytes record = ShortRecord({.swapped = true});  // 250 milliseconds
        record.resize(c.tail);
        const Bytes source = Join({PixelBytes(pixels), record});
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
    Bytes source(3 * kImage - 1), dest(kImage, 0xEE);  // less than three images
    EXPECT_FALSE(filter->StoreFrame(source.data(), static_cast<u32>(source.size()), kMV310Yuv, kWidth, kHeight, 3, 0,
                                    dest.data(), kImage));
    EXPECT_EQ(dest, Bytes(kImage, 0xEE));
}

/// With the address sanitizer this also says that nothing is read or written behind a frame that passes.
TEST(ShortRecordFilter, CheckAsksForEveryByte) {
    for (const SFamily& family : kFamilies) {
        const Bytes whole = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
        for (std::size_t size = 0; size <= whole.size(); ++size) {
            const Bytes frame(whole.begin(), whole.begin() + static_cast<long>(size));
            SFrameFault fault;
            const bool good =
                CheckFrame(family.name, frame.data(), family.infrared, kWidth, kHeight, static_cast<u32>(size), &fault);
            EXPECT_EQ(good, size == whole.size());
            EXPECT_EQ(fault.offset, good || size < kImage ? 0u : kImage);
            EXPECT_EQ(CheckFrame(family.name, frame.data(), family.videos[0], kWidth, kHeight, static_cast<u32>(size)),
                      size >= 2 * kPixels);
        }
        SStream stream(family.name);
        const auto exact = std::make_unique<u8[]>(whole.size());
        std::copy(whole.begin(), whole.end(), exact.get());
        u8 preset = 0;
        const u32 size = static_cast<u32>(whole.size());
        EXPECT_TRUE(stream.filter->ParseReduceObjects(exact.get(), family.infrared, kWidth, kHeight, size,
                                                      stream.objects, preset));
        EXPECT_FALSE(CheckFrame(family.name, whole.data(), rootIRType, kWidth, kHeight, size));
        EXPECT_FALSE(CheckFrame(family.name, whole.data(), family.infrared, 65535, 65535, size));
    }
}

/// What is promised to leave the frame alone gets it in memory that cannot be written.
TEST(ShortRecordFilter, OnlyParsingWrites) {
    const Bytes sent = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
    const u32 size = static_cast<u32>(sent.size());
    void* frame = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(frame, MAP_FAILED);
    std::copy(sent.begin(), sent.end(), static_cast<u8*>(frame));
    ASSERT_EQ(::mprotect(frame, size, PROT_READ), 0);
    for (const SFamily& family : kFamilies) {
        TArray<SFrameField> fields;
        EXPECT_TRUE(CheckFrame(family.name, frame, family.infrared, kWidth, kHeight, size));
        EXPECT_TRUE(DescribeFrame(family.name, frame, family.infrared, kWidth, kHeight, size, fields));
        Bytes stored(size);
        EXPECT_TRUE(filterFactory()
                        ->Create(family.name)
                        ->StoreFrame(frame, size, family.infrared, kWidth, kHeight, 1, 0, stored.data(), size));
        EXPECT_EQ(stored, sent);
        SStream stream(family.name);
        EXPECT_TRUE(stream.Parse(stored, family.infrared));  // a copy is what the others want
        EXPECT_NE(stored, sent);
    }
    ::munmap(frame, size);
}

}  // namespace
}  // namespace ovix::reduce
