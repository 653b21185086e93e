// A user calibration from black bodies to temperatures, as a user meets it.

#include "apps/ovix/facts/user_calibration.h"
#include "apps/ovix/fault.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;

constexpr u32 kPixels = 64 * 48;
const Arguments kDump = Dump();
/// Nothing between camera and scene, and a scene of black bodies.
const Arguments kBlack = {"--emissivity", "1", "--atmosphere-trans", "1", "--scale", "K"};

/// A frame of a known scene and what an experimenter would note of it: counts of black bodies at some temperatures.
class Calibrate : public ::testing::Test {
  protected:
    void SetUp() override {
        folder.Do(Arguments{"synth", "-o"} + kDump + Arguments{"--clean", "--truth", "truth.npy"});
        folder.Do(Arguments{"convert"} + kDump + Arguments{"--unit", "counts", "-o", "counts.npy"});
        truth = ReadArray<float>(folder.At("truth.npy"));
        counts = ReadArray<float>(folder.At("counts.npy"));
        ASSERT_EQ(truth.size(), kPixels);
        std::vector<u32> order;
        for (u32 i = 0; i < kPixels; ++i) order.push_back(i);
        std::sort(order.begin(), order.end(), [&](u32 a, u32 b) { return truth[a] < truth[b]; });
        std::string lines = "counts,temperature (K)\n# between the coldest and the hottest\n";
        float last = 0;
        for (const u32 i : order) {
            if (truth[i] < last + 3 && i != order.back()) continue;
            last = truth[i];
            lines += std::to_string(counts[i]) + ',' + std::to_string(truth[i]) + '\n';
        }
        WriteText(folder.At("points.csv"), lines);
    }
    Json Fit(const Arguments& more = {}) { return folder.Doc(kFit + more); }

    CToolFolder folder;
    std::vector<float> truth, counts;
    const Arguments kFit = {"calibrate", "points.csv", "--band", "8,12", "--overwrite", "-o", "cal.json"};
};

TEST_F(Calibrate, MeasuresTheSceneThatItWasFittedTo) {
    const std::pair<Arguments, double> kCases[] = {{{}, 0.3},
                                                   {{"--order", "4"}, 0.1},
                                                   {{"--order", "4", "--to-temperature", "polynomial"}, 0.1},
                                                   {{"--order", "6"}, 0.1}};
    for (const auto& [options, tolerance] : kCases) {
        SCOPED_TRACE(::testing::PrintToString(options));
        const Json fit = Fit(options);
        EXPECT_LT(fit["presets"][0]["largestKelvin"], tolerance);
        EXPECT_TRUE(fit["presets"][0]["steady"]);
        folder.Do(Arguments{"convert", "--user-cal", "cal.json", "-o", "user.npy", "--overwrite"} + kDump + kBlack);
        const std::vector<float> measured = ReadArray<float>(folder.At("user.npy"));
        for (u32 i = 0; i < kPixels; ++i) ASSERT_NEAR(measured[i], truth[i], tolerance) << i;
    }
    // A recording takes the calibration along.
    folder.Do(Arguments{"record"} + kDump + Arguments{"--user-cal", "cal.json", "-o", "run.krt"});
    folder.Do(Arguments{"convert", "run.krt", "--cal", "user", "-o", "recorded.npy"} + kBlack);
    EXPECT_EQ(ReadArray<float>(folder.At("recorded.npy")), ReadArray<float>(folder.At("user.npy")));
    // Planck's law at the middle of a wide band is a rough value only.
    EXPECT_LT(Fit({"--to-temperature", "planck"})["presets"][0]["largestKelvin"], 10);
}

TEST_F(Calibrate, SaysWhatItFoundWithUnits) {
    const std::string table = folder.Do(kFit + Arguments{"--scale", "F"});
    for (const char* part : {"Black body (°F)", "Radiance (W/(cm² sr))", "preset 0: ", "residuals: rms "})
        EXPECT_NE(table.find(part), std::string::npos) << part;
    const Json cal = Json::parse(ReadText(folder.At("cal.json")));
    EXPECT_TRUE(cal["schema"] == 1 && cal["bandMicrometres"] == Json({8, 12}));
    EXPECT_EQ(cal["presets"][0]["order"], 5) << "an order whose powers do not wrap";
    EXPECT_EQ(cal["presets"][0]["coefficients"][3], 0);
}

