// The families with a header line, and those with a trailer and a plain response, the whole way: a scene, frames, a
// recording, and back to counts and temperatures.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "apps/ovix/app_error.h"
#include "apps/ovix/synth/synth.h"
#include "measure/measure.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using Json = nlohmann::json;
using test::CToolFolder;
using Arguments = std::vector<std::string>;

constexpr u16 kWidth = 160, kHeight = 40;

Arguments operator+(Arguments a, const Arguments& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

double Linear(double kelvin) { return 100 * (kelvin - 253.15); }
double Planck(double kelvin) { return 500 + 3e8 / (std::exp(3597 / kelvin) - 1); }

struct SFamily {
    const char *type, *decoder;
    double (*count)(double kelvin);
    const char* name;  ///< of a value of the last frame
    double value;
};
const SFamily kFamilies[] = {{"IACF", "Osprey", Planck, "OS_IntegrationTime", 2},
                             {"LOR-RA", "LOR-RA", Linear, "ChassisTemp", 31.5},
                             {"LOR-SB", "LOR-SB", Linear, "IHFOV", 280},
                             {"MVF", "MVFalcon", Linear, "MV9100_FrameRate", 50},
                             {"Lapwing", "Lapwing", Linear, "SensorTemp[0]", 297.4},
                             {"Wren", "Wren", Linear, "SensorTemp[3]", 299}};

TEST(HeaderLineSynth, WholeWayToCounts) {
    for (const SFamily& family : kFamilies) {
        SCOPED_TRACE(family.type);
        const CToolFolder folder;
        const Arguments dump = {"dump.raw", "--pixel-type", family.type, "--size", "160x40"};
        folder.Do(Arguments{"synth", "--count", "3", "--clean", "--truth", "truth.npy", "-o"} + dump);
        folder.Do(Arguments{"record", "-o", "run.krt"} + dump);
        folder.Do({"verify", "run.krt"});
        folder.Do({"convert", "run.krt", "--unit", "counts", "-o", "counts.npy"});
        const std::vector<float> kelvin = test::ReadArray<float>(folder.Path("truth.npy"));
        const std::vector<float> counts = test::ReadArray<float>(folder.Path("counts.npy"));
        ASSERT_EQ(counts.size(), 3u * kWidth * kHeight);
        for (std::size_t i = 0; i < counts.size(); ++i) ASSERT_NEAR(counts[i], family.count(kelvin[i]), 0.51) << i;

        const Json info = Json::parse(folder.Do({"info", "--json", "run.krt"}));
        EXPECT_EQ(info["decoder"], family.decoder);
        EXPECT_EQ(info["counter"]["last"], 2);
        EXPECT_EQ(info["counter"]["gapCount"], 0);
        EXPECT_EQ(info["time"]["spanSeconds"], 0.04);
        EXPECT_EQ(info["time"]["last"].get<std::string>().substr(4), "-01-15T12:00:00.040000Z");
        const Json rows = Json::parse(folder.Do({"info", "--json", "run.krt", "--frame", "-1"}))["values"];
        const auto row =
            std::find_if(rows.begin(), rows.end(), [&](const Json& r) { return r["name"] == family.name; });
        ASSERT_NE(row, rows.end());
        EXPECT_EQ((*row)["value"], family.value);
    }
}

TEST(HeaderLineSynth, OspreyToTemperaturesByTheCalibrationOfItsRecording) {
    const CToolFolder folder;
    const measure::SFrameFormat format{.filter = "Osprey",
                                       .pixelType = frame_types::kOsprey,
                                       .pixelTypeName = "IACF",
                                       .width = kWidth,
                                       .height = kHeight};
    const auto camera = FindSynthFamily(format.pixelType)
                            ->make({.type = format.pixelType,
                                    .width = kWidth,
                                    .height = kHeight,
                                    .noise = false,
                                    .fixedPattern = false,
                                    .badPixels = false});
    std::vector<float> kelvin;
    for (u32 i = 0; i < u32{kWidth} * kHeight; ++i) kelvin.push_back(284 + 0.0125f * static_cast<float>(i));
    std::vector<u8> frame = camera->Frame(0, kelvin);

    reduce::CReduceObjectArray objects;
    const auto source = objects.GetSourceInfo(true);
    source->pixelType = format.pixelType;
    source->width = source->frameWidth = source->packetWidth = kWidth;
    source->height = source->frameHeight = kHeight;
    source->packetHeight = kHeight + 1;
    const auto tern = objects.Get<reduce::CTernFactoryCalReduceObject>(0, true);
    tern->valid = true;
    tern->adjustGain = 1, tern->adjustOffset = 500;
    tern->planckR = 3e8f, tern->planckB = 3597, tern->planckF = 1;
    tern->overflowTemp = tern->upperTemp = 370, tern->underflowTemp = tern->lowerTemp = 273;
    tern->radFitHighTemp = 373, tern->radFitLowTemp = 273;
    measure::CRecordingWriter writer(folder.Path("run.krt"), objects, format, static_cast<u32>(frame.size()), {});
    writer.Add(frame);
    writer.Finish();
    folder.Do({"convert", "run.krt", "--unit", "temperature", "--scale", "K", "--emissivity", "1", "--atmosphere-trans",
               "1", "-o", "out.npy"});
    const std::vector<float> measured = test::ReadArray<float>(folder.Path("out.npy"));
    ASSERT_EQ(measured.size(), kelvin.size());
    for (std::size_t i = 0; i < kelvin.size(); ++i) ASSERT_NEAR(measured[i], kelvin[i], 0.05) << i;
}

TEST(HeaderLineSynth, HeadersAloneAreReadAndHaveNoPixels) {
    const CToolFolder folder;
    folder.Do({"synth", "-o", "dump.raw", "--pixel-type", "MVF", "--size", "160x40"});
    test::WriteText(folder.Path("head.raw"), test::ReadText(folder.Path("dump.raw")).substr(0, 256));
    const Arguments head = {"head.raw", "--pixel-type", "{20DD2639-38C0-4E57-99EE-1B9224F8E5E2}", "--size", "160x40"};
    const Json info = Json::parse(folder.Do(Arguments{"info", "--json"} + head));
    EXPECT_EQ(info["frames"], 1);
    EXPECT_EQ(info["time"]["first"].get<std::string>().substr(4), "-01-15T12:00:00.000000Z");
    const auto refused = folder.Run(Arguments{"stats"} + head);
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.error.find("headers without pixels"), std::string::npos) << refused.error;

    const auto small = folder.Run({"synth", "-o", "small.raw", "--pixel-type", "LOR-SB", "--size", "5x10"});
    EXPECT_EQ(small.status, 2);
    EXPECT_NE(small.error.find("120"), std::string::npos) << small.error;
}

}  // namespace
}  // namespace ovix::app
