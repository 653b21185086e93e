// Every camera family goes the whole way: a scene, frames, a recording, what the frames say, and back to counts and
// temperatures. A family joins by a row of what its camera answers to a temperature and what its second frame says.

#include <cmath>
#include <map>

#include "apps/ovix/synth/synth.h"
#include "measure/measure.h"
#include "support/k410_frames.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;

// Counts by the formulas of the data sheets, with the constants that the cameras send: of temperatures in kelvin.
double Linear(double kelvin) { return 100 * (kelvin - 253.15); }
double Planck(double kelvin) { return 500 + 3e8 / (std::exp(3597 / kelvin) - 1); }
/// Planck's curve, the air, the surroundings that the object mirrors, 14 bits.
double Curlew(double kelvin) {
    const auto signal = [](double t) { return 515000 / (std::exp(1428 / t) - 1); };
    const double t = 21.0;  // of the air, degrees Celsius
    const double water = std::exp(1.5587 + 0.06939 * t - 0.00027816 * t * t + 6.8455e-7 * t * t * t);
    const double w = std::sqrt(water * 0.45);
    const double s = std::sqrt(2.0);
    const double tau = 1.9 * std::exp(-s * (0.006569 - 0.002276 * w)) - 0.9 * std::exp(-s * (0.01262 - 0.00667 * w));
    const double arrives = 0.95 * tau * signal(kelvin) + 0.05 * tau * signal(295.15) + (1 - tau) * signal(294.15);
    return std::clamp(arrives / 0.5 - 5000, 0.0, 16383.0);
}

/// Of the second frame, by hand.
struct SField {
    u64 offset;
    const char* bytes;
    const char* name;
    const char* value;
};
struct SFamily {
    double (*count)(double kelvin);
    std::vector<SField> fields;
};
constexpr u64 kPixelBytes = 2 * 64 * 48;
const std::map<std::string, SFamily> kFamilies = {
    {"K410",
     {Curlew,
      {{kPixelBytes + 10, "01", "DigitalIn1", "1"},
       {kPixelBytes + 12, "0001", "FrameCounter", "1"},
       {kPixelBytes + 32, "4d4b4d00", "Signature", "0x004D4B4D"},
       {kPixelBytes + 32 + 128 + 32, "3333733f", "Emissivity", "0.95"},
       {kPixelBytes + 32 + 128 + 904, "14000000", "Milliseconds", "20 ms"}}}},
    {"Lapwing",
     {Linear,
      {{kPixelBytes, "544f4d5a", "Signature", "TOMZ"},
       {kPixelBytes + 16, "01000000", "FrameCounter", "1"},
       {kPixelBytes + 24, "f801", "SensorTemp[1]", "304.65 K"},
       {kPixelBytes + 48, "3f9c0000", "IntegrationTime", "1000 µs"},
       {kPixelBytes + 52, "00350c00", "FrameRate", "50 Hz"},
       {kPixelBytes + 67, "204e0000", "Microseconds", "20000"}}}},
    {"LOR-RA",
     {Linear,
      {{12, "0177", "ChassisTemp", "31.50 °C"},
       {20, "01000000", "FrameCounter", "1"},
       {50, "48e80100", "FrameRate", "50.00 Hz"}}}},
    {"LOR-SB", {Linear, {{14, "8476", "AirGapTemp", "30.25 °C"}, {98, "f4010000", "LensFocalLength", "50.00"}}}},
    {"MV310",
     {Curlew,
      {{kPixelBytes, "0002", "ByteOrder", "swapped"},
       {kPixelBytes + 4, "0030", "Height", "48 pixels"},
       {kPixelBytes + 40, "43939333", "ReflectedTemp", "295.15 K"},
       {kPixelBytes + 776, "00001388", "Offset", "5000 counts"},
       {kPixelBytes + 900, "6968d6c000000014", "Time", "2026-01-15 12:00:00.020000 UTC"}}}},
    {"MVFalcon",
     {Linear,
      {{32, "000000000100", "MV9100_FrameCounter", "1"}, {86, "45000100", "MV9100_FrontPanelTemp", "27.52 °C"}}}},
    {"Osprey",
     {Planck,
      {{48, "00000000020000000000120015000000", "Time", "015:12:00:00.020000"},
       {86, "4a000100", "OS_FrontPannelTemp", "27.343756 °C"}}}},
    {"Plover",
     {Curlew,
      {{kPixelBytes + 24, "0001", "FrameCounter", "1"},
       {kPixelBytes + 128, "3ff33333", "AtmX", "1.9"},
       {kPixelBytes + 1130, "0000", "InvalidFrame", "0"}}}},
    {"Wren",
     {Linear,
      {{kPixelBytes, "50525556", "Signature", "PRUV"},
       {kPixelBytes + 4, "6d00", "RecordSize", "109 bytes"},
       {kPixelBytes + 18, "0100000000000000", "FrameCounter", "1"},
       {kPixelBytes + 58, "00007a44", "IntegrationTime", "1000 µs"},
       {kPixelBytes + 66, "01", "FilterPosition", "1"}}}},
};