TEST_F(Calibrate, TheSourceDecidesWhichUnitsAreOnOffer) {
    Fit();
    const Json info = folder.Doc(Arguments{"info", "--user-cal", "cal.json"} + kDump);
    for (const char* unit : {"temperature (factory)", "temperature (user)", "radiance (user)"})
        EXPECT_NE(std::find(info["units"].begin(), info["units"].end(), unit), info["units"].end()) << unit;
    EXPECT_EQ(info["userCalibration"]["temperatureBy"], "table");

    const auto unit = [&](const Arguments& more) {
        return folder.Doc(Arguments{"stats"} + kDump + more)["parameters"]["unit"];
    };
    EXPECT_EQ(unit({}), "temperature (factory)");
    EXPECT_EQ(unit({"--user-cal", "cal.json"}), "temperature (user)");
    EXPECT_EQ(folder.Run(Arguments{"stats", "--user-cal", "cal.json", "--cal", "factory"} + kDump).status, 2);
    EXPECT_EQ(unit({"--user-cal", "cal.json", "--unit", "radiance"}), "radiance (user)");
    const SToolRun without = folder.Run(Arguments{"stats"} + kDump + Arguments{"--cal", "user"});
    EXPECT_EQ(without.status, 1);
    EXPECT_EQ(without.ErrorLines(), 1) << without.error;

    Json other = Json::parse(ReadText(folder.At("cal.json")));
    other["presets"][0]["preset"] = 1;
    WriteText(folder.At("other.json"), other.dump());
    const SToolRun stranger = folder.Run(Arguments{"stats"} + kDump + Arguments{"--user-cal", "other.json"});
    EXPECT_EQ(stranger.status, 1);
    EXPECT_NE(stranger.error.find("preset 0"), std::string::npos) << stranger.error;
}

TEST_F(Calibrate, ExplainWalksByTheCalibrationThatWasGiven) {
    Fit();
    const auto explain = [&](const Arguments& more) {
        return folder.Doc(Arguments{"explain", "--at", "20,30"} + kDump + more);
    };
    const Json walk = explain({"--user-cal", "cal.json", "--atmosphere-trans", "0.5"});
    ASSERT_EQ(walk["steps"].size(), 3u) << walk;
    EXPECT_EQ(Json({walk["steps"][1]["step"], walk["steps"][2]["step"], walk["calibrationFrom"]}),
              Json({"radiance (user)", "temperature (user)", "command line"}));
    double radiance = 0, power = 1;
    for (const double a : walk["calibration"]["coefficients"].get<std::vector<double>>()) {
        radiance += a * power;
        power *= walk["steps"][0]["value"].get<double>();
    }
    EXPECT_NEAR(walk["steps"][1]["value"], 2 * radiance, 1e-8);  // half of it was lost in the air
    EXPECT_EQ(explain({"--user-cal", "cal.json", "--cal", "factory"}).at("steps").back()["step"],
              "temperature (factory)");
}

TEST_F(Calibrate, PointsThatWouldNotDo) {
    const std::pair<const char*, const char*> kCases[] = {
        {"5000,20\n", "line 1"},
        {"counts,temperature (°C)\n5000,20\nmany,30\n", "line 3"},
        {"5000,20C\n6000,-300C\n", "line 2"},
        {"5000,20C,8\n", "preset from 0 to 7"},
        {"5000\n", "line 1"},
        {"\n# nothing\n", "no pair"},
        {"counts,temperature\n5000,20\n", "--scale"},
        {"5000,20K\n6000,30K\n7000,40K\n", "between 100 K and 5000 K"},
        {"1e300,20C\n2e300,30C\n3e300,40C\n", "counts"},
        {"5000,20C\n6000,20C\n7000,20C\n", "two temperatures"},
        {"5000,20C\n6000,30C\n", "do not determine"}};
    for (const auto& [text, says] : kCases) {
        WriteText(folder.At("bad.csv"), text);
        const SToolRun run = folder.Run({"calibrate", "bad.csv", "--band", "8,12", "-o", "bad.json"});
        EXPECT_EQ(run.status, 1) << text;
        EXPECT_NE(run.error.find(says), std::string::npos) << run.error;
        EXPECT_EQ(run.ErrorLines(), 1) << run.error;
    }
    for (const Arguments& wrong : {Arguments{"--band", "12,8"}, Arguments{"--band", "8,12", "--order", "10"},
                                   Arguments{"--band", "8,12", "--preset", "8"}})
        EXPECT_EQ(folder.Run(Arguments{"calibrate", "points.csv", "-o", "bad.json"} + wrong).status, 2);
    EXPECT_FALSE(std::filesystem::exists(folder.At("bad.json")));
    // Scales of their own, a semicolon, a byte order mark, and presets.
    WriteText(folder.At("good.csv"),
              "\xEF\xBB\xBF"
              "5000;20C\r\n6000;86 °F\r\n7000;313.15K;0\r\n5000;20C;3\n6000;30C;3\n7000;572.67R;3\n");
    const Json fit = folder.Doc({"calibrate", "good.csv", "--band", "8,12", "--order", "1", "-o", "good.json"});
    ASSERT_EQ(fit["presets"].size(), 2u);
    for (const u32 i : {0u, 1u, 2u})
        EXPECT_NEAR(fit["presets"][1]["points"][i]["blackBodyCelsius"].get<double>(),
                    fit["presets"][0]["points"][i]["blackBodyCelsius"].get<double>(), 6);
    EXPECT_NEAR(fit["presets"][1]["points"][2]["blackBodyCelsius"].get<double>(), 45, 1e-9);
}

