/// What holds in every family: its types, and what is answered about each form of its frames.

#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "reduce/filters/filter_factory.h"
#include "support/frame_forms.h"
#include "support/frame_reader.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kPixels = kWidth * kHeight;
constexpr u32 kImage = 2 * kPixels;

std::string Text(const reduce::SFrameForm& form, const GUID& type) {
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

std::string NameOf(const wchar_t* filter, const char* name) {
    return CString(filter).GetUTF8() + std::string(": ") + name;
}

TEST(Families, FormAndEvidenceOfEveryFrame) {
    for (const auto& c : FrameForms()) {
        SCOPED_TRACE(NameOf(c.filter, c.name));
        reduce::SFrameForm form{.bytesPerPixel = 99};
        ASSERT_TRUE(GetFrameForm(c.filter, c.type, form));
        EXPECT_EQ(Text(form, c.type), c.form);
        SFrameEvidence evidence{.preset = true, .width = 99};
        ASSERT_TRUE(GetFrameEvidence(c.filter, CExact(c.frame).get(), c.type, c.width, kHeight,
                                     SFrameReader::Size(c.frame), evidence));
        EXPECT_EQ(Text(evidence), c.evidence);
    }
    reduce::SFrameForm form;
    SFrameEvidence evidence;
    EXPECT_FALSE(GetFrameForm(L"K410", rootIRType, form) || GetFrameForm(L"Nobody", kK410F7M0, form));
    EXPECT_FALSE(GetFrameEvidence(L"MV310", nullptr, kPlover, 0, 0, 0, evidence));
    ASSERT_TRUE(GetFrameForm(L"Osprey", kOspreyHeader, form));
    EXPECT_EQ(form.wholeType, kOsprey);
}

/// What passes can be parsed and described inside of its bytes, and only parsing may write to it.
TEST(Families, CheckSeesEveryTruncationAndEveryForeignType) {
    for (const auto& c : FrameForms()) {
        SCOPED_TRACE(NameOf(c.filter, c.name) + " " + std::to_string(c.width));
        SFrameReader reader(c.filter, c.type, c.width, kHeight);
        const auto end = c.frame.begin() + static_cast<i64>(c.least);
        for (auto to = c.frame.begin(); to != end; ++to) {
            SFrameFault fault;
            ASSERT_FALSE(reader.Check({c.frame.begin(), to}, &fault)) << to - c.frame.begin();
            ASSERT_FALSE(fault.expected.IsEmpty() || fault.found.IsEmpty()) << to - c.frame.begin();
        }
        const Bytes frame(c.frame.begin(), end);
        ASSERT_TRUE(reader.Check(frame));
        const CExact exact(frame);
        TArray<SFrameField> fields;
        const u32 size = SFrameReader::Size(frame);
        EXPECT_TRUE(DescribeFrame(c.filter, exact.get(), c.type, c.width, kHeight, size, fields));
        for (const SFrameField& field : fields) EXPECT_LE(field.offset + field.size, size) << field.name.GetUTF8();
        EXPECT_TRUE(std::equal(frame.begin(), frame.end(), exact.get()));
        reduce::SFrameForm form;
        GetFrameForm(c.filter, c.type, form);
        Bytes pixels(std::size_t{form.bytesPerPixel} * c.width * kHeight);
        EXPECT_TRUE(reader.Parse(frame, STypedData{pixels.empty() ? nullptr : pixels.data(), form.element}));
        reader.type = CString(c.filter) == L"Plover" ? kMV310 : kPlover;
        EXPECT_FALSE(reader.Check(frame) || reader.ParseMetadata(frame));
        reader.type = c.type;
        reader.width = reader.height = 65535;
        EXPECT_TRUE(!reader.Check(frame) || !form.HasPixels());
    }
    SFrameFault fault;
    EXPECT_FALSE(CheckFrame(L"k410", nullptr, kK410F7M0, 0, 0, 0, &fault));
    EXPECT_TRUE(fault.found == L"k410");
}

TEST(Families, TypesAndWhatTheyOffer) {
    constexpr u64 k16 = 0xFFFF, k24 = 0xFFFFFF, k32 = 0xFFFFFFFF;
    const GUID f7m0 = "{44ACBC8C-03B3-4599-B784-14DAD5C4BBF8}"_guid,
               uyvy = "{BB8A3D05-C4F6-4193-B198-08D9E797E886}"_guid;
    const GUID yuy2 = "{88DF0B84-7417-41CB-9B49-2F585323D620}"_guid,
               bgr = "{5BA4C88B-EBB4-4676-88E4-FC5C0FF6EB36}"_guid;
    /// The letters: P pixels (p without being asked for), T time, C frame counter, H a header of its own; the number of
    /// trigger fields.
    const struct {
        const wchar_t* filter;
        GUID type;
        const wchar_t* name;  ///< null for one that no registry has
        GUID base;
        std::string offers;
        u64 counterMax;
        i64 pixelsAt = 0;
        EDataType element = UInt16;
    } cases[] = {
        {L"K410", "{76ECF27C-7517-49D1-AED0-8C429934409D}"_guid, L"K410 IR (F7M0)", f7m0, "PTC0", k16},
        {L"K410", "{E97ED85F-B45C-409C-B685-0568E493A9D0}"_guid, L"K410 IR (FNM0)", f7m0, "P0", k16},
        {L"K410", "{3874994E-B76D-45DE-871A-5CF46393B19B}"_guid, L"K410 IR (GigE)", f7m0, "PC3", k16},
        {L"K410", "{B3E83B04-FC6B-411D-B883-258685C80882}"_guid, L"K410 IR (GigE, Flipped)", f7m0, "PC3", k16},
        {L"K410", "{4030E1B1-6E28-4E5C-88F7-16E54AF6A54A}"_guid, L"K410 YUV (UYVY)", uyvy, "0", k16},
        {L"K410", "{DDBF6368-76B6-49F2-A410-6CC47415AFD3}"_guid, L"K410 YUV (YUY2)", yuy2, "0", k16},
        {L"K410", "{036DA1C3-5794-4341-8BC1-5DEEAB52DFD5}"_guid, L"K410 BGR (24-bit)", bgr, "0", k16},
        {L"K410", "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid, L"R7X IR (MJLS)", f7m0, "0", k16},
        {L"LOR-RA", "{B3CC3849-01F1-499C-90E6-4799CE2979FF}"_guid, L"LOR-RA", rootIRType, "PTCH1", k32, 12},
        {L"LOR-RA", "{ABD16A8F-BB4A-415C-9BC6-7AB387743F25}"_guid, nullptr, {}, "TC1", k32},
        {L"LOR-SB", "{762A7AEB-B98E-4628-8A7B-7AEE737F7754}"_guid, L"LOR-SB", rootIRType, "PTCH2", k32, 12},
        {L"LOR-SB", "{0C784596-B058-4D52-90C3-E995D9175865}"_guid, nullptr, {}, "TC2", k32},
        {L"Osprey", "{1A3CAA37-2D15-4D6D-B4FE-B1FC2332D49A}"_guid, L"IACF", rootIRType, "PTCH0", k16, 12},
        {L"Osprey", "{E71E484F-1C37-4BB8-B4E2-EBF0727402F9}"_guid, nullptr, {}, "TC0", k16},
        {L"MVFalcon", "{8C2E0C91-A8D9-47E7-8667-482577F366B4}"_guid, L"MVF", rootIRType, "PTCH0", k24, 12},
        {L"MVFalcon", "{20DD2639-38C0-4E57-99EE-1B9224F8E5E2}"_guid, nullptr, {}, "TC0", k24},
        {L"Lapwing", "{AD56BAF5-751A-4328-B058-72B124803183}"_guid, L"Lapwing", rootIRType, "PTC1", k32},
        {L"Wren", "{7E48B0A6-78A9-44BC-80E8-7888C83854F7}"_guid, L"Wren", rootIRType, "PTC1", k32},
        {L"MV310", "{07C06B52-E505-45EA-85F5-73C9E5F0519C}"_guid, L"MV310 IR (F7M2)", rootScreenType, "PT0", k16},
        {L"MV310", "{B9A7A170-5FEF-4CBC-96E4-E6B84B9F56D7}"_guid, L"MV310 Screen (F7M3)", rootScreenType, "0", k16, 0,
         Opaque},
        {L"MV310", "{4C264D2A-288C-4A7B-A9A4-A9E18695CDFE}"_guid, L"MV310 YUV (UYVY)", rootScreenType, "0", k16, 0,
         Opaque},
        {L"Plover", "{FD728B9B-9B9B-4098-81E4-73EC59D2505C}"_guid, L"Plover IR (F7M0)", f7m0, "PTC0", k16},
        {L"Plover", "{0612D7F1-A3F5-423B-8A16-F77199066239}"_guid, L"Plover YUV (UYVY)", uyvy, "0", k16},
        // Of nobody: reached by the name of the decoder alone.
        {L"Osprey", rootIRType, nullptr, {}, "PTC0", k16, 12},
        {L"Wren", rootIRType, nullptr, {}, "pTC1", k32}};
    u32 place = 0;
    const wchar_t* before = L"";
    for (const auto& c : cases) {
        SCOPED_TRACE(NameOf(c.filter, c.offers.c_str()) + std::to_string(&c - cases));
        place = CString(before) == c.filter ? place + 1 : 0;
        before = c.filter;
        if (c.type != rootIRType) {
            EXPECT_TRUE(filterFactory()->GetEntry(c.filter).extra.pixelTypes.ConstGetItem(place) == c.type &&
                        filterFactory()->GetPixelTypeHandler(c.type) == c.filter);
        }
        SPixelType facts;
        if (c.name) {
            EXPECT_TRUE(GetPixelType(c.type, facts) && facts.name == c.name && facts.bytesPerPixel == 2 &&
                        facts.type == c.element && facts.baseType == c.base);
        }
        const auto filter = filterFactory()->Create(c.filter);
        EXPECT_TRUE(CString(filter->GetName()) == (CString(c.filter) == L"Osprey" ? L"MV7100" : c.filter));
        TArray<CString> names;
        filter->GetTriggerFields(c.type, names);
        u8 frame[16] = {};
        void* pixels = nullptr;
        i32 stride = 0;
        const bool found = filter->GetPixels(frame, c.type, 6, 1, 16, &pixels, stride);
        std::string offers = filter->HasPixels(c.type) ? "P" : found ? "p" : "";
        offers += std::string(filter->HasTime(c.type) ? "T" : "") + (filter->HasFrameCounter(c.type) ? "C" : "") +
                  (filter->HasHeader(c.type) ? "H" : "") + std::to_string(names.size());
        EXPECT_EQ(offers, c.offers);
        EXPECT_EQ(filter->FrameCounterMaxValue(c.type), c.counterMax);
        EXPECT_EQ(found, std::tolower(c.offers[0]) == 'p');
        EXPECT_TRUE(!found || (pixels == frame + c.pixelsAt && stride == 12));
    }
    const std::tuple<GUID, const wchar_t*, int, EDataType, GUID> generic[] = {
        {f7m0, L"F7M0", 2, UInt16, rootIRType},
        {"{F5143BE1-3F5C-46E8-99B7-E5BC2A0A9990}"_guid, L"F7M2", 2, UInt16, rootIRType},
        {"{6AAAF0FA-3BCF-41A4-842E-EEE17BFA1C00}"_guid, L"F7M3", 2, Opaque, rootScreenType},
        {uyvy, L"UYVY", 2, Opaque, rootScreenType},
        {yuy2, L"YUY2", 2, Opaque, rootScreenType},
        {"{327F8ED5-4584-48C7-9FB1-E326376CD4B8}"_guid, L"Y800", 2, Opaque, rootScreenType},
        {bgr, L"BGR8", 3, Opaque, rootScreenType}};
    for (const auto& [id, name, bytes, type, base] : generic) {
        SPixelType facts;
        EXPECT_TRUE(GetPixelType(id, facts) && facts.name == name && facts.bytesPerPixel == bytes &&
                    facts.type == type && facts.baseType == base);
    }
}

/// Buffers of three images, and how many bytes may be missing at their end.
TEST(Families, BuffersOfSeveralImages) {
    const std::vector<u16> images = Ramp(3 * kPixels);
    const SK410Container container;
    std::vector<u16> trap = images;  // the second image begins like a container
    trap[kPixels] = 0x4B4D;
    trap[kPixels + 1] = 0x4D;
    const auto tomz = [](u16 error) {
        return TomzFrame(Ramp(kPixels), {.olderWren = true, .checksumError = error}, kImage + 96);
    };
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
        {"native", L"Wren", kWren, PruvBuffer(images, std::vector<SPruvRecord>(3))},
        {"native, no signature", L"Wren", kWren, Join({PixelBytes(images), Bytes(331)}), L"PRUV"},
        {"older", L"Wren", kWren, Join({tomz(0), tomz(0), tomz(0)})},
        {"older, one is damaged", L"Wren", kWren, Join({tomz(0), tomz(1), tomz(0)}), L"the checksum"},
        {"trailer lines", L"Lapwing", kLapwing, Bytes(3 * (kHeight + 1) * 96), nullptr, 48},
        {"trailer wider than its line", L"Lapwing", kLapwing, Bytes(3 * (kHeight + 1) * 94), L"the trailer", 47}};
    for (const auto& c : cases) {
        SCOPED_TRACE(NameOf(c.filter, c.name));
        const auto check = [&](std::size_t size, SFrameFault* fault = nullptr) {
            return CheckFrames(c.filter, CExact(std::span(c.buffer).first(size)).get(), c.type, c.width, kHeight, 3,
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
        for (u16 i = 0; i < 3; ++i) EXPECT_TRUE(reader.Check(reader.Store(c.buffer, 3, i, c.buffer.size()))) << i;
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
    const auto fields = FieldsOf(PlainFrame(Ramp(kPixels), container), kK410GigE);
    const SFrameField& last = fields[fields.size() - 1];
    EXPECT_TRUE(last.offset == kImage + 128 + 40 && last.size == 4 && last.name == L"ReflectedTemp" &&
                last.value == L"40.25 K");
    for (const SFrameField& field : fields) EXPECT_LE(field.offset + field.size, kImage + 128 + 44);

    const Bytes stream = EncodeJpegLs(Ramp(kPixels, 14), kWidth, kHeight);
    const auto ofStream = FieldsOf(CompressedFrame(stream, {}), kK410MJLS);
    EXPECT_TRUE(ofStream[1].offset == 4 && ofStream[1].size == stream.size() && ofStream[1].name == L"Image");
    EXPECT_TRUE(ofStream[2].offset == 4 + stream.size() && ofStream[2].value == L"0x004D4B4D");
    EXPECT_EQ(FieldsOf(Bytes(3 * kPixels), kK410BGR).size(), 0u);

    // The check is asked first.
    const Bytes frame = ShortRecordFrame(Ramp(kPixels), {});
    TArray<SFrameField> none{{7, 7, L"left", L"over"}};
    const u32 size = SFrameReader::Size(frame);
    EXPECT_FALSE(DescribeFrame(L"MV310", frame.data(), kMV310, kWidth, kHeight, size - 1, none) ||
                 DescribeFrame(L"MV310", frame.data(), kPlover, kWidth, kHeight, size, none) ||
                 DescribeFrame(L"Nobody", frame.data(), kMV310, kWidth, kHeight, size, none));
    EXPECT_EQ(none.size(), 0u);
}

constexpr GUID kOwnType = "{0F0E0D0C-0B0A-0908-0706-050403020100}"_guid;

/// As little as a plug-in's decoder may supply. Its preset is the frame's first byte.
class CLeastFilter : public IFilter {
  public:
    const wchar_t* GetName() const override { return L"Least"; }
    bool HasPixels(GUID) const override { return false; }
    bool GetPixels(void*, GUID, u16, u16, u32, void**, i32&) override { return false; }
    bool ParseTime(void*, GUID, u16, u16, u32, CDateTime&) override { return false; }
    bool ParseBasicInfo(void*, GUID, u16, u16, u32, u8&, u64&, CDateTime&) override { return false; }
};
class CPresetFilter : public CLeastFilter {
  public:
    bool ParsePreset(void* frame, GUID, u16, u16, u32, u8& preset) override {
        preset = *static_cast<u8*>(frame);
        return preset != 0xFF;
    }
};

TEST(FilterFactory, TypesBelongToTheFirstWhoClaimsThem) {
    using Functions = TCreateAndDestroy<CLeastFilter, IFilter>;
    const auto registerAs = [](const wchar_t* name, TArray<GUID> types) {
        return filterFactory()->Register(name, types, Functions::Create, Functions::Destroy);
    };
    EXPECT_TRUE(registerAs(L"Claims K410", {test::kK410F7M0, kOwnType}));
    EXPECT_TRUE(registerAs(L"Claims late", {kOwnType}));
    EXPECT_FALSE(registerAs(L"Claims late", {}));
    EXPECT_TRUE(filterFactory()->GetPixelTypeHandler(test::kK410F7M0) == L"K410");
    EXPECT_TRUE(filterFactory()->GetPixelTypeHandler(kOwnType) == L"Claims K410");
    EXPECT_STREQ(filterFactory()->CreateForPixelType(kOwnType)->GetName(), L"Least");
    EXPECT_TRUE(filterFactory()->GetPixelTypeHandler(rootIRType).IsEmpty());
    EXPECT_FALSE(filterFactory()->IsPixelTypeHandled(rootIRType));
    EXPECT_FALSE(filterFactory()->CreateForPixelType(rootIRType));
    // A family that registered no check cannot vouch for a frame.
    SFrameFault fault;
    EXPECT_FALSE(CheckFrame(L"Claims late", nullptr, kOwnType, 0, 0, 0, &fault));
    EXPECT_TRUE(fault.found == L"Claims late");

    TArray<GUID> given{kOwnType};
    const SFilterFactoryExtraStuff extra(given);
    EXPECT_TRUE(given.size() == 0 && extra.pixelTypes.size() == 1);
}

TEST(Filter, WhatEveryDecoderStartsWith) {
    CLeastFilter filter;
    Bytes frame{1, 2, 3, 4}, small(3), large(5, 9);
    CReduceObjectArray objects;
    u8 preset = 9;
    EXPECT_FALSE(filter.ParseReduceObjects(frame.data(), kOwnType, 2, 1, 4, objects, preset));
    EXPECT_TRUE(preset == 0 && filter.FrameCounterMaxValue(kOwnType) == 65535);
    for (Bytes* dest : {&small, &large})
        EXPECT_TRUE(filter.StoreFrame(frame.data(), 4, kOwnType, 2, 1, 1, 0, dest->data(), SFrameReader::Size(*dest)));
    EXPECT_TRUE(small == (Bytes{1, 2, 3}) && large == (Bytes{1, 2, 3, 4, 9}));
    bool triggered = true;
    u16 index = 9;
    EXPECT_TRUE(filter.CheckForTrigger(frame.data(), 4, kOwnType, 2, 1, 1, 0, triggered, index));
    TArray<CString> names{L"old"};
    EXPECT_FALSE(filter.GetTriggerFields(kOwnType, names));
    EXPECT_TRUE(!triggered && index == 0 && names.size() == 0);
}

TEST(Filter, PresetsAreCountedByTheFirstImage) {
    CPresetFilter filter;
    Bytes frame{3};
    u32 counts[256] = {};
    EXPECT_FALSE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 1, counts));
    EXPECT_EQ(counts[3], 0u);
    EXPECT_TRUE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 0, counts));
    EXPECT_TRUE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 0, counts));
    frame[0] = 0xFF;
    EXPECT_FALSE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 0, counts));
    for (u32 i = 0; i < 256; ++i) EXPECT_EQ(counts[i], i == 3 ? 2u : 0u);
}

}  // namespace
}  // namespace ovix::reduce
