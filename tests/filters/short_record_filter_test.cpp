/// MV310 and Plover.

#include <gtest/gtest.h>

#include <algorithm>

#include "core/pixel_types.h"
#include "reduce/filters/camera_record.h"
#include "support/frame_reader.h"
#include "support/k410_frames.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight, kImage = 2 * kPixels;

struct SFamily {
    const wchar_t* name;
    GUID infrared;
    std::vector<GUID> videos;
};
const SFamily kFamilies[] = {{L"MV310", kMV310, {kMV310Screen, kMV310YUV}}, {L"Plover", kPlover, {kPloverYUV}}};

SFrameReader Reader(const SFamily& family, u16 width = kWidth, u16 height = kHeight) {
    return {family.name, family.infrared, width, height};
}

TEST(ShortRecordFilter, RecordIsTurnedInTheFrameOnceAndKept) {
    for (const SFamily& family : kFamilies) {
        for (const bool swapped : {false, true}) {
            SCOPED_TRACE(testing::Message() << CString(family.name).GetUTF8() << swapped);
            SFrameReader reader = Reader(family);
            Bytes expected = ShortRecord({.width = 77, .invalidFrame = 1});
            using Words = std::vector<std::pair<u32, u32>>;  // that are put there
            for (const auto& [at, value] :
                 family.infrared == kMV310 ? Words{{2, 6}, {4, 4}, {12, 5}, {16, 3}} : Words{{22, 0}})
                Patch(expected, at, value, 2);
            const std::vector<u16> pixels = Ramp(kPixels);
            const SK410Record camera{.swapped = swapped, .width = 77, .invalidFrame = 1};
            Bytes frame = Join({ShortRecordFrame(pixels, camera), Bytes(2000, 0xEE)});
            std::fill_n(reader.objects.Get<CCurlewCameraInfoReduceObject>(-1, true)->record, 2428, u8{0x55});
            for (int parse = 0; parse < 2; ++parse) {
                ASSERT_TRUE(reader.Parse(frame));
                frame = reader.parsed;
                EXPECT_EQ(reader.pixels, pixels);
                EXPECT_EQ(frame, Join({PixelBytes(pixels), expected, Bytes(2000, 0xEE)}));
                const auto kept = reader.Camera();
                EXPECT_TRUE(kept->valid && !kept->recordPresent && !kept->digitalHeaderPresent);
                EXPECT_EQ(Bytes(kept->record, kept->record + 2428), Join({expected, Bytes(1280)}));
                const auto p = reader.objects.GetObjectParameters(false);
                EXPECT_EQ(
                    Text(reader.Info()->frameFilled, reader.Info()->time.GetTimestamp(), p->fromSource, p->emissivity,
                         reader.Cal()->valid, reader.Cal()->offset, reader.Cal()->imgMax, reader.Cal()->radFitLowTemp),
                    Text(family.infrared == kPlover, SK410Record::kTime, 1, 32.25f, 1, 77601, 78601 & 0xFFFF, 148.25f));
            }
        }
    }
}