TEST(UserCalibration, FilesComeBackAndDamageIsNamed) {
    const CToolFolder folder;
    const std::filesystem::path path = folder.At("cal.json");
    CRCalFile calibration;
    calibration.SetBandpass(3.5, 5);
    calibration.SetPolynomial(2, -2, {-0.25, 1e-7});
    calibration.SetBackgroundValue(2, 120.5);
    calibration.SetTempPolynomial(2, 1, {-40, 3000});
    calibration.SetPolynomial(7, 1, {0.1, 2e-7});
    calibration.SetLookup(7, {0.001, 0.002}, {20, 30});
    const Json good = UserCalibrationDocument(calibration);
    WriteText(path, good.dump());

    const CRCalFile read = ReadUserCalibration(path);
    EXPECT_EQ(UserCalibrationDocument(read), good);
    double background = 0;
    EXPECT_TRUE(read.GetBackgroundValue(2, background));
    EXPECT_EQ(background, 120.5);

    const std::tuple<const char*, Json, const char*> kCases[] = {
        {"/schema", 2, "schema"},
        {"/kind", "a cake", "kind"},
        {"/radianceUnit", "W/(m² sr)", "radianceUnit"},
        {"/bandMicrometres", Json({5, 3}), "bandMicrometres"},
        {"/bandMicrometres/0", "3", "bandMicrometres[0]"},
        {"/presets", Json::array(), "presets"},
        {"/presets/0/preset", 8, "presets[0].preset"},
        {"/presets/0/order", 1.5, "presets[0].order"},
        {"/presets/0/order", ~u64{1}, "presets[0].order"},  // -2 in 64 bits
        {"/presets/1/preset", 2, "presets[1].preset"},
        {"/presets/1/order", 3, "presets[1]"},
        {"/presets/1/coefficients", nullptr, "presets[1].coefficients"},
        {"/presets/1/temperatureTable/radiances", Json({2, 1}), "presets[1].temperatureTable"},
        {"/presets/1/temperatureTable/celsius", Json({2}), "presets[1].temperatureTable"},
        {"/presets/1/temperatureTable/celsius", Json({30, 20}), "presets[1].temperatureTable"},
        {"/presets/0/temperatureCoefficients", Json({2}), "presets[0].temperatureCoefficients"}};
    const auto expectFault = [&](const std::string& text, const char* says) {
        WriteText(path, text);
        std::string line;
        EXPECT_NE(ExitOf([&] { ReadUserCalibration(path); }, &line), ExitDone) << text;
        EXPECT_NE(line.find(says), std::string::npos) << line;
    };
    for (const auto& [pointer, value, says] : kCases) {
        Json bad = good;
        bad[Json::json_pointer(pointer)] = value;
        expectFault(bad.dump(), says);
    }
    expectFault("{\"kind\":" + std::string(1'000'000, '[') + std::string(1'000'000, ']') + '}', "kind");
    expectFault("{\"schema\": ", "JSON");
    expectFault("[1]", "object");
    expectFault(good.dump().replace(good.dump().find("120.5"), 5, "1e999"), "JSON");
    EXPECT_THROW(ReadUserCalibration((path / "none").string()), CFault);
}

}  // namespace
}  // namespace ovix::app
