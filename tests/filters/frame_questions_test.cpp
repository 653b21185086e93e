#include "reduce/filters/frame_questions.h"

#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "support/dunlin_frames.h"
#include "support/frame_reader.h"
#include "support/header_line_frames.h"
#include "support/short_record_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight;
constexpr u32 kImage = 2 * kPixels;

/// Of a frame with a header line, which is 130 words long here.
constexpr char kLine[] = "- day counter preset";

struct SForm {
    const char* name;
    const wchar_t* filter;
    GUID type;
    Bytes frame;
    const char* evidence;        ///< mark, time, counter, preset, size
    const char* form = "3 2 0";  ///< element, bytes per pixel, unit, and what else there is
};

/// Every form of a frame in every family.
std::vector<SForm> Forms() {
    const std::vector<u16> image = Ramp(kPixels);
    const SK410Container whole, swapped{.record = {.swapped = true, .width = 320}}, none{.recordSize = 4};
    const SK410Container untimed{.recordSize = 907}, uncounted{.recordSize = 25};
    const Bytes stream = EncodeJpegLs(Ramp(kPixels, 14), kWidth, kHeight);
    Bytes noRecord = ShortRecordFrame(image, {});
    Patch(noRecord, kImage, 0x1234, 2);
    const auto withHeader = [&](Bytes header) { return HeaderLineFrame(header, 130, Ramp(130 * kHeight)); };
    static constexpr char kColours[] = "10 3 6", kNothing[] = "- - - -";
    return {
        {"plain", L"K410", kK410F7M0, PlainFrame(image, whole), "marked full counter - 6x9999"},
        {"plain over GigE", L"K410", kK410GigE, PlainFrame(image, swapped), "marked full counter - 320x9999"},
        {"turned", L"K410", kK410GigEFlipped, PlainFrame(image, whole), "marked full counter - 6x9999"},
        {"record before the time", L"K410", kK410F7M0, PlainFrame(image, untimed), "marked - counter - 6x9999"},
        {"record before the counter", L"K410", kK410F7M0, PlainFrame(image, uncounted), "marked - - - 6x9999"},
        {"record of 4 bytes", L"K410", kK410F7M0, PlainFrame(image, none), "marked - - -"},
        {"numbered by the decoder", L"K410", kK410FNM0, PlainFrame(image, whole), "marked - - - 6x9999"},
        {"digital", L"K410", kK410F7M0, DigitalFrame(image, {}, whole), "marked - counter - 6x9999"},
        {"digital", L"K410", kK410FNM0, DigitalFrame(image, {}, whole), "marked - counter - 6x9999"},
        {"compressed", L"K410", kK410MJLS, CompressedFrame(stream, whole), "marked - - - 6x4",
         "3 2 0 compressed own-length"},
        {"video", L"K410", kK410UYVY, Bytes(2 * kPixels), kNothing, kColours},
        {"video", L"K410", kK410BGR, Bytes(3 * kPixels), kNothing, kColours},
        {"header line", L"Osprey", kOsprey, withHeader(OspreyHeader(130)), kLine},
        {"header line", L"Osprey", rootIRType, withHeader(OspreyHeader(130)), kLine},
        {"header", L"Osprey", kOspreyHeader, OspreyHeader(130), kLine, "12 0 0 header"},
        {"header line", L"LOR-RA", kLORRA, withHeader(LORHeader()), kLine},
        {"header line", L"LOR-SB", kLORSB, withHeader(LORHeader()), kLine},
        {"header", L"LOR-SB", kLORSBHeader, LORHeader(), kLine, "12 0 0 header"},
        {"header line", L"MVFalcon", kMVFalcon, withHeader(MVFalconHeader()), kLine},
        {"trailer", L"Lapwing", kLapwing, TomzFrame(image, {.timeFlags = 5}), "marked full counter preset"},
        {"no trailer", L"Lapwing", kLapwing, TomzFrame(image, {.signature = "TOMB"}), "unmarked - - -"},
        {"time stamp", L"Wren", kWren, PruvBuffer(image, {{.timeFlags = 4}}), "marked full counter preset"},
        {"time code", L"Wren", kWren, PruvBuffer(image, {{.timeFlags = 1}}), "marked full counter preset"},
        {"no year", L"Wren", kWren, PruvBuffer(image, {{.timeFlags = 5}}), "marked day counter preset"},
        {"older, no year", L"Wren", kWren, TomzFrame(image, {.olderWren = true, .timeFlags = 5}),
         "marked day counter preset"},
        {"infrared", L"MV310", kMV310, ShortRecordFrame(image, {.swapped = true}), "marked full - - 6x9999"},
        {"no record", L"MV310", kMV310, noRecord, "unmarked full - -"},
        {"video", L"MV310", kMV310Screen, Bytes(2 * kPixels), kNothing, kColours},
        {"infrared", L"Plover", kPlover, ShortRecordFrame(image, {}), "marked full counter - 6x9999"},
        {"video", L"Plover", kPloverYuv, Bytes(2 * kPixels), kNothing, kColours},
    };
}