void ExpectFields(const Json& dump, const SFamily& family) {
    u64 end = 0;
    for (const Json& row : dump["rows"]) {
        EXPECT_LE(row["offset"], end) << "a byte is not shown";
        end = std::max(end, row["offset"].get<u64>() + row["size"].get<u64>());
    }
    EXPECT_EQ(end, dump["frameBytes"]);
    for (const SField& field : family.fields) {
        const Json row = {{"offset", field.offset}, {"size", std::string_view(field.bytes).size() / 2},
                          {"kind", "field"},        {"field", field.name},
                          {"value", field.value},   {"bytes", field.bytes}};
        EXPECT_NE(std::find(dump["rows"].begin(), dump["rows"].end(), row), dump["rows"].end()) << row;
    }
}

TEST(Family, SaysWhatItsBytesSay) {
    const CToolFolder folder;
    for (const auto& [name, family] : kFamilies) {
        SCOPED_TRACE(name);
        const Json made = folder.Doc(
            {"synth", "--family", name, "--size", "64x48", "--count", "3", "--clean", "-o", "dump.raw", "--overwrite"});
        folder.Do(Arguments{"record", "-o", "run.krt", "--overwrite"} + Dump(made["pixelType"]));
        const Arguments bytes = {"info", "--hexdump", "--frame", "1"};
        const Json ofDump = folder.Doc(bytes + Dump(made["pixelType"]));
        ExpectFields(ofDump, family);
        EXPECT_EQ(ofDump["rows"], folder.Doc(bytes + Arguments{"run.krt"})["rows"]);
        const Json info = folder.Doc({"info", "run.krt"});
        EXPECT_EQ(info["decoder"], name);
        EXPECT_EQ(info["counter"].is_null(), name == "MV310");  // which sends none
        EXPECT_EQ(info["counter"].is_null() ? Json(2) : info["counter"]["last"], 2);
        EXPECT_EQ(info["time"].is_null(), name == "K410");  // whose digital header has none
        EXPECT_EQ(info["time"].is_null() ? Json(0.04) : info["time"]["spanSeconds"], 0.04);
        const std::string first = info.value("/time/first"_json_pointer, "-01-15T12:00:00.000000Z");
        EXPECT_TRUE(first.ends_with("-01-15T12:00:00.000000Z")) << first;
    }
    EXPECT_EQ(folder.Run({"synth", "--family", "Plovr", "-o", "x.raw"}).status, 2);
    EXPECT_EQ(folder.Run({"synth", "--family", "MV310", "--pixel-type", "Plover IR (F7M0)", "-o", "x.raw"}).status, 2);
}

TEST(Family, ReadsBackTheSceneInEveryForm) {
    const CToolFolder folder;
    const Json formats = folder.Doc({"formats"});
    ASSERT_GT(formats["synthesis"].size(), 20u);
    for (const Json& form : formats["synthesis"]) {
        const std::string type = form["pixelType"];
        SCOPED_TRACE(type + " " + form["form"].get<std::string>());
        const Arguments dump = Dump(type);
        folder.Synthesise({"--form", form["form"], "--clean", "--truth", "truth.npy"}, type);
        folder.Do(Arguments{"record", "-o", "run.krt", "--overwrite"} + dump);
        // Decoders may write to a frame that they parse; what is recorded is what the camera sent.
        const std::string sent = ReadText(folder.At("dump.raw")), run = ReadText(folder.At("run.krt"));
        ASSERT_GT(run.size(), sent.size());
        EXPECT_TRUE(form["form"] == "jpeg-ls" || run.ends_with(sent));

        const auto measured = [&](const Arguments& more) {
            folder.Do(Arguments{"convert", "-o", "out.npy", "--overwrite"} + more);
            return ReadArray<float>(folder.At("out.npy"));
        };
        folder.Do({"verify", "run.krt"});
        const Json info = folder.Doc(Arguments{"info"} + dump), recorded = folder.Doc({"info", "run.krt"});
        for (const char* same : {"pixelType", "width", "height", "frames", "counter", "units", "scene", "calibration"})
            EXPECT_EQ(recorded[same], info[same]) << same;
        EXPECT_TRUE(recorded["source"]["finished"]);
        EXPECT_EQ(recorded["source"]["presets"], (Json{{{"preset", 0}, {"frames", 3}}}));
        EXPECT_EQ(info["frames"], 3);
        EXPECT_EQ(info["width"], 64);
        if (info["baseUnit"] != "counts") {
            EXPECT_EQ(measured(dump).size(), 3u * 64 * 48);
            continue;
        }
        const std::vector<float> truth = ReadArray<float>(folder.At("truth.npy"));
        const std::vector<float> counts = measured(Arguments{"run.krt", "--unit", "counts"});
        ASSERT_EQ(counts.size(), 3u * 64 * 48);
        ASSERT_EQ(truth.size(), counts.size());
        const SFamily& family = kFamilies.at(info["decoder"]);
        for (std::size_t i = 0; i < counts.size(); ++i) ASSERT_NEAR(counts[i], family.count(truth[i]), 0.51) << i;

        const Json& units = info["units"];
        if (std::find(units.begin(), units.end(), "temperature (factory)") == units.end()) continue;
        const std::vector<float> kelvin = measured(dump + Arguments{"--scale", "K"});
        const std::vector<u8> status = ReadArray<u8>(folder.At("out.status.npy"));
        EXPECT_GT(10 * std::count(status.begin(), status.end(), 0), 9 * 3 * 64 * 48);
        for (std::size_t i = 0; i < truth.size(); ++i)
            ASSERT_TRUE(status[i] || std::abs(kelvin[i] - truth[i]) < 0.1) << "pixel " << i;
    }
}

