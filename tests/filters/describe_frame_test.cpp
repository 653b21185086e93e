#include "reduce/filters/describe_frame.h"

#include <gtest/gtest.h>

#include "reduce/filters/filter_factory.h"
#include "support/short_record_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kImage = 2 * kWidth * kHeight;

struct SExpected {
    u64 offset;
    u32 size;
    const wchar_t* name;
    const wchar_t* value;
};

TArray<SFrameField> FieldsOf(const wchar_t* filter, const Bytes& frame, GUID type) {
    TArray<SFrameField> fields{{7, 7, L"left", L"over"}};
    EXPECT_TRUE(DescribeFrame(filter, frame.data(), type, kWidth, kHeight, static_cast<u32>(frame.size()), fields));
    for (const SFrameField& field : fields) EXPECT_LE(field.offset + field.size, frame.size()) << field.name.GetUTF8();
    return fields;
}

void ExpectFields(const TArray<SFrameField>& fields, std::initializer_list<SExpected> all) {
    for (const SExpected& e : all) {
        const auto at = std::find_if(fields.begin(), fields.end(),
                                     [&](const auto& f) { return f.name == e.name && f.offset == e.offset; });
        ASSERT_NE(at, fields.end()) << CString(e.name).GetUTF8();
        EXPECT_EQ(at->size, e.size) << at->name.GetUTF8();
        EXPECT_STREQ(at->value.GetUTF8(), CString(e.value).GetUTF8()) << at->name.GetUTF8();
    }
}

TEST(DescribeFrame, CameraRecordInBothOrders) {
    for (const bool swapped : {false, true}) {
        SCOPED_TRACE(swapped);
        const Bytes sent = ShortRecordFrame(Ramp(kWidth * kHeight), {.swapped = swapped});
        for (const auto& [filter, type] : {std::pair{L"MV310", kMV310}, {L"Plover", kPlover}}) {
            const Bytes frame = sent;
            ExpectFields(FieldsOf(filter, frame, type),
                         {{kImage, 2, L"ByteOrder", swapped ? L"swapped" : L"native"},
                          {kImage + 2, 2, L"Width", L"6 pixels"},
                          {kImage + 4, 2, L"Height", L"9999 pixels"},  // the camera's own
                          {kImage + 24, 2, L"FrameCounter", L"4660"},
                          {kImage + 32, 4, L"Emissivity", L"32.25"},
                          {kImage + 40, 4, L"ReflectedTemp", L"40.25 K"},
                          {kImage + 88, 4, L"PlanckR", L"88.25"},
                          {kImage + 164, 4, L"LowerTemp", L"164.25 K"},
                          {kImage + 786, 2, L"ImgMax", L"13065 counts"},
                          {kImage + 796, 4, L"NonlinearOffset", L"79601"},
                          {kImage + 900, 4, L"Seconds", L"1700000000 s since 1970"},
                          {kImage + 904, 4, L"Milliseconds", L"250 ms"},
                          {kImage + 900, 8, L"Time", L"2023-11-14 22:13:20.250000 UTC"}});
            EXPECT_EQ(frame, sent);
        }
    }
}

TEST(DescribeFrame, K410HeadersAndContainer) {
    const SK410DigitalHeader header{.mark = 2, .in1 = 1, .counter = 0x1234};
    SK410Container container;
    container.recordSize = 44;  // ends within the parameters
    const Bytes frame = DigitalFrame(Ramp(kWidth * kHeight), header, container);
    const TArray<SFrameField> fields = FieldsOf(L"K410", frame, kK410GigE);
    constexpr u64 kContainer = kImage + 32, kRecord = kContainer + 128;
    ExpectFields(fields, {{kImage + 2, 1, L"Mark", L"2"},
                          {kImage + 10, 1, L"DigitalIn1", L"1"},
                          {kImage + 12, 2, L"FrameCounter", L"4660"},
                          {kContainer, 4, L"Signature", L"0x004D4B4D"},
                          {kContainer + 76, 4, L"RecordOffset", L"128 bytes"},
                          {kContainer + 98, 2, L"PixelsSwapped", L"0"},
                          {kRecord + 40, 4, L"ReflectedTemp", L"40.25 K"}});
    for (const SFrameField& field : fields) EXPECT_LE(field.offset + field.size, kRecord + 44) << field.name.GetUTF8();

    const Bytes stream = EncodeJpegLs(Ramp(kWidth * kHeight, 14), kWidth, kHeight);
    const u32 length = static_cast<u32>(stream.size());
    const CString text = CString::FromFormat(L"a JPEG-LS stream of %u bytes", length);
    ExpectFields(FieldsOf(L"K410", CompressedFrame(stream, {}), kK410MJLS),
                 {{4, length, L"Image", text.c_str()}, {4 + length, 4, L"Signature", L"0x004D4B4D"}});
    EXPECT_EQ(FieldsOf(L"K410", Bytes(3 * kWidth * kHeight), kK410BGR).size(), 0u);
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
