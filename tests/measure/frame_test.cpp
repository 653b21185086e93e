#include <cmath>
#include <numeric>

#include "measure/error.h"
#include "measure/frame/distribution.h"
#include "measure/frame/pixel_figures.h"
#include "measure/frame/pixel_set.h"
#include "support/text.h"
#include "turning_camera.h"

namespace ovix::measure {
namespace {

using namespace test;

TEST(Frame, SaysWhatItCarriesAndNothingElse) {
    const CTestFolder folder;
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
    const CTestFolder folder;
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
    const CTestFolder folder;
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

/// The six lines of a frame of 8 pixels, with a # for each pixel of the shape.
std::string Drawn(const CPixelSet& pixels) {
    std::string picture = "........ ........ ........ ........ ........ ........";
    for (const reduce::SScanLine& line : pixels.Lines()) {
        for (u16 x = line.left; x <= line.right; ++x) {
            EXPECT_EQ(picture[line.row * 9u + x], '.') << "a pixel twice";
            picture[line.row * 9u + x] = '#';
        }
    }
    EXPECT_EQ(std::ranges::count(picture, '#'), pixels.Count());
    return picture;
}

TEST(PixelSet, ShapesHoldThePixelsThatTheirDefinitionsName) {
    const std::pair<SShape, const char*> cases[] = {
        {{"spot", EShape::Spot, {{7, 5}}}, "........ ........ ........ ........ ........ .......#"},
        {{"steep", EShape::Line, {{1, 0}, {3, 4}}}, ".#...... ..#..... ..#..... ...#.... ...#.... ........"},
        {{"circle", EShape::Circle, {{2, 2}}, 2}, "..#..... .###.... #####... .###.... ..#..... ........"},
        {{"over the edge", EShape::Circle, {{7, 0}}, 1.5}, "......## ......## ........ ........ ........ ........"},
        {{"triangle", EShape::Polygon, {{0, 0}, {4, 0}, {0, 4}}},
         "#####... ####.... ###..... ##...... #....... ........"},
        {{"notched", EShape::Polygon, {{0, 0}, {6, 0}, {6, 4}, {3, 1}, {0, 4}}},
         "#######. #######. ###.###. ##...##. #.....#. ........"},
        {SShape::Rectangle("box", 6, 4, 2, 2), "........ ........ ........ ........ ......## ......##"}};
    for (const auto& [shape, picture] : cases) EXPECT_EQ(Drawn(CPixelSet(shape, 8, 6)), picture) << shape.name;
    // The other way round the pixels are the same number, from the other end on.
    const auto back = LinePixels({3, 4}, {1, 0});
    EXPECT_TRUE(back.size() == 5 && back.front() == (SPoint{3, 4}));
    const SShape spot{"", EShape::Spot, {{8, 0}}}, line{"", EShape::Line, {{0, 0}}};
    const SShape polygon{"", EShape::Polygon, {{0, 0}, {1, 1}}}, circle{"", EShape::Circle, {{0, 0}}, std::nan("")};
    for (const SShape& bad : {spot, line, polygon, circle, SShape{"", EShape::Circle, {{0, 0}}, -1}})
        EXPECT_THROW(CPixelSet(bad, 8, 6), CError);
}

TEST(PixelSet, FiguresAreOfItsPixelsAndEachOfThemCountsUnderOneFlag) {
    CFrame frame;
    frame.width = 4;
    frame.height = 2;
    frame.values = {1, 2, 3, 99, 5, 6, 7, -50};
    frame.status = {0, 0, 1 | 4, 8, 0, 2, 0, 32};
    const CPixelSet ell({"ell", EShape::Polygon, {{0, 0}, {3, 0}, {3, 1}}}, 4, 2);  // all but 5 and 6
    const SPixelFigures counted = FiguresOf(frame, ell);
    EXPECT_EQ(Text(ell.Count(), counted.pixels, counted.count), "6 6 5 ");  // the pixel of 99 never counts
    EXPECT_TRUE(counted.minimum == -50 && counted.minimumPosition == (SPoint{3, 1}));
    EXPECT_EQ(std::accumulate(counted.byHighestFlag.begin(), counted.byHighestFlag.end(), counted.good), ell.Count());
    EXPECT_EQ(Text(counted.byHighestFlag[2], counted.byHighestFlag[0], counted.flagged[0]), "1 0 1 ");

    const CPixelSet all(SShape::Rectangle("all", 0, 0, 4, 2), 4, 2);
    const SPixelFigures good = FiguresOf(frame, all, EPixels::Good);
    EXPECT_EQ(Text(good.count, good.good, good.minimum, good.maximum, good.mean), "4 4 1 7 3.75 ");
    EXPECT_EQ(good.byHighestFlag[5], 1u);  // of all pixels, not of the good ones
    EXPECT_EQ(ValuesOf(frame, all, EPixels::Good), (std::vector<float>{1, 2, 5, 7}));
    EXPECT_EQ(ValuesOf(frame, all).size(), 7u);
    EXPECT_THROW(FiguresOf(frame, CPixelSet({"", EShape::Spot, {{0, 0}}}, 5, 2)), CError);
}

TEST(Distribution, PercentilesAndStepsFollowTheirDefinitions) {
    const std::vector<float> sorted = {1, 2, 4, 8, 16};
    const std::pair<double, double> cases[] = {{0, 1}, {25, 2}, {50, 4}, {90, 12.8}, {100, 16}, {12.5, 1.5}};
    for (const auto& [percent, value] : cases) EXPECT_DOUBLE_EQ(Percentile(sorted, percent), value) << percent;
    EXPECT_TRUE(std::isnan(Percentile({}, 50)));

    const SHistogram own = MakeHistogram(sorted, 3);
    EXPECT_TRUE(own.counts == (std::vector<u64>{3, 1, 1}) && own.Edge(1) == 6);
    const std::vector<float> values = {-1, 0, 9.99f, 10, 20, 20.5f, NAN};
    const SHistogram told = MakeHistogram(values, 2, 0, 20);
    EXPECT_TRUE(told.counts == (std::vector<u64>{2, 2}) && told.below == 1 && told.above == 1);
    EXPECT_EQ(MakeHistogram(std::vector<float>{3, 3}, 10).counts, (std::vector<u64>{2}));
}

}  // namespace
}  // namespace ovix::measure