/// An even detector without noise.
std::unique_ptr<ISynthesizer> Camera(const GUID& type, u16 width, u16 height) {
    return FindSynthFamily(type)->make(
        {.type = type, .width = width, .height = height, .noise = false, .fixedPattern = false, .badPixels = false});
}

TEST(Family, OspreyIsMeasuredByTheCalibrationOfItsRecording) {
    constexpr u16 kWidth = 160, kHeight = 40;
    const CToolFolder folder;
    const measure::SFrameFormat format = measure::FindFormat("IACF", kWidth, kHeight);
    std::vector<float> kelvin;
    for (u32 i = 0; i < format.PixelCount(); ++i) kelvin.push_back(284 + 0.0125f * static_cast<float>(i));
    std::vector<u8> frame = Camera(format.pixelType, kWidth, kHeight)->Frame(0, kelvin);

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
    measure::CRecordingWriter writer(folder.At("run.krt"), objects, format, static_cast<u32>(frame.size()), {});
    writer.Add(frame);
    writer.Finish();
    folder.Do({"convert", "run.krt", "--unit", "temperature", "--scale", "K", "--emissivity", "1", "--atmosphere-trans",
               "1", "-o", "out.npy"});
    const std::vector<float> measured = ReadArray<float>(folder.At("out.npy"));
    ASSERT_EQ(measured.size(), kelvin.size());
    for (std::size_t i = 0; i < kelvin.size(); ++i) ASSERT_NEAR(measured[i], kelvin[i], 0.05) << i;
}

TEST(Family, HeadersAloneAreReadAndHaveNoPixels) {
    const CToolFolder folder;
    folder.Do({"synth", "-o", "dump.raw", "--pixel-type", "MVF", "--size", "160x40"});
    WriteText(folder.At("head.raw"), ReadText(folder.At("dump.raw")).substr(0, 256));
    const Arguments head = {"head.raw", "--pixel-type", "{20DD2639-38C0-4E57-99EE-1B9224F8E5E2}", "--size", "160x40"};
    const Json info = folder.Doc(Arguments{"info"} + head);
    EXPECT_EQ(info["frames"], 1);
    EXPECT_EQ(info["time"]["first"].get<std::string>().substr(4), "-01-15T12:00:00.000000Z");
    const auto refused = folder.Run(Arguments{"stats"} + head);
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.error.find("headers without pixels"), std::string::npos) << refused.error;
    EXPECT_EQ(folder.Run({"synth", "-o", "small.raw", "--pixel-type", "LOR-SB", "--size", "5x10"}).status, 2);
}

TEST(Family, VideoShowsColdDarkAndHotBright) {
    const std::vector<float> kelvin{283.15f, 283.15f, 358.15f, 358.15f};  // a cold line above a hot one
    EXPECT_EQ(Camera(kK410BGR, 2, 2)->Frame(0, kelvin),
              (std::vector<u8>{0xA4, 0xFF, 0xFC, 0xA4, 0xFF, 0xFC, 4, 0, 0, 4, 0, 0}));
    const std::vector<u8> uyvy = Camera(kK410UYVY, 2, 2)->Frame(0, kelvin);
    ASSERT_EQ(uyvy.size(), 8u);
    EXPECT_NEAR(uyvy[0], 130, 1);  // next to no colour
    EXPECT_EQ(uyvy[1], 16);
    EXPECT_GT(uyvy[5], 220);
    const std::vector<u8> yuy2 = Camera(kK410YUY2, 2, 2)->Frame(0, kelvin);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(yuy2.at(i), uyvy[i ^ 1]) << i;
}

