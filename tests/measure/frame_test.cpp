#include <gtest/gtest.h>

#include "support/text.h"
#include "turning_camera.h"

namespace ovix::measure {
namespace {

using namespace test;

TEST(Frame, SaysWhatItCarriesAndNothingElse) {
    const CSourceFolder folder;
    const SK410Container container{.record = {.width = kWidth}};
    const std::vector<u16> pixels = Ramp(kWidth * kHeight);
    // 2023-11-14 22:13:20.250 UTC, the record's own.
    const Time recorded(Time(std::chrono::seconds(1'700'000'000)) + std::chrono::milliseconds(250));
    const std::tuple<const char*, Bytes, std::optional<Time>, std::optional<u64>> cases[] = {
        {kGigE, PlainFrame(pixels, container), recorded, 0x1234},
        {kGigE, DigitalFrame(pixels, {}, container), {}, 0x1234},
        {"counts", PixelBytes(pixels), {}, {}},
        {"counts-be", PixelBytes(pixels, true), {}, {}}};
    for (const auto& [type, bytes, time, counter] : cases) {
        const CSource source = Open(folder.Put("dump", bytes), AsDump(type));
        const CFrame frame = CMeasurement(source, {.quantity = EQuantity::Counts}).Measure(0);
        EXPECT_TRUE(frame.time == time && frame.counter == counter) << type;
        EXPECT_TRUE(std::equal(frame.values.begin(), frame.values.end(), pixels.begin(), pixels.end())) << type;
    }
}

TEST(Frame, CountsThePixelsOfARegion) {
    CFrame frame;
    frame.width = 5, frame.height = 3;
    frame.values = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    frame.status = {0, 0, 0, 0, 0, 2, 0, 34, 8, 0, 0, 0, 0, 16, 1};
    const SRegionStats part = frame.Statistics({.name = "part", .x = 1, .y = 1, .width = 4, .height = 2});
    // Of 7 8 9 10 12 13 14 15 all but 9 and 14.
    EXPECT_EQ(Text(part.pixels, part.count, part.sum, part.minimum, part.maximum, part.good), "8 6 65 7 15 4 ");
    EXPECT_EQ(part.mean, 65.0 / 6);
    EXPECT_EQ(part.flagged, (std::array<u32, 8>{1, 1, 0, 1, 1, 1, 0, 0}));
    EXPECT_TRUE(frame.Statistics().pixels == 15 && frame.Statistics().flagged[1] == 2);
    for (const SRegion& beyond : {SRegion{.x = 2, .width = 4, .height = 1}, SRegion{.y = 3, .width = 1, .height = 1},
                                  SRegion{.width = 1}, SRegion{.x = 65535, .width = 65535, .height = 1}})
        EXPECT_EQ(IdOf([&] { frame.Statistics(beyond); }), EError::WrongArgument);

    frame.values.assign(15, 0.1f);
    EXPECT_EQ(frame.Statistics().standardDeviation, 0) << "a root of less than nothing";
}

TEST(Measurement, OffersWhatTheSourceCanGive) {
    const CTurningDump dump({{.counts = {1, 2, 3, 4}}, {.preset = 9}, {.preset = 1, .counts = {1, 2, 3, 4}}});
    const CMeasurement counts(dump.Source(), {});
    EXPECT_TRUE(counts.Unit() == Counts && counts.Offered() == std::vector<EUnit>{Counts});
    const SErrorFacts facts = FactsOf([&] { CMeasurement(dump.Source(), {.quantity = EQuantity::Temperature}); });
    EXPECT_TRUE(facts.id == EError::UnitNotOffered && !facts.frame);
    EXPECT_NE(facts.problem.find("it can give counts"), std::string::npos) << facts.problem;
    EXPECT_EQ(IdOf([&] { CMeasurement(dump.Source(), {.calibration = ECalibration::User}); }), EError::UnitNotOffered);

    SMeasureOptions user = TurningRadiance(1);
    EXPECT_EQ(CMeasurement(dump.Source(), user).Unit(), RadianceUser);
    EXPECT_NEAR(CMeasurement(dump.Source(), user).Measure(0).values[3], 4 * kRadiancePerCount, 1e-12);
    user.scene.atmosphereTrans = 0.5f;
    EXPECT_NEAR(CMeasurement(dump.Source(), user).Measure(0).values[3], 8 * kRadiancePerCount, 1e-12);
    user.quantity.reset();
    EXPECT_EQ(CMeasurement(dump.Source(), user).Unit(), TemperatureUser);
    EXPECT_EQ(IdOf([&] { CMeasurement(dump.Source(), user).Measure(2); }), EError::NoCalibration);
    EXPECT_EQ(IdOf([&] { counts.Measure(1); }), EError::PresetOutOfRange);
    EXPECT_EQ(IdOf([&] { counts.Measure(3); }), EError::NoSuchFrame);

    // A frame can go from one measurement to another.
    CFrame frame;
    counts.Measure(0, frame);
    CMeasurement(dump.Source(), TurningRadiance(1)).Measure(0, frame);
    EXPECT_EQ(frame.unit, RadianceUser);
    counts.Measure(0, frame);
    EXPECT_EQ(frame.values, (std::vector<float>{1, 2, 3, 4}));

    const CTurningDump bad({{.preset = 200}, {.preset = 201}});
    EXPECT_EQ(FactsOf([&] { CMeasurement(bad.Source(), {}); }).frame, 0u) << "not one frame will do";
}

TEST(Measurement, CorrectsCountsByTheTablesOfTheirPreset) {
    const CSourceFolder folder;
    reduce::CCorrectionReduceObject tables;
    const auto save = [&](const char* stem, u16 width, float gain) {
        tables.Create(width, 2, -1, reduce::CorrectionGain);
        std::fill_n(tables.gain.get(), 2 * width, gain);
        tables.present = reduce::CorrectionGain;
        EXPECT_TRUE(tables.Save(FileSystem, folder.Path(stem)));
        return folder.At(stem).string();
    };
    const std::string all = save("all", 2, 2), second = save("second", 2, 3), wide = save("wide", 3, 2);
    const CTurningDump dump({{.counts = {1, 2, 3, 4}}, {.preset = 1, .counts = {1, 2, 3, 9000}}});
    SMeasureOptions options{.corrections = {{.stem = all}, {.preset = 1, .stem = second}}};
    const CMeasurement corrected(dump.Source(), options);
    EXPECT_EQ(corrected.Measure(0).values, (std::vector<float>{2, 4, 6, 8}));
    EXPECT_EQ(corrected.Measure(1).values, (std::vector<float>{3, 6, 9, 16383}));
    options.clip = SClip{.on = true, .low = 5, .high = 7};
    EXPECT_EQ(CMeasurement(dump.Source(), options).Measure(0).values, (std::vector<float>{5, 5, 6, 7}));
    options.clip.reset();
    options.correct = false;
    EXPECT_EQ(CMeasurement(dump.Source(), options).Measure(0).values, (std::vector<float>{1, 2, 3, 4}));

    const auto with = [&](SMeasureOptions wrong) { return IdOf([&] { CMeasurement(dump.Source(), wrong); }); };
    EXPECT_EQ(with({.corrections = {{.stem = wide}}}), EError::CorrectionUnusable);
    EXPECT_EQ(with({.corrections = {{.stem = folder.At("none")}}}), EError::FileMissing);
    EXPECT_EQ(with({.clip = SClip{}}), EError::WrongArgument);
    folder.Put("all.mvo", Bytes(100));
    EXPECT_EQ(with({.corrections = {{.stem = all}}}), EError::CorrectionUnusable) << "one that is there is meant";
}

TEST(Measurement, KnowsTheSceneThatARecordingWasGiven) {
    const CSourceFolder folder;
    const auto path =
        folder.Put("run.krt", RecordingOf(2, [](reduce::CReduceObjectArray& objects) {
                       Bytes frame = NumberedFrame(0);
                       u8 preset = 0;
                       reduce::filterFactory()->Create(L"K410")->ParseReduceObjects(
                           frame.data(), kK410GigE, kWidth, kHeight, static_cast<u32>(frame.size()), objects, preset);
                       objects.GetObjectParameters(true)->emissivity = 0.5f;  // by who recorded it
                   }));
    SMeasureOptions options = TurningRadiance(1);
    options.calibration = ECalibration::User;
    const CFrame frame = CMeasurement(Open(path), options).Measure(1);
    for (const SParameter& p : frame.Parameters())
        EXPECT_TRUE(p.key != "emissivity" || (p.value == 0.5 && p.origin == EOrigin::File)) << p.value;
    EXPECT_EQ(frame.Parameters().size(), 2u) << "a user calibration knows of emissivity and transmission";
}

}  // namespace
}  // namespace ovix::measure
