#include <string>

#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/dunlin_reduce_objects.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/abate.h"
#include "reduce/pixels/correction_objects.h"
#include "support/object_file.h"

/// Every class that files hold, in each of its stored forms, spelled byte by byte.
namespace ovix::reduce {

using namespace test;

static std::string ValuesOf(const CFOVReduceObject& o) { return Text(o.IHFOV, o.IVFOV); }
static std::string ValuesOf(const CObjectParametersReduceObject& o) {
    return Text(o.fromSource, o.emissivity, o.distance, o.reflectedTemp, o.atmosphereTemp, o.extOpticsTemp,
                o.extOpticsTrans, o.atmosphereTrans, o.estimatedAtmosphereTrans, o.relativeHumidity, o.parameterMask);
}
static std::string ValuesOf(const CSourceInfoReduceObject& o) {
    const RECT& r = o.frameRect;
    std::string text =
        Text(o.sourceBits, o.cameraName, o.flagA, o.flagB, o.fixedPreset, o.sourceKind, o.width, o.height, r.left,
             r.top, r.right, r.bottom, o.frameRectSet, o.pixelType.data1, o.sourceValue, o.baseUnit, o.baseTempType);
    text += Text(o.frameWidth, o.frameHeight, o.packetWidth, o.packetHeight, o.packetExtra, o.time.GetTimestamp(),
                 o.hasIdentity, o.text0, o.text1, o.text2, o.text3, o.text4, o.text5, o.text6, o.text7, o.text8,
                 o.text9, o.text10, o.text11, o.text12, o.rangeALow, o.rangeAHigh, o.rangeASet, o.rangeBLow,
                 o.rangeBHigh, o.rangeBSet, o.presetCount);
    for (const auto& p : o.presets)
        text += Text(p.enabled, p.valueA, p.flagA, p.scale, p.flagB, p.frameCount, p.flagC, p.valueB, p.valueC);
    return text;
}
static std::string ValuesOf(const CCorrectionReduceObject& o) {
    std::string text = Text(o.width, o.height, o.present);
    for (u32 i = 0; i < o.width * o.height; ++i) text += Text(o.gain[i], o.offset[i], o.mask[i], o.map[i]);
    return text;
}
static std::string ValuesOf(const CAbateCfgReduceObject& o) {
    std::string text = Text(o.enabled, o.mode);
    for (int i = 0; i < 8; ++i) text += Text(o.order[i], o.low[i], o.high[i]);
    return text;
}
static std::string ValuesOf(const CCurlewCameraInfoReduceObject& o) {
    return Text(o.record[0], o.record[2427], o.recordPresent, o.digitalHeader[31], o.digitalHeaderPresent);
}
static std::string ValuesOf(const CCurlewFactoryCalReduceObject& o) {
    return Text(o.nonlinearGain, o.gain, o.nonlinearOffset, o.offset, o.nonlinearOn, o.imgMin, o.imgMax, o.planckR,
                o.planckB, o.planckF, o.atmAlpha1, o.atmAlpha2, o.atmBeta1, o.atmBeta2, o.atmX, o.overflowTemp,
                o.upperTemp, o.lowerTemp, o.underflowTemp, o.radFitHighTemp, o.radFitLowTemp);
}
static std::string ValuesOf(const CTernFactoryCalReduceObject& c) {
    std::string text =
        Text(c.atmAlpha1, c.atmAlpha2, c.atmBeta1, c.atmBeta2, c.atmX, c.tdriftReserved1, c.driftR, c.driftB, c.driftF,
             c.drift3, c.drift4, c.drift5, c.drift6, c.drift7, c.drift8, c.drift9, c.tdriftReserved2, c.adjustGain,
             c.adjustOffset, c.planckR, c.planckB, c.planckF, c.gainDrift0, c.gainDrift1, c.gainDrift2, c.gainDrift3,
             c.overflowTemp, c.upperTemp, c.lowerTemp, c.underflowTemp, c.radFitHighTemp, c.radFitLowTemp,
             c.frontPanelTemp, c.airGapTemp, c.dewarTemp);
    for (const float value : c.unused) text += Text(value);
    return text + Text(c.lastFloat, c.tdriftMode, c.reserved16, c.reservedSigned16) + c.text1 + c.text2 +
           std::string(c.text3, 16) + c.text4 + c.text5 + c.text6 + c.text7 + c.text8 + std::string(c.text9, 10) +
           c.text10;
}
static std::string ValuesOf(const CMerlinFactoryCalReduceObject& o) {
    std::string text = Text(o.degree);
    for (const double value : o.c) text += Text(value);
    text += Text(o.signalOffset, o.planckR, o.planckB, o.planckF, o.atmX, o.atmAlpha1, o.atmAlpha2, o.atmBeta1,
                 o.atmBeta2, o.lowTemp, o.highTemp, o.reservedFloats[0], o.reservedFloats[1], o.reserved32,
                 o.fitLowSignal, o.fitHighSignal);
    for (const double value : o.reservedDoubles) text += Text(value);
    for (int i = 0; i < o.tableCount; ++i) text += Text(o.table1[static_cast<u32>(i)], o.table2[static_cast<u32>(i)]);
    return text;
}
static std::string ValuesOf(const CDunlinCameraInfoReduceObject& o) {
    return Text(CString(o.text0), CString(o.text1), CString(o.text2), CString(o.text3), CString(o.text4), o.value0,
                o.value1, o.value2, o.value3, o.byte0, o.number0, o.byte1, o.byte2, o.byte3, o.byte4, o.useCameraClock);
}
static std::string ValuesOf(const CDunlinFactoryCalReduceObject& o) {
    return Text(o.calWord0, o.calValue0, o.calValue1, o.calValue2, o.calValue3, o.calValue4, o.calValue5, o.calValue6,
                o.calWord1, o.calWord2, o.calValue7, o.calValue8, o.detectorTemp, o.integrationTime);
}

namespace {

constexpr u32 kMinus2 = 0xFFFFFFFE;

TEST(StoredForms, FOV) {
    const CByteWriter fields = CByteWriter().F64(0.25).F64(-0.5), newest = Record(64, 0x10001, fields);
    ExpectForm<CFOVReduceObject>(newest, 0x10001, "0.25 -0.5 ", 0x20001);  // looser by one than elsewhere
    ExpectForm<CFOVReduceObject>(fields, 0x10000, "0.25 -0.5 ", 0, &newest);
}

TEST(StoredForms, ObjectParameters) {
    CByteWriter rest;
    rest.F32(0.95f).F32(3.5f).Append(Floats(290, 3)).F32(0.9f).F32(0.8f).F32(0.7f).F32(0.6f).U32(0x12345678);
    const CByteWriter newest = Record(96, 0x10001, CByteWriter().U8(1).Append(rest));
    const std::string values = "1 0.95 3.5 290 291 292 0.9 0.8 0.7 0.6 305419896 ";
    ExpectForm<CObjectParametersReduceObject>(newest, 0x10001, values, 0x20000);
    // Any byte but 0 is true.
    ExpectForm<CObjectParametersReduceObject>(CByteWriter().U8(7).Append(rest), 0x10000, values, 0, &newest);
}

/// The record with eight presets, or of four, and the older streams of strings with their length.
struct SSource {
    static std::string Numbered(int i) { return std::string("t").append(std::to_string(i)); }
    static void Preset(CByteWriter& bytes, u8 i) {
        bytes.U8(i & 1).F64(1.5 + i).U8(1).F32(2.5f + i).U8(0).U32(100u + i).U8(1).F64(3.5 + i).F64(4.5 + i);
    }
    static CByteWriter Record(u32 size, u32 version, u8 presets) {
        CByteWriter b = CByteWriter().U32(size).U32(version).U32(kMinus2).Text("Camera \xC3\xA9", 64);
        b.U8(1).U8(0).U8(1).U8(9).U16(640).U16(512);   // 76: flags A and B, fixed preset, source kind
        b.U32(1).U32(2).U32(3).U32(0xFFFFFFFC).U8(1);  // left, top, right, bottom
        b.Guid(kPixelType).U32(0xFFFFFFFB).U8(5).U8(2);
        b.U16(11).U16(12).U16(13).U16(14).U16(15).U64(130'000'000'000'000'000).U8(1);
        for (int i = 0; i < 13; ++i) b.Text(Numbered(i), i % 3 == 0 ? 32 : 16);
        b.F64(0.5).F64(0.75).U8(1).F64(1.25).F64(1.75).U8(1).U8(6);  // 430
        for (u8 i = 0; i < presets; ++i) Preset(b.PadTo(1024 + 128u * i), i);
        return b.PadTo(1024 + 128u * presets);
    }
    static CByteWriter Stream(u32 blockVersion) {
        CByteWriter b;
        const auto text = [&](const std::string& s) { b.U32(s.size()).Text(s, s.size()); };
        b.U32(kMinus2);
        text("Camera \xC3\xA9");
        b.U8(1).U8(0).U8(9).U16(640).U16(512);
        b.U32(2).U32(1).U32(0xFFFFFFFC).U32(3).U8(1);  // top, left, bottom, right
        blockVersion ? b.Guid(kPixelType) : b.U32(0);
        b.U32(0xFFFFFFFB).U8(5).U8(2).U16(11).U16(12).U16(13).U16(14).U16(15);
        b.U64(130'000'000'000'000'000).U8(1);
        for (int i = 0; i < 12; ++i) text(Numbered(i));
        for (u8 i = 0; i < 4; ++i) Preset(b, i);
        return b;
    }
    /// `fixed` and what stands behind the twelfth text are of a form that has them.
    static std::string Values(const char* fixed, u32 type, const std::string& behind, u8 presets) {
        std::string text = std::string("-2 Camera \xC3\xA9 1 0 ") + fixed + "9 640 512 1 2 3 -4 1 " + Text(type) +
                           "-5 5 2 11 12 13 14 15 130000000000000000 1 ";
        for (int i = 0; i < 12; ++i) text += Numbered(i) + " ";
        text += behind;
        for (int i = 0; i < 8; ++i)
            text += i < presets ? Text(i & 1, 1.5 + i, 1, 2.5 + i, 0, 100 + i, 1, 3.5 + i, 4.5 + i)
                                : Text(0, 0, 0, 0, 0, 0, 0, 0, 0);
        return text;
    }
    static constexpr GUID kPixelType = "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid;
};

TEST(StoredForms, SourceInfo) {
    using CSource = CSourceInfoReduceObject;
    const u32 type = SSource::kPixelType.data1;
    const std::string behind = "t12 0.5 0.75 1 1.25 1.75 1 ";
    ExpectForm<CSource>(SSource::Record(2048, 0x20000, 8), 0x20000, SSource::Values("1 ", type, behind + "6 ", 8),
                        0x30000);
    CSource four, stream;
    ASSERT_TRUE(four.Load(FileOf(SSource::Record(1536, 0x1FFFF, 4)), 0x10001, 0));
    EXPECT_EQ(ValuesOf(four), SSource::Values("1 ", type, behind + "4 ", 4));
    EXPECT_EQ(four.version, 0x20000u);
    // Of a stream, what the form lacks stays, but for the last text.
    for (const u32 version : {0u, 1u, 0x10000u}) {
        ASSERT_TRUE(stream.Load(FileOf(SSource::Record(2048, 0x20000, 8)), 0x20000, 0));
        ASSERT_TRUE(stream.Load(FileOf(SSource::Stream(version)), version, 0));
        EXPECT_EQ(ValuesOf(stream),
                  SSource::Values("1 ", version ? type : rootIRType.data1, behind.substr(3) + "4 ", 8));
        for (std::size_t size = 0; size < SSource::Stream(version).bytes.size(); ++size)
            ASSERT_FALSE(CSource().Load(FileOf(SSource::Stream(version), size), version, 0)) << size;
    }
    const std::tuple<u32, u32, u32, std::size_t, bool> agreements[] = {
        // size, version, version of the block, bytes that are there; whether it loads
        {1536, 0x20000, 0x20000, 2048, false},   {2048, 0x10001, 0x10001, 2048, false},
        {1536, 0x20000, 0x1FFFF, 2048, false},   {1536, 0x10001, 0x10001, 1535, false},
        {2048, 0x20000, 0xFFFFFFFF, 2048, true},
    };
    for (const auto& [size, version, blockVersion, available, loads] : agreements)
        EXPECT_EQ(CSource().Load(FileOf(SSource::Record(size, version, 8), available), blockVersion, 0), loads) << size;
}

TEST(StoredForms, Correction) {
    CByteWriter tables = Floats(1.5f, 6);
    for (u32 i = 0; i < 6; ++i) tables.U16(0x10000 - i);
    for (u32 i = 0; i < 6; ++i) tables.U8(i);
    for (u32 i = 0; i < 6; ++i) tables.U32((i + 1) % 6);
    const CByteWriter size = CByteWriter().U32(3).U32(2).U8(7);
    const CByteWriter newest = Record(32, 0x10001, size).Append(tables);
    const std::string values = "3 2 7 1.5 0 0 1 2.5 -1 1 2 3.5 -2 2 3 4.5 -3 3 4 5.5 -4 4 5 6.5 -5 5 0 ";
    ExpectForm<CCorrectionReduceObject>(newest, 0x10001, values, 0x20000);
    ExpectForm<CCorrectionReduceObject>(CByteWriter(size).Append(tables), 0x10000, values, 0, &newest);
}

TEST(StoredForms, AbateCfg) {
    ExpectForm<CAbateCfgReduceObject>(AbateBlock({7, 6, 5, 4, 3, 2, 1, 0}, 0x20000, false), 0x20000,
                                      "0 1 7 100 200 6 101 201 5 102 202 4 103 203 3 104 204 2 105 205 1 106 206 "
                                      "0 107 207 ",
                                      0x30000);
    CAbateCfgReduceObject cfg;
    const std::string rest = "4 1000 15000 5 1000 15000 6 1000 15000 7 1000 15000 ";
    ASSERT_TRUE(cfg.Load(FileOf(AbateBlock({3, 1, 2, 0}, 0x1FFFF, false)), 0x10001, 0));
    EXPECT_EQ(ValuesOf(cfg), "0 1 3 100 200 1 101 201 2 102 202 0 103 203 " + rest);
    CByteWriter stream = CByteWriter().U8(1).U8(1);
    for (u8 p = 0; p < 4; ++p) stream.U16(100u + p).U16(200u + p);
    stream.U8(3).U8(2).U8(1).U8(0);
    ASSERT_TRUE(cfg.Load(FileOf(stream), 0x10000, 0));
    EXPECT_EQ(ValuesOf(cfg), "1 1 3 100 200 2 101 201 1 102 202 0 103 203 " + rest);
    for (std::size_t size = 0; size < stream.bytes.size(); ++size)
        EXPECT_FALSE(cfg.Load(FileOf(stream, size), 0x10000, 0)) << size;
}

TEST(StoredForms, CurlewCameraInfo) {
    CByteWriter bytes;
    for (u32 i = 0; i < 2428; ++i) bytes.U8(i * 7 + 1);
    bytes.U8(1);
    for (u32 i = 0; i < 32; ++i) bytes.U8(200 + i);
    bytes.U8(0);
    ExpectForm<CCurlewCameraInfoReduceObject>(bytes, 0x10000, "1 94 1 231 0 ");
    CCurlewCameraInfoReduceObject info;
    ASSERT_TRUE(info.Load(FileOf(bytes), 0x10000, 0));
    EXPECT_FALSE(info.Load(FileOf(bytes), 0x10001, 0));
    EXPECT_EQ(SavedBytes(info), std::vector<u8>(2462, 0)) << "at its defaults";
}

TEST(StoredForms, FactoryCalibrations) {
    const CByteWriter curlew =
        CByteWriter().F32(0.5f).U32(kMinus2).U32(kMinus2 - 1).F32(1.5f).U16(1).U16(2).U16(3).Append(Floats(10, 14));
    ExpectForm<CCurlewFactoryCalReduceObject>(curlew, 0x10000, "0.5 1.5 -2 -3 1 2 3 " + Counting(10, 14));
    CCurlewFactoryCalReduceObject cut;
    EXPECT_FALSE(cut.Load(FileOf(curlew, 77), 0x10000, 0));
    EXPECT_EQ(cut.radFitHighTemp, 22.0f) << "what was read stays";
    EXPECT_FALSE(cut.Load(FileOf(curlew), 0x10001, 0));
    EXPECT_EQ(cut.nonlinearGain, 0.0f);

    CByteWriter tern = Floats(1, 5).U32(1).Append(Floats(6, 12)).U16(0xABCD).Append(Floats(18, 25)).U16(0xFFFE);
    tern.Text("one", 32).Text("two", 16).Text("a text of 16 is.", 16);
    for (const char* text : {"four", "five", "six", "seven", "eight", "ten bytes."}) tern.Text(text, 10);
    tern.Text("ten", 32).F32(43);
    const CByteWriter newest = Record(512, 0x10001, tern);
    const std::string values = Counting(1, 43) + "1 43981 -2 onetwoa text of 16 is.fourfivesixseveneightten bytes.ten";
    ExpectForm<CTernFactoryCalReduceObject>(newest, 0x10001, values, 0x20000);
    ExpectForm<CTernFactoryCalReduceObject>(tern, 0x10000, values, 0, &newest);
}

CByteWriter MerlinTables(u32 count) {
    return count ? CByteWriter().F64(0.5).F64(1.5).F64(2.5).F64(-0.5).F64(-1.5).F64(-2.5) : CByteWriter();
}
CByteWriter MerlinBlock(u32 tableCount, const CByteWriter& tables) {
    CByteWriter bytes = CByteWriter().U32(kMinus2).Append(Doubles(1, 8)).U32(77).Append(Doubles(20, 9));
    bytes.Append(Doubles(9, 8)).Append(Floats(-10, 4)).U16(78).U16(79).U32(tableCount);
    return Record(512, 0x10001, bytes).Append(tables);
}
CByteWriter OldMerlin(u32 tableCount, const CByteWriter& tables) {
    CByteWriter bytes = CByteWriter().U32(kMinus2).Append(Doubles(1, 11)).U32(tableCount).Append(tables);
    return bytes.U32(77).Append(Doubles(20, 9)).Append(Doubles(12, 5)).Append(Floats(-10, 4)).U16(78).U16(79);
}

TEST(StoredForms, MerlinFactoryCal) {
    using CMerlin = CMerlinFactoryCalReduceObject;
    const std::string values = "-2 " + Counting(1, 16) + "-10 -9 -8 -7 77 78 79 " + Counting(20, 9);
    for (const u32 count : {3u, 0u, kMinus2}) {
        const CByteWriter tables = MerlinTables(count == 3 ? 3 : 0), newest = MerlinBlock(count == 3 ? 3 : 0, tables);
        const std::string all = values + (count == 3 ? "0.5 -0.5 1.5 -1.5 2.5 -2.5 " : "");
        ExpectForm<CMerlin>(MerlinBlock(count, tables), 0x10001, all, 0x20000, &newest);
        ExpectForm<CMerlin>(OldMerlin(count, tables), 0x10000, all, 0, &newest);
    }
    CMerlin cal;
    for (const u32 many : {4u, 0x10000000u, 0x7FFFFFFFu}) {
        EXPECT_FALSE(cal.Load(FileOf(MerlinBlock(many, MerlinTables(3))), 0x10001, 0)) << many;
        EXPECT_EQ(cal.tableCount, 0);
        EXPECT_FALSE(cal.Load(FileOf(OldMerlin(many, {})), 0x10000, 0)) << many;
    }
    // Copies share the tables, duplicates have their own.
    ASSERT_TRUE(cal.Load(FileOf(MerlinBlock(3, MerlinTables(3))), 0x10001, 0));
    const CMerlin shared = cal;
    const TSharedPtr<CMerlin> own = cal.Duplicate().Cast<CMerlin>();
    EXPECT_TRUE(shared.table1.get() == cal.table1.get() && own->table1.get() != cal.table1.get());
    EXPECT_NE(own->table2.get(), cal.table2.get());
    EXPECT_TRUE(cal.CreateLUT(5));
    EXPECT_EQ(cal.table2[4], 0.0);
    EXPECT_EQ(shared.tableCount, 3);
    EXPECT_TRUE(cal.CreateLUT(-1));
    EXPECT_FALSE(cal.table1);
}

TEST(StoredForms, Dunlin) {
    const auto camera = [](u8 last, u8 clock) {  // the newest form; the first one ends a byte before
        CByteWriter w = CByteWriter().Text("one", 20).Text("exactly 20 letters.", 19).U8(last).Text("", 20);
        w.Text("four", 20).Text("eleven lon", 10).U8(last ? 'g' : 0);
        return w.F32(1.5f).F32(-2).F32(3).F32(4).U8(5).U32(0xFFFFFFFA).U8(7).U8(8).U8(9).U8(10).U8(clock);
    };
    using CCamera = CDunlinCameraInfoReduceObject;
    // The last character of a full field gives way to a terminator.
    const CByteWriter newest = camera(0, 1);
    const std::string values = "one exactly 20 letters.  four eleven lon 1.5 -2 3 4 5 -6 7 8 9 10 ";
    ExpectForm<CCamera>(camera('.', 1), 0x10001, values + "1 ", 0, &newest);
    CByteWriter first = camera('.', 1);
    first.bytes.pop_back();
    const CByteWriter withoutClock = camera(0, 0);
    ExpectForm<CCamera>(first, 0x10000, values + "0 ", 0, &withoutClock);

    const CByteWriter cal = CByteWriter().U32(kMinus2).Append(Floats(1, 7)).U32(8).U32(9).Append(Floats(10, 4));
    ExpectForm<CDunlinFactoryCalReduceObject>(cal, 0x10000, "4294967294 1 2 3 4 5 6 7 8 9 10 11 12 13 ");
    CDunlinFrameInfoReduceObject frame;
    EXPECT_FALSE(frame.Load(FileOf(cal), 0x10000, 0));
    EXPECT_TRUE(SavedBytes(frame).empty());

    // Texts and the number outlive `Default`; copies end at the terminator.
    CCamera info;
    ASSERT_TRUE(info.Load(FileOf(newest), 0x10001, 0));
    info.text0[5] = 'x';
    info.valid = true;
    info.preset = 3;
    const auto copy = info.Duplicate().Cast<CCamera>();
    EXPECT_TRUE(copy->valid && copy->preset == 3 && copy->text0[5] == '\0');
    EXPECT_EQ(ValuesOf(*copy), values + "1 ");
    info.Default();
    EXPECT_EQ(ValuesOf(info), "one exactly 20 letters.  four eleven lon 0 0 0 0 0 -6 0 0 0 0 0 ");
    EXPECT_TRUE(!info.valid && info.preset == 3 && info.text0[5] == 'x');
}

TEST(StoredForms, RCalKeepsItsCalibrationThroughFilesCopiesAndDamage) {
    CRCalReduceObject object;
    object.valid = true;
    object.preset = 3;
    object.cal.SetPolynomial(6, 1, {0.5, 2});
    const auto copy = object.Duplicate().Cast<CRCalReduceObject>();
    CByteWriter stored;
    stored.bytes = SavedBytes(object);
    object.Default();
    EXPECT_TRUE(!object.valid && object.preset == 3 && !object.cal.HasCoefficients());
    EXPECT_TRUE(copy->valid && SavedBytes(*copy) == stored.bytes);
    EXPECT_TRUE(object.Load(FileOf(stored), 0x77777, 0) && SavedBytes(object) == stored.bytes);
    EXPECT_TRUE(!object.Load(FileOf(stored, stored.bytes.size() - 1), 0x10000, 0) && object.cal.HasCoefficients());
}

}  // namespace
}  // namespace ovix::reduce
