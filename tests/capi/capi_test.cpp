#include <ovix.h>

#include <cstring>
#include <thread>

#include "core/version.h"
#include "support/k410_frames.h"
#include "support/test_folder.h"
#include "support/text.h"

namespace ovix::test {
namespace {

template <class Struct>
Struct New() {
    Struct fresh{};
    fresh.size = sizeof fresh;
    return fresh;
}

ovix_error LastError() {
    auto error = New<ovix_error>();
    EXPECT_EQ(ovix_last_error(&error), OVIX_OK);
    return error;
}

ovix_options Counts(u16 width, u16 height, const char* type = "counts") {
    auto options = New<ovix_options>();
    options.pixel_type = type;
    options.width = width;
    options.height = height;
    return options;
}

/// A source that is closed with its owner.
struct SSource {
    ~SSource() { ovix_close(handle); }
    ovix_source* handle = nullptr;
};

std::vector<float> Values(const ovix_frame& frame) {
    return {frame.values, frame.values + std::size_t{frame.width} * frame.height};
}

// Two frames of 3 x 2 counts and three bytes of a third.
const Bytes kDump = {1, 0, 2, 0, 3, 0, 4, 0, 0, 1, 6, 0, 10, 0, 20, 0, 30, 0, 40, 0, 50, 0, 60, 0, 9, 9, 9};

TEST(C, TellsOfASourceAndReadsItsFrames) {
    const CTestFolder folder;
    const std::string path = folder.Put("dump", kDump);
    const ovix_options options = Counts(3, 2);
    SSource source, shared;
    ASSERT_EQ(ovix_open(path.c_str(), &options, &source.handle), OVIX_OK);

    auto information = New<ovix_information>();
    ASSERT_EQ(ovix_describe(source.handle, &information), OVIX_OK);
    EXPECT_EQ(Text(information.name, information.is_numbered, information.frames, information.frame_size,
                   information.unit, information.offered, information.worst),
              Text(path, 1, 2, 12, OVIX_UNIT_COUNTS, 1u << OVIX_UNIT_COUNTS, 2));
    auto finding = New<ovix_finding>();
    ASSERT_EQ(ovix_finding_at(source.handle, 0, &finding), OVIX_OK);
    EXPECT_EQ(finding.id, 204) << "the last frame is cut";
    EXPECT_EQ(finding.offset, 24);
    EXPECT_EQ(ovix_finding_at(source.handle, 1, &finding), OVIX_END);

    auto frame = New<ovix_frame>();
    ASSERT_EQ(ovix_read(source.handle, 1, &frame), OVIX_OK);
    EXPECT_EQ(Values(frame), (std::vector<float>{10, 20, 30, 40, 50, 60}));
    EXPECT_EQ(frame.present, 0u);
    auto figures = New<ovix_statistics>();
    ASSERT_EQ(ovix_measure_region(source.handle, 1, 0, 2, 2, &figures), OVIX_OK);
    EXPECT_EQ(Text(figures.count, figures.mean, figures.maximum_x, figures.maximum_y),
              "4 40 2 1 ");  // of 20, 30, 50, 60

    ASSERT_EQ(ovix_share(source.handle, &shared.handle), OVIX_OK);
    auto other = New<ovix_frame>();
    std::thread([&] { EXPECT_EQ(ovix_read(shared.handle, 0, &other), OVIX_OK); }).join();
    EXPECT_EQ(Values(other), (std::vector<float>{1, 2, 3, 4, 256, 6}));
    EXPECT_EQ(frame.values[0], 10) << "each handle has a frame of its own";
}

TEST(C, MeasuresPushedFramesAsThoseOfAFile) {
    const Bytes second(kDump.begin() + 12, kDump.begin() + 24);
    for (const char* type : {"counts", "counts-be"}) {
        const ovix_options options = Counts(3, 2, type);
        SSource stream;
        ASSERT_EQ(ovix_open_stream(&options, &stream.handle), OVIX_OK);
        auto frame = New<ovix_frame>();
        ASSERT_EQ(ovix_push(stream.handle, second.data(), second.size(), &frame), OVIX_OK);
        const float first = std::strcmp(type, "counts") ? 10 * 256 : 10;
        EXPECT_EQ(frame.values[0], first);
        ASSERT_EQ(ovix_push(stream.handle, second.data(), second.size(), &frame), OVIX_OK);
        EXPECT_EQ(frame.number, 1u);
        EXPECT_EQ(ovix_push(stream.handle, second.data(), 11, &frame) / 100, 4) << "a frame that is cut";
        EXPECT_EQ(LastError().frame, 2);
        EXPECT_EQ(ovix_read(stream.handle, 0, &frame), OVIX_NOT_NUMBERED);
    }
}

TEST(C, TakesCameraFramesWithTheirFactsAndTheCallersScene) {
    SK410Container container;
    container.record.width = 16;
    const Bytes bytes = PlainFrame(std::vector<u16>(16 * 8, 9000), container);
    ovix_options options = Counts(16, 8, "K410 IR (GigE)");
    options.quantity = OVIX_TEMPERATURE;
    options.scale = OVIX_KELVIN;
    const std::tuple<int, const char*, float> scene[] = {{OVIX_EMISSIVITY, "emissivity", 0.5f},
                                                         {OVIX_DISTANCE, "distance", 7},
                                                         {OVIX_REFLECTED_TEMP, "reflected-temp", 301},
                                                         {OVIX_ATMOSPHERE_TEMP, "atmosphere-temp", 302},
                                                         {OVIX_EXT_OPTICS_TEMP, "ext-optics-temp", 303},
                                                         {OVIX_EXT_OPTICS_TRANS, "ext-optics-trans", 0.75f},
                                                         {OVIX_ATMOSPHERE_TRANS, "atmosphere-trans", 0.875f},
                                                         {OVIX_RELATIVE_HUMIDITY, "humidity", 0.25f}};
    options.scene_given = 0xFF;
    for (const auto& [place, key, value] : scene) options.scene[place] = value;
    SSource stream;
    ASSERT_EQ(ovix_open_stream(&options, &stream.handle), OVIX_OK);
    auto frame = New<ovix_frame>();
    ASSERT_EQ(ovix_push(stream.handle, bytes.data(), bytes.size(), &frame), OVIX_OK) << LastError().line;
    EXPECT_EQ(frame.unit, OVIX_UNIT_TEMPERATURE_FACTORY);
    EXPECT_EQ(frame.present & (OVIX_HAS_TIME | OVIX_HAS_COUNTER), unsigned{OVIX_HAS_TIME | OVIX_HAS_COUNTER});
    EXPECT_EQ(frame.counter, 0x1234u);
    EXPECT_EQ(frame.time, 17'000'000'002'500'000) << "2023-11-14 22:13:20.250, the record's own";
    std::size_t found = 0;
    auto parameter = New<ovix_parameter>();
    for (; ovix_parameter_at(stream.handle, found, &parameter) == OVIX_OK; ++found) {
        const auto* row = std::find_if(std::begin(scene), std::end(scene), [&](const auto& each) {
            return std::string(std::get<1>(each)) == parameter.key;
        });
        ASSERT_NE(row, std::end(scene)) << parameter.key;
        EXPECT_EQ(parameter.value, std::get<2>(*row)) << parameter.key;
        EXPECT_EQ(parameter.origin, 3) << "the caller";
    }
    EXPECT_EQ(found, 8u);
}

TEST(C, RecordsFramesThatCanBeReadBack) {
    const CTestFolder folder;
    const std::string path = folder.At("run.krt");
    SK410Container container;
    container.record.width = 16;
    const ovix_options options = Counts(16, 8, "K410 IR (GigE)");
    ovix_recorder* recorder = nullptr;
    ASSERT_EQ(ovix_record(path.c_str(), &options, OVIX_KEEP_PART, &recorder), OVIX_OK);
    EXPECT_EQ(ovix_record_finish(recorder), OVIX_NO_FRAMES);
    EXPECT_EQ(ovix_record_frame(recorder, "no frame", 8) / 100, 4);
    EXPECT_FALSE(std::filesystem::exists(path + ".part")) << "a first frame that will not do begins nothing";
    for (u16 n = 0; n < 3; ++n) {
        const Bytes bytes = PlainFrame(std::vector<u16>(16 * 8, static_cast<u16>(9000 + n)), container);
        ASSERT_EQ(ovix_record_frame(recorder, bytes.data(), bytes.size()), OVIX_OK) << LastError().line;
    }
    EXPECT_EQ(ovix_record_finish(recorder), OVIX_OK);
    EXPECT_EQ(ovix_record_frame(recorder, "", 0), OVIX_WRONG_ARGUMENT);
    ovix_close_recorder(recorder);

    auto counts = New<ovix_options>();
    counts.quantity = OVIX_COUNTS;
    SSource source;
    ASSERT_EQ(ovix_open(path.c_str(), &counts, &source.handle), OVIX_OK);
    auto information = New<ovix_information>();
    ASSERT_EQ(ovix_describe(source.handle, &information), OVIX_OK);
    EXPECT_TRUE(information.frames == 3 && information.is_recording == 1);
    auto frame = New<ovix_frame>();
    ASSERT_EQ(ovix_read(source.handle, 2, &frame), OVIX_OK);
    EXPECT_EQ(Values(frame), std::vector<float>(16 * 8, 9002));
}

TEST(C, AnswersEachMistakeWithItsNumberAndFacts) {
    const CTestFolder folder;
    const std::string path = folder.Put("dump", kDump);
    const ovix_options good = Counts(3, 2);
    ovix_options noSize = good, flag = good, quantity = good, unit = good, scene = good, value = good;
    noSize.size = 0;
    flag.flags = 1u << 31;
    quantity.quantity = 10;
    unit.quantity = OVIX_TEMPERATURE;
    scene.scene_given = 1u << 8;
    value.scene_given = 1u << OVIX_RELATIVE_HUMIDITY;
    value.scene[OVIX_RELATIVE_HUMIDITY] = 50;  // per cent are no share of 1
    ovix_source* opened = nullptr;
    for (const ovix_options* wrong : {&noSize, &flag, &quantity, &scene, &value})
        EXPECT_EQ(ovix_open(path.c_str(), wrong, &opened), OVIX_WRONG_ARGUMENT);
    EXPECT_EQ(ovix_open(nullptr, &good, &opened), OVIX_WRONG_ARGUMENT);
    EXPECT_EQ(ovix_open(path.c_str(), &good, nullptr), OVIX_WRONG_ARGUMENT);
    EXPECT_EQ(ovix_open(folder.At("nothing").c_str(), &good, &opened), OVIX_FILE_MISSING);
    EXPECT_TRUE(LastError().file == folder.At("nothing") && LastError().system_error == ENOENT);
    EXPECT_EQ(opened, nullptr) << "handles are written by calls that succeed";

    SSource source, degrees;
    auto frame = New<ovix_frame>();
    auto figures = New<ovix_statistics>();
    ASSERT_EQ(ovix_open(path.c_str(), &good, &source.handle), OVIX_OK);
    EXPECT_EQ(ovix_measure_region(source.handle, 0, 0, 0, 0, &figures), OVIX_WRONG_ARGUMENT) << "nothing was measured";
    EXPECT_EQ(ovix_read(source.handle, 2, &frame), OVIX_NO_SUCH_FRAME);
    EXPECT_TRUE(LastError().frame == 2 && !frame.values);
    EXPECT_EQ(ovix_next(source.handle, &frame), OVIX_WRONG_ARGUMENT);
    EXPECT_EQ(ovix_push(source.handle, nullptr, 0, &frame), OVIX_WRONG_ARGUMENT);
    EXPECT_EQ(ovix_read(nullptr, 0, &frame), OVIX_WRONG_ARGUMENT);
    EXPECT_EQ(ovix_read(source.handle, 0, nullptr), OVIX_WRONG_ARGUMENT);
    ASSERT_EQ(ovix_open(path.c_str(), &unit, &degrees.handle), OVIX_OK);
    EXPECT_EQ(ovix_read(degrees.handle, 0, &frame), OVIX_UNIT_NOT_OFFERED);
    std::thread([] {
        auto error = New<ovix_error>();
        EXPECT_EQ(ovix_last_error(&error), OVIX_END) << "failures are those of a thread";
    }).join();
}

TEST(C, GoesTogetherWithProgramsOfAnotherAge) {
    const CTestFolder folder;
    const std::string path = folder.Put("dump", kDump);
    struct SNewer {
        ovix_options known;
        std::uint64_t unknown = 0;
    } newer{.known = Counts(3, 2)};
    newer.known.size = sizeof newer;
    SSource source;
    newer.unknown = 1;
    EXPECT_EQ(ovix_open(path.c_str(), &newer.known, &source.handle), OVIX_WRONG_ARGUMENT);
    newer.unknown = 0;
    ASSERT_EQ(ovix_open(path.c_str(), &newer.known, &source.handle), OVIX_OK);

    struct SOlder {
        std::size_t size;
        std::uint64_t number;
        std::uint64_t behind;
    } older{16, 0, 42};
    ASSERT_EQ(ovix_read(source.handle, 1, reinterpret_cast<ovix_frame*>(&older)), OVIX_OK);
    EXPECT_EQ(older.number, 1u);
    EXPECT_EQ(older.behind, 42u) << "nothing is written behind the caller's structure";
    EXPECT_STREQ(ovix_version(), Version());
}

}  // namespace
}  // namespace ovix::test