TEST(ShortRecordFilter, NumbersAndTimes) {
    SFrameReader mv310 = Reader(kFamilies[0]), plover = Reader(kFamilies[1]);
    // What the two operations count, and the time: 0 for that of now.
    const auto scan = [](SFrameReader& reader, const Bytes& frame, GUID type) {
        const CDateTime before;
        reader.type = type;
        const auto light = reader.Light(frame);
        const i64 time = light.timeOfAll.GetTimestamp();
        EXPECT_TRUE(light.hasCounter && light.hasTime && light.hasAll && light.presetOfAll == 0);
        EXPECT_TRUE(light.time == light.timeOfAll || light.time.GetTimestamp() >= before.GetTimestamp());
        return Text(light.counter, light.counterOfAll, time >= before.GetTimestamp() ? 0 : time);
    };
    constexpr i64 kTime = SK410Record::kTime;
    const Bytes sent = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
    const Bytes turned = ShortRecordFrame(Ramp(kPixels), {}), video(2 * kPixels);

    // One number for all frames of an MV310, whatever the record says.
    const GUID order[] = {kMV310, kMV310YUV, kMV310, kMV310Screen};
    for (u64 n = 0; n < 4; ++n) {
        const bool infrared = order[n] == kMV310;
        EXPECT_EQ(scan(mv310, infrared ? sent : video, order[n]), Text(n, n, infrared ? kTime : 0));
        ASSERT_TRUE(mv310.ParseMetadata(infrared ? sent : video) && mv310.preset == 0);
        EXPECT_EQ(mv310.Info()->frameNumber, n);
    }
    mv310.type = kMV310YUV;
    for (u32 n = 4; n < 65536; ++n) mv310.ParseMetadata(video);
    EXPECT_EQ(mv310.Info()->frameNumber, 65535u);
    EXPECT_EQ(scan(mv310, sent, kMV310), Text(0, 0, kTime));

    // A Plover's record has the number, which one operation takes for big-endian in any case. The own one counts video
    // frames alone, and another operation does not know it.
    EXPECT_EQ(scan(plover, sent, kPlover), Text(0x1234, 0x1234, kTime));
    EXPECT_EQ(scan(plover, turned, kPlover), Text(0x3412, 0x1234, kTime));
    ASSERT_TRUE(plover.ParseMetadata(turned));
    EXPECT_EQ(plover.Info()->frameNumber, 0x1234u);
    for (u64 n = 0; n < 2; ++n) {
        EXPECT_EQ(scan(plover, video, kPloverYUV), Text(n, 0, 0));
        ASSERT_TRUE(plover.ParseMetadata(video));
        EXPECT_EQ(plover.Info()->frameNumber, n);
    }
}

TEST(ShortRecordFilter, VideoAndRefusals) {
    for (const SFamily& family : kFamilies) {
        for (const GUID& type : family.videos) {
            SFrameReader reader = Reader(family);
            ASSERT_TRUE(reader.Parse(ShortRecordFrame(Ramp(kPixels), {})));
            // U, Y0, V, Y1: red of the studio range, then black with the same colour. The third pixel has no partner.
            Bytes rgb(9, 77);
            reader.type = type, reader.width = 3, reader.height = 1;
            ASSERT_TRUE(reader.Parse({90, 82, 240, 16, 1, 2}, STypedData{rgb.data(), Opaque}));
            EXPECT_EQ(rgb, (Bytes{255, 1, 0, 179, 0, 0, 77, 77, 77}));
            EXPECT_TRUE(reader.Info()->frameFilled && !reader.Cal()->valid && !reader.Camera()->valid);
        }
        const std::pair<GUID, EDataType> refused[] = {
            {family.infrared, Opaque}, {family.infrared, Flt32}, {family.videos[0], UInt16}, {rootIRType, UInt16}};
        for (const auto& [type, element] : refused) {
            SFrameReader reader = Reader(family);
            reader.type = type;
            const Bytes sent = ShortRecordFrame(Ramp(kPixels), {.swapped = true});
            Bytes dest(3 * kPixels, 7);
            EXPECT_FALSE(reader.Parse(sent, STypedData{dest.data(), element}));
            EXPECT_EQ(reader.objects.size(), 4u);
            EXPECT_TRUE(reader.parsed == sent && dest == Bytes(3 * kPixels, 7));
        }
    }
}