std::string Text(const SFrameForm& form, const GUID& type) {
    std::ostringstream s;
    s << form.element << ' ' << form.bytesPerPixel << ' ' << form.unit << (form.compressed ? " compressed" : "")
      << (form.ownLength ? " own-length" : "") << (form.wholeType == type ? "" : " header");
    return s.str();
}
std::string Text(const SFrameEvidence& e) {
    constexpr const char *kMarks[] = {"-", "unmarked", "marked"}, *kTimes[] = {"-", "day", "full"};
    std::ostringstream s;
    s << kMarks[static_cast<u8>(e.mark)] << ' ' << kTimes[static_cast<u8>(e.time)] << ' '
      << (e.frameCounter ? "counter" : "-") << ' ' << (e.preset ? "preset" : "-");
    if (e.width || e.height) s << ' ' << e.width << 'x' << e.height;
    return s.str();
}

TEST(FrameQuestions, FormAndEvidenceOfEveryFrame) {
    for (const SForm& c : Forms()) {
        SCOPED_TRACE(CString(c.filter).GetUTF8() + std::string(": ") + c.name);
        SFrameForm form{.bytesPerPixel = 99};
        ASSERT_TRUE(GetFrameForm(c.filter, c.type, form));
        EXPECT_EQ(Text(form, c.type), c.form);
        const u16 width = c.evidence == kLine ? 130 : kWidth;
        const auto frame = SFrameReader::Exact(c.frame);
        const u32 size = SFrameReader::Size(c.frame);
        ASSERT_TRUE(CheckFrame(c.filter, frame.get(), c.type, width, kHeight, size));
        SFrameEvidence evidence{.preset = true, .width = 99};
        ASSERT_TRUE(GetFrameEvidence(c.filter, frame.get(), c.type, width, kHeight, size, evidence));
        EXPECT_EQ(Text(evidence), c.evidence);
    }
    SFrameForm form;
    SFrameEvidence evidence;
    EXPECT_FALSE(GetFrameForm(L"K410", rootIRType, form) || GetFrameForm(L"Nobody", kK410F7M0, form));
    EXPECT_FALSE(GetFrameEvidence(L"MV310", nullptr, kPlover, 0, 0, 0, evidence));
    ASSERT_TRUE(GetFrameForm(L"Osprey", kOspreyHeader, form));
    EXPECT_EQ(form.wholeType, kOsprey);
}