/// That they undo the detector shows in the temperatures of a corrected dump.
TEST(Family, CorrectionPointsToGoodPixels) {
    const SSynthOptions options{.type = kK410F7M0, .form = "plain", .width = 200, .height = 150, .seed = 5};
    const std::vector<float> kelvin(30'000, 310.0f);
    const auto camera = FindSynthFamily(options.type)->make(options);
    const std::vector<u8> frame = camera->Frame(3, kelvin);
    EXPECT_EQ(frame, FindSynthFamily(options.type)->make(options)->Frame(3, kelvin));
    EXPECT_NE(frame, camera->Frame(4, kelvin));
    const auto tables = camera->Correction();
    ASSERT_TRUE(tables);
    u32 bad = 0;
    for (u32 i = 0; i < 30'000; ++i) {
        ASSERT_LT(tables->map[i], 30'000u);
        EXPECT_EQ(tables->mask[tables->map[i]], 0) << i;
        bad += tables->mask[i];
    }
    EXPECT_GE(bad, 6u);
    EXPECT_LE(bad, 40u);
    EXPECT_FALSE(Camera(options.type, 8, 8)->Correction());
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

/// Whether a file of the folder begins with the decoder's name, written small and without dashes.
bool HasSeed(const std::filesystem::path& folder, std::string name) {
    name = Lower(name);
    std::erase(name, '-');
    return std::any_of(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator(),
                       [&](const auto& entry) { return entry.path().filename().string().starts_with(name + "_"); });
}

/// Whoever adds a camera is told here what is still missing: docs/adding-a-camera.md goes through it.
TEST(Completeness, EveryDecoderHasItsCheckItsSynthesiserItsSeedAndItsPage) {
    const std::filesystem::path tree = OVIX_SOURCE_DIR;
    const std::string formats = ReadText(tree / "docs/formats.md");
    ASSERT_FALSE(formats.empty());
    const reduce::CFilterFactory& factory = *reduce::filterFactory();
    ASSERT_GT(factory.GetEntryCount(), 0u);
    for (u32 i = 0; i < factory.GetEntryCount(); ++i) {
        const auto& entry = factory.GetEntryAt(i);
        const std::string name = entry.name.GetUTF8();
        if (!reduce::OriginOf(entry.create).IsEmpty()) continue;  // one of another test
        EXPECT_NE(entry.extra.check, nullptr)
            << name << ": answer `check` to Register, so that CheckFrame knows its frames";
        EXPECT_NE(entry.extra.describe, nullptr)
            << name << ": answer `describe` to Register, so that its frames can be shown byte by byte";
        EXPECT_NE(entry.extra.evidence, nullptr)
            << name << ": answer `evidence` to Register, so that nothing made up is taken for read";
        for (const GUID& type : entry.extra.pixelTypes) {
            reduce::SFrameForm form;
            EXPECT_TRUE(reduce::GetFrameForm(entry.name, type, form))
                << name << ": answer `form` to Register for each of the types that it handles";
            if (form.wholeType != type) continue;  // part of a frame: it has no pixels, no name and no synthesiser
            SPixelType facts;
            ASSERT_TRUE(GetPixelType(type, facts)) << name << ": RegisterPixelType each of the types that it handles";
            const std::string typeName = facts.name.GetUTF8();
            const SSynthFamily* family = FindSynthFamily(type);
            EXPECT_TRUE(family && entry.name == family->filter) << typeName << ": apps/ovix/synth cannot make it";
            EXPECT_NE(formats.find(typeName), std::string::npos) << typeName << ": not in docs/formats.md";
        }
        const std::string page = "formats/" + Lower(name) + ".md";
        EXPECT_NE(formats.find("| " + name + " |"), std::string::npos) << name << ": no row in docs/formats.md";
        EXPECT_NE(formats.find("(" + page + ")"), std::string::npos)
            << name << ": docs/formats.md does not lead to " << page;
        EXPECT_TRUE(std::filesystem::exists(tree / "docs" / page)) << "docs/" << page << " is missing";
        EXPECT_TRUE(HasSeed(tree / "fuzz/corpus/frames", name)) << name << ": no seed in fuzz/corpus/frames";
    }
}

}  // namespace
}  // namespace ovix::app