TEST(ShortRecordFilter, PacketsAreSpacedOver33Milliseconds) {
    const struct {
        const char* name;
        GUID type;
        u16 count, index;
        u32 missing;     ///< bytes at the end of the source
        u32 tail, dest;  ///< bytes behind the images, and room behind the stored one
        u32 later = 0;   ///< milliseconds
        bool stored = true;
    } cases[] = {{"third of three", kMV310, 3, 2, 0, 1148, 1148, 22},
                 {"third of four", kMV310, 4, 2, 0, 1148, 1200, 16},
                 {"more images than milliseconds", kMV310, 40, 39, 0, 1148, 1148},
                 {"whatever the type", kMV310YUV, 2, 1, 0, 1148, 1148, 16},
                 {"video without a record", kMV310YUV, 2, 1, 0, 0, 0},
                 {"record that ends in the time", kMV310, 2, 1, 0, 907, 1148, 0, false},
                 {"no such image", kMV310, 2, 2, 0, 1148, 1148, 0, false},
                 {"no room", kMV310, 2, 1, 0, 1148, 1147, 0, false},
                 {"less than three images", kMV310YUV, 3, 0, 1, 0, 0, 0, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes record = ShortRecord({.swapped = true});  // 250 milliseconds
        record.resize(c.tail);
        Bytes source = Join({PixelBytes(Ramp(c.count * kPixels)), record}), expected;
        source.resize(source.size() - c.missing);
        if (c.stored) {
            const auto image = source.begin() + c.index * kImage;
            expected = Join({{image, image + kImage}, record, Bytes(c.dest - c.tail, 0xCC)});
            if (c.tail) Patch(expected, kImage + 904, 250 + c.later, 4, true);
        }
        SFrameReader reader = Reader(kFamilies[0]);
        reader.type = c.type;
        EXPECT_EQ(reader.Store(source, c.count, c.index, kImage + c.dest), expected);
    }
}

/// Fields of the first 1148 bytes that have a byte order, one behind the other.
struct SFields {
    u32 offset, count, width;
};
constexpr SFields kDescribed[] = {{0, 14, 2},  {776, 2, 4},  {28, 9, 4},  {784, 4, 2},  {80, 1, 4},  {792, 2, 4},
                                  {88, 23, 4}, {824, 2, 4},  {180, 5, 2}, {832, 1, 2},  {364, 1, 4}, {872, 2, 4},
                                  {432, 2, 2}, {880, 3, 2},  {436, 7, 4}, {900, 2, 4},  {464, 2, 2}, {908, 1, 2},
                                  {488, 1, 4}, {912, 8, 4},  {556, 2, 2}, {960, 3, 2},  {560, 7, 4}, {968, 1, 4},
                                  {588, 2, 2}, {972, 6, 2},  {612, 1, 4}, {1100, 2, 2}, {680, 2, 2}, {1104, 2, 4},
                                  {684, 7, 4}, {1112, 2, 2}, {712, 2, 2}, {1116, 1, 4}, {736, 2, 4}, {1120, 6, 2}};

/// For each byte of the record, the place that it comes from.
std::vector<u32> ExpectedOrigins(bool whole) {
    std::vector<u32> origin(camera_record::kSize);
    for (u32 i = 0; i < origin.size(); ++i) origin[i] = i;
    const auto turn = [&](u32 offset, u32 width) {
        for (u32 i = 0; i < width; ++i) origin[offset + i] = offset + width - 1 - i;
    };
    for (const SFields& fields : kDescribed)
        for (u32 i = 0; i < fields.count; ++i) turn(fields.offset + i * fields.width, fields.width);
    for (u32 row = 0; whole && row < 20; ++row) {
        for (const u32 field : {0u, 20u, 24u}) turn(1148 + 28 * row + field, 4);
        turn(1708 + 20 * row, 4);
    }
    return origin;
}

TEST(CameraRecord, SwapTurnsEveryFieldAndNothingElse) {
    std::vector<u8> original(camera_record::kSize);
    for (u32 i = 0; i < original.size(); ++i) original[i] = static_cast<u8>(i * 37 + i / 256);
    original[0] = 0;
    original[1] = 2;
    for (const bool whole : {false, true}) {
        SCOPED_TRACE(whole);
        std::vector<u8> record = original;
        const auto swap = whole ? camera_record::Swap : camera_record::SwapShort;
        if (!whole) record.resize(camera_record::kShortSize);  // nothing behind is touched
        EXPECT_TRUE(camera_record::IsSwapped(record.data()));
        swap(record.data());
        EXPECT_FALSE(camera_record::IsSwapped(record.data()));
        const std::vector<u32> origin = ExpectedOrigins(whole);
        for (u32 i = 0; i < record.size(); ++i) ASSERT_EQ(record[i], original[origin[i]]) << i;
        swap(record.data());
        EXPECT_TRUE(std::equal(record.begin(), record.end(), original.begin()));
    }
}

}  // namespace
}  // namespace ovix::reduce