/// Buffers of three images, and how many bytes may be missing at their end.
TEST(FrameQuestions, BuffersOfSeveralImages) {
    const std::vector<u16> images = Ramp(3 * kPixels);
    const SK410Container container;
    std::vector<u16> trap = images;  // the second image begins like a container
    trap[kPixels] = 0x4B4D;
    trap[kPixels + 1] = 0x4D;
    const SPruvRecord record;
    const STomzTrailer older{.olderWren = true}, damaged{.olderWren = true, .checksumError = 1};
    const auto tomz = [](const STomzTrailer& trailer) { return TomzFrame(Ramp(kPixels), trailer, kImage + 96); };
    const struct {
        const char* name;
        const wchar_t* filter;
        GUID type;
        Bytes buffer;
        const wchar_t* refusedFor = nullptr;
        u16 width = kWidth;
    } cases[] = {
        {"plain", L"K410", kK410GigE, PlainFrame(images, container)},
        {"digital", L"K410", kK410FNM0, DigitalFrame(images, {}, container)},
        {"pixels like a container", L"K410", kK410F7M0, PlainFrame(trap, container), L"the first entry"},
        {"no trigger is looked for", L"K410", kK410GigEFlipped, PlainFrame(trap, container)},
        {"video", L"K410", kK410YUY2, Bytes(6 * kPixels)},
        {"pixels of 3 bytes", L"K410", kK410BGR, Bytes(9 * kPixels), L"one image"},
        {"compressed", L"K410", kK410MJLS, PlainFrame(images, container), L"one image"},
        {"infrared", L"MV310", kMV310, ShortRecordFrame(images, {})},
        {"infrared", L"Plover", kPlover, ShortRecordFrame(images, {}), L"one image"},
        {"header line", L"LOR-RA", kLORRA, Bytes(10000), L"one image"},
        {"native", L"Wren", kWren, PruvBuffer(images, {record, record, record})},
        {"native, no signature", L"Wren", kWren, Join({PixelBytes(images), Bytes(331)}), L"PRUV"},
        {"older", L"Wren", kWren, Join({tomz(older), tomz(older), tomz(older)})},
        {"older, one is damaged", L"Wren", kWren, Join({tomz(older), tomz(damaged), tomz(older)}), L"the checksum"},
        {"trailer lines", L"Lapwing", kLapwing, Bytes(3 * (kHeight + 1) * 96), nullptr, 48},
        {"trailer wider than its line", L"Lapwing", kLapwing, Bytes(3 * (kHeight + 1) * 94), L"the trailer", 47},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(CString(c.filter).GetUTF8() + std::string(": ") + c.name);
        const auto check = [&](std::size_t size, SFrameFault* fault = nullptr) {
            const Bytes part(c.buffer.begin(), c.buffer.begin() + static_cast<long>(size));
            return CheckFrames(c.filter, SFrameReader::Exact(part).get(), c.type, c.width, kHeight, 3,
                               static_cast<u32>(size), fault);
        };
        SFrameFault fault;
        EXPECT_EQ(check(c.buffer.size(), &fault), !c.refusedFor);
        if (c.refusedFor) {
            EXPECT_TRUE(std::wcsstr(fault.expected, c.refusedFor)) << fault.expected.GetUTF8();
            continue;
        }
        for (std::size_t size = 0; size < c.buffer.size(); ++size) ASSERT_FALSE(check(size)) << size;
        SFrameReader reader(c.filter, c.type, c.width, kHeight);
        EXPECT_TRUE(reader.Trigger(c.buffer, 3) || c.type != kK410GigE);
        for (u16 i = 0; i < 3; ++i) {
            Bytes stored = reader.Store(c.buffer, 3, i, c.buffer.size());
            EXPECT_TRUE(reader.Check(stored)) << i;
        }
    }
    const Bytes one = PlainFrame(Ramp(kPixels), container);
    for (const u16 count : {u16{0}, u16{1}}) {
        EXPECT_TRUE(CheckFrames(L"K410", one.data(), kK410GigE, kWidth, kHeight, count, SFrameReader::Size(one)));
        EXPECT_FALSE(CheckFrames(L"K410", one.data(), kK410GigE, kWidth, kHeight, count, SFrameReader::Size(one) - 1));
    }
}

TArray<SFrameField> FieldsOf(const Bytes& frame, GUID type) {
    TArray<SFrameField> fields{{7, 7, L"left", L"over"}};
    EXPECT_TRUE(DescribeFrame(L"K410", frame.data(), type, kWidth, kHeight, static_cast<u32>(frame.size()), fields));
    return fields;
}

TEST(DescribeFrame, K410) {
    SK410Container container;
    container.recordSize = 44;  // ends within the parameters
    const auto fields = FieldsOf(PlainFrame(Ramp(kWidth * kHeight), container), kK410GigE);
    const SFrameField& last = fields[fields.size() - 1];
    EXPECT_TRUE(last.offset == kImage + 128 + 40 && last.size == 4 && last.name == L"ReflectedTemp" &&
                last.value == L"40.25 K");
    for (const SFrameField& field : fields) EXPECT_LE(field.offset + field.size, kImage + 128 + 44);

    const Bytes stream = EncodeJpegLs(Ramp(kWidth * kHeight, 14), kWidth, kHeight);
    const auto ofStream = FieldsOf(CompressedFrame(stream, {}), kK410MJLS);
    EXPECT_TRUE(ofStream[1].offset == 4 && ofStream[1].size == stream.size() && ofStream[1].name == L"Image");
    EXPECT_TRUE(ofStream[2].offset == 4 + stream.size() && ofStream[2].value == L"0x004D4B4D");
    EXPECT_EQ(FieldsOf(Bytes(3 * kWidth * kHeight), kK410BGR).size(), 0u);
}

TEST(DescribeFrame, AsksTheCheckFirst) {
    const Bytes frame = ShortRecordFrame(Ramp(kWidth * kHeight), {});
    const u32 size = static_cast<u32>(frame.size());
    TArray<SFrameField> fields{{7, 7, L"left", L"over"}};
    EXPECT_FALSE(DescribeFrame(L"MV310", frame.data(), kMV310, kWidth, kHeight, size - 1, fields));
    EXPECT_EQ(fields.size(), 0u);
    EXPECT_FALSE(DescribeFrame(L"MV310", frame.data(), kPlover, kWidth, kHeight, size, fields));
    EXPECT_FALSE(DescribeFrame(L"Nobody", frame.data(), kMV310, kWidth, kHeight, size, fields));
}

}  // namespace
}  // namespace ovix::reduce
