// Every camera family goes the whole way: frames, recording, what is in them, measurement.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

#include "tool_run.h"

namespace ovix::app {
namespace {

using Json = nlohmann::json;
using Arguments = std::vector<std::string>;

Arguments operator+(Arguments a, const Arguments& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// What the second frame of a family says of itself, by hand: offset, bytes, field and value. A family joins by a row.
struct SField {
    u64 offset;
    const char* bytes;
    const char* name;
    const char* value;
};
constexpr u64 kPixelBytes = 2 * 64 * 48;
const std::map<std::string, std::vector<SField>> kFields = {
    {"K410",
     {{kPixelBytes + 10, "01", "DigitalIn1", "1"},
      {kPixelBytes + 12, "0001", "FrameCounter", "1"},
      {kPixelBytes + 32, "4d4b4d00", "Signature", "0x004D4B4D"},
      {kPixelBytes + 32 + 128 + 32, "3333733f", "Emissivity", "0.95"},
      {kPixelBytes + 32 + 128 + 904, "14000000", "Milliseconds", "20 ms"}}},
    {"Lapwing",
     {{kPixelBytes, "544f4d5a", "Signature", "TOMZ"},
      {kPixelBytes + 16, "01000000", "FrameCounter", "1"},
      {kPixelBytes + 24, "f801", "SensorTemp[1]", "304.65 K"},
      {kPixelBytes + 48, "3f9c0000", "IntegrationTime", "1000 µs"},
      {kPixelBytes + 52, "00350c00", "FrameRate", "50 Hz"},
      {kPixelBytes + 67, "204e0000", "Microseconds", "20000"}}},
    {"LOR-RA",
     {{12, "0177", "ChassisTemp", "31.50 °C"},
      {20, "01000000", "FrameCounter", "1"},
      {50, "48e80100", "FrameRate", "50.00 Hz"}}},
    {"LOR-SB", {{14, "8476", "AirGapTemp", "30.25 °C"}, {98, "f4010000", "LensFocalLength", "50.00"}}},
    {"MV310",
     {{kPixelBytes, "0002", "ByteOrder", "swapped"},
      {kPixelBytes + 4, "0030", "Height", "48 pixels"},
      {kPixelBytes + 40, "43939333", "ReflectedTemp", "295.15 K"},
      {kPixelBytes + 776, "00001388", "Offset", "5000 counts"},
      {kPixelBytes + 900, "6968d6c000000014", "Time", "2026-01-15 12:00:00.020000 UTC"}}},
    {"MVFalcon",
     {{32, "000000000100", "MV9100_FrameCounter", "1"}, {86, "45000100", "MV9100_FrontPanelTemp", "27.52 °C"}}},
    {"Osprey",
     {{48, "00000000020000000000120015000000", "Time", "015:12:00:00.020000"},
      {86, "4a000100", "OS_FrontPannelTemp", "27.343756 °C"}}},
    {"Plover",
     {{kPixelBytes + 24, "0001", "FrameCounter", "1"},
      {kPixelBytes + 128, "3ff33333", "AtmX", "1.9"},
      {kPixelBytes + 1130, "0000", "InvalidFrame", "0"}}},
    {"Wren",
     {{kPixelBytes, "50525556", "Signature", "PRUV"},
      {kPixelBytes + 4, "6d00", "RecordSize", "109 bytes"},
      {kPixelBytes + 18, "0100000000000000", "FrameCounter", "1"},
      {kPixelBytes + 58, "00007a44", "IntegrationTime", "1000 µs"},
      {kPixelBytes + 66, "01", "FilterPosition", "1"}}},
};

void ExpectFields(const Json& dump, const std::string& family) {
    u64 end = 0;
    for (const Json& row : dump["rows"]) {
        EXPECT_LE(row["offset"], end) << "a byte is not shown";
        end = std::max(end, row["offset"].get<u64>() + row["size"].get<u64>());
    }
    EXPECT_EQ(end, dump["frameBytes"]);
    const auto fields = kFields.find(family);
    if (fields == kFields.end()) return;
    for (const SField& field : fields->second) {
        const Json row = {{"offset", field.offset}, {"size", std::string_view(field.bytes).size() / 2},
                          {"kind", "field"},        {"field", field.name},
                          {"value", field.value},   {"bytes", field.bytes}};
        EXPECT_NE(std::find(dump["rows"].begin(), dump["rows"].end(), row), dump["rows"].end()) << row;
    }
}

std::vector<float> Measure(const test::CToolFolder& folder, const Arguments& source) {
    folder.Do(Arguments{"convert", "-o", "out.npy", "--overwrite"} + source);
    return test::ReadArray<float>(folder.Path("out.npy"));
}

TEST(Family, GoesTheWholeWay) {
    const test::CToolFolder folder;
    const Json formats = Json::parse(folder.Do({"formats", "--json"}));
    for (const Json& decoder : formats["decoders"]) {
        const std::string family = decoder["name"];
        SCOPED_TRACE(family);
        const std::string type = decoder["pixelTypes"][0]["name"];
        const auto isOfType = [&](const Json& form) { return form["pixelType"] == type; };
        if (std::none_of(formats["synthesis"].begin(), formats["synthesis"].end(), isOfType)) continue;
        const Json made = Json::parse(folder.Do({"synth", "--family", family, "--size", "64x48", "--count", "3",
                                                 "--clean", "-o", "dump.raw", "--overwrite", "--json"}));
        const Arguments dump = {"dump.raw", "--pixel-type", made["pixelType"], "--size", "64x48"};
        folder.Do(Arguments{"record", "-o", "run.krt", "--overwrite"} + dump);

        // Decoders may write to a frame that they parse; what is recorded is what the camera sent.
        const std::string sent = test::ReadText(folder.Path("dump.raw")), run = test::ReadText(folder.Path("run.krt"));
        ASSERT_GT(run.size(), sent.size());
        EXPECT_TRUE(run.substr(run.size() - sent.size()) == sent);

        const Arguments bytes = {"info", "--hexdump", "--json", "--frame", "1"};
        Json ofDump = Json::parse(folder.Do(bytes + dump));
        Json ofRun = Json::parse(folder.Do(bytes + Arguments{"run.krt"}));
        ExpectFields(ofDump, family);
        EXPECT_EQ(ofDump["rows"], ofRun["rows"]);
        EXPECT_NE(folder.Do({"info", "--hexdump", "run.krt"}).find("pixels"), std::string::npos);

        const std::vector<float> measured = Measure(folder, dump);
        EXPECT_EQ(measured.size(), 3u * 64 * 48);
        EXPECT_EQ(Measure(folder, {"run.krt"}), measured);
    }
    EXPECT_EQ(folder.Run({"synth", "--family", "Plovr", "-o", "x.raw"}).status, 2);
    EXPECT_EQ(folder.Run({"synth", "--family", "MV310", "--pixel-type", "Plover IR (F7M0)", "-o", "x.raw"}).status, 2);
}

}  // namespace
}  // namespace ovix::app
