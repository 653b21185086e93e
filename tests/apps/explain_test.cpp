// The way of one pixel, as a user asks for it.

#include <cmath>

#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;

class Explain : public ::testing::Test {
  protected:
    Explain() { folder.Synthesise(); }
    Json Walk(const Arguments& more) const {
        return folder.Doc(command + Arguments{"--frame", "1", "--at", "20,30"} + more);
    }
    static const Json& Named(const Json& list, const char* key, const std::string& name) {
        static const Json none;
        for (const Json& entry : list)
            if (entry[key] == name) return entry;
        ADD_FAILURE() << name << " is not in " << list;
        return none;
    }

    CToolFolder folder;
    const Arguments command = Arguments{"explain"} + Dump();
};

TEST_F(Explain, FollowsThePixelByTheCalibrationThatItShows) {
    const Arguments scene = {"--emissivity", "0.8", "--atmosphere-trans", "0.9", "--reflected-temp", "17C"};
    const Json walk = Walk(scene);
    EXPECT_TRUE(walk["schema"] == 1 && walk["frame"] == 1 && walk["x"] == 20 && walk["y"] == 30);
    // The scene, and who said it.
    const auto parameter = [&](const char* name) { return Named(walk["parameters"], "name", name); };
    EXPECT_TRUE(parameter("emissivity")["value"] == 0.8 && parameter("reflected temperature")["unit"] == "K");
    for (const char* name : {"emissivity", "atmosphere transmission", "distance"})
        EXPECT_EQ(parameter(name)["from"], *name == 'd' ? "frame" : "command line") << name;

    // Count to temperature once more, from what is shown.
    const Json& cal = walk["calibration"];
    ASSERT_EQ(cal["model"], "Curlew (factory)");
    ASSERT_EQ(cal["nonlinear"], false);
    const double R = cal["planckR"], B = cal["planckBKelvin"], F = cal["planckF"];
    const auto signalOf = [&](double kelvin) { return R / (std::exp(B / kelvin) - F); };
    const auto value = [&](const char* name) { return parameter(name)["value"].get<double>(); };
    const double e = 0.8, t = 0.9, x = value("external optics transmission");
    double K2 = (1 - e) / e * signalOf(290.15) + (1 - t) / (t * e) * signalOf(value("atmosphere temperature"));
    if (x < 1) K2 += (1 - x) / (x * t * e) * signalOf(value("external optics temperature"));
    const double count = Named(walk["steps"], "step", "counts as recorded")["value"];
    const double pow = (count + cal["offsetCounts"].get<double>()) * cal["gain"].get<double>();
    const double signal = pow / (e * t * x) - K2;
    EXPECT_NEAR(Named(walk["steps"], "step", "signal")["value"], signal, 1e-3);
    const Json& temperature = Named(walk["steps"], "step", "temperature (factory)");
    EXPECT_NEAR(temperature["value"], B / std::log(R / signal + F) - 273.15, 1e-3);
    EXPECT_EQ(temperature["unit"], "°C");
    EXPECT_GT(Named(walk["steps"], "step", "radiance (factory)")["value"], 0.0);

    const Json stats = folder.Doc(Arguments{"stats", "--frames", "1", "--roi", "20,30,1,1"} + Dump() + scene);
    EXPECT_EQ(stats["rows"][0]["max"]["value"], temperature["value"]);
}

TEST_F(Explain, ShowsAnotherSceneSideBySide) {
    const Json walk = Walk({"--scale", "F", "--set", "emissivity=0.5", "--set", "reflected-temp=10C"});
    const Json apart = Walk({"--scale", "F", "--emissivity", "0.5", "--reflected-temp", "10C"});
    for (const Json& step : walk["steps"]) {
        const Json& other = Named(apart["steps"], "step", step["step"]);
        EXPECT_EQ(step["changed"]["value"], other["value"]);
        EXPECT_EQ(step["changed"]["status"], other["status"]);
        EXPECT_NEAR(step["changed"]["change"], other["value"].get<double>() - step["value"].get<double>(), 1e-9);
    }
    const Json& emissivity = Named(walk["parameters"], "name", "emissivity");
    EXPECT_EQ(Json({emissivity["from"], emissivity["changed"]["value"], emissivity["changed"]["from"]}),
              Json({"frame", 0.5, "command line"}));
    EXPECT_EQ(Named(walk["steps"], "step", "counts as recorded")["changed"]["change"], 0.0);
    EXPECT_EQ(Named(walk["steps"], "step", "temperature (factory)")["changed"]["changeUnit"], "°F");

    const Json computed = Walk({"--set", "atmosphere-trans=0", "--set", "distance=50"});
    const Json& air = Named(computed["parameters"], "name", "atmosphere transmission");
    EXPECT_EQ(air["changed"]["from"], "computed");
    EXPECT_GT(air["changed"]["value"], 0.4);
    EXPECT_LT(air["changed"]["value"], 1.0);
}

TEST_F(Explain, ForAReader) {
    const std::string text =
        folder.Do(command + Arguments{"--at", "20,30", "--set", "emissivity=0.5", "--unit", "signal"});
    for (const char* part : {"dump.raw, frame 0, pixel (20, 30), preset 0", "counts as recorded", "good", "emissivity",
                             "command line", "file", "Calibration, from the file", "planck B"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
    EXPECT_EQ(text.find("temperature (factory)"), std::string::npos);  // the way ends before
    // Statuses in words: nothing is as cold as this calibration's end.
    const Json cold = Walk({"--emissivity", "0.01", "--atmosphere-trans", "1", "--reflected-temp", "60C"});
    EXPECT_FALSE(Named(cold["steps"], "step", "temperature (factory)")["status"].empty());
}

TEST_F(Explain, RefusesWhatNamesNoPixelAndNoValue) {
    const std::pair<Arguments, const char*> kCases[] = {
        {{}, "--at"},
        {{"--at", "64,0"}, "64 x 48"},
        {{"--at", "1;2"}, "--at"},
        {{"--at", "1,2", "--frame", "0-1"}, "--frame: expected one frame"},
        {{"--at", "1,2", "--frame", "9"}, "there is no frame 9"},
        {{"--at", "1,2", "--set", "emissivity"}, "NAME=VALUE"},
        {{"--at", "1,2", "--set", "emisivity=1"}, "emissivity"},
        {{"--at", "1,2", "--set", "emissivity=7"}, "0.001"},
        {{"--at", "1,2", "--unit", "red"}, "red"}};
    for (const auto& [arguments, says] : kCases) {
        const SToolRun run = folder.Run(command + arguments);
        EXPECT_NE(run.status, 0) << says;
        EXPECT_NE(run.error.find(says), std::string::npos) << run.error;
        EXPECT_EQ(run.ErrorLines(), 1) << run.error;
    }
}

}  // namespace
}  // namespace ovix::app
