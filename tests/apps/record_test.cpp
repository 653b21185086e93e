// Recordings as the users of the tool meet them.

#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;

Json RowsOf(const CToolFolder& folder, const Arguments& source) {
    Json rows = Json::parse(folder.Run(Arguments{"stats", "--json"} + source).out)["rows"];
    for (Json& row : rows) row.erase("file");
    return rows;
}

TEST(Record, ShorterFramesEndInZeros) {
    const CToolFolder folder;
    const std::string stream = "R7X IR (MJLS)";
    folder.Synthesise({}, stream);
    folder.Do(Arguments{"record"} + Dump(stream) + Arguments{"-o", "stream.krt"});
    const std::string frames = ReadText(folder.At("dump.raw"));
    const std::string stored = ReadText(folder.At("stream.krt"));
    const std::size_t size = folder.Doc({"info", "stream.krt"})["frameBytes"];
    std::size_t at = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        // The length of the image, the image, and a container with the camera's record at its end.
        std::size_t length = 4 + 128 + 2428;
        for (std::size_t b = 0; b < 4; ++b) length += std::size_t{static_cast<u8>(frames[at + b])} << (24 - 8 * b);
        const std::string padded = stored.substr(stored.size() - (3 - i) * size, size);
        EXPECT_TRUE(padded.substr(0, length) == frames.substr(at, length)) << i;
        EXPECT_EQ(padded.find_first_not_of('\0', length), std::string::npos) << i;
        at += length;
    }
    EXPECT_EQ(at, frames.size());
}

TEST(Record, WhatIsToldOfTheSceneAndTheTablesGoesIntoTheRecording) {
    const CToolFolder folder;
    folder.Synthesise({"--tables", "nuc"});
    const Arguments scene = {"--emissivity", "0.8", "--reflected-temp", "30C"}, tables = {"--correction", "away"};
    folder.Do(Arguments{"record", "-o", "run.krt", "--correction", "nuc"} + Dump() + scene);
    for (const char* extension : {".mvg", ".mvo", ".mvb"})
        std::filesystem::rename(folder.At("nuc").string() + extension, folder.At("away").string() + extension);
    const Json recorded = RowsOf(folder, {"run.krt"}), ofCamera = RowsOf(folder, Dump() + tables);
    EXPECT_EQ(recorded, RowsOf(folder, Dump() + scene + tables));
    EXPECT_NE(recorded, ofCamera);
    EXPECT_EQ(RowsOf(folder, {"run.krt", "--emissivity", "0.95", "--reflected-temp", "295.15K"}), ofCamera);
    const Json shown = folder.Doc({"info", "run.krt"})["scene"];
    EXPECT_EQ(shown["emissivity"], 0.8);
    EXPECT_EQ(shown["relativeHumidity"], 0.45);  // the camera's
}

TEST(Record, InfoShowsTheBlocksAndWhichOfThemAreDamaged) {
    const CToolFolder folder;
    folder.Synthesise();
    folder.Do(Arguments{"record", "-o", "run.krt"} + Dump());
    std::string bytes = ReadText(folder.At("run.krt"));
    const Json blocks = folder.Doc({"info", "run.krt"})["blocks"];
    ASSERT_EQ(blocks.size(), 5u);
    EXPECT_EQ(Json({blocks[0]["name"], blocks[0]["offset"], blocks[0]["bytes"], blocks[1]["offset"]}),
              Json({"SourceInfo", 77, 2048, 77 + 77 + 2048}));
    EXPECT_TRUE(blocks[4]["name"] == "Pixels" && blocks[4]["crcRight"].is_null());
    bytes[77 + 77 + 2048 + 77 + 20] ^= 4;
    WriteText(folder.At("run.krt"), bytes);
    const SToolRun shown = folder.Run({"info", "--json", "run.krt"});
    EXPECT_EQ(shown.status, 3);
    const Json damaged = Json::parse(shown.out)["blocks"];
    EXPECT_TRUE(damaged[0]["crcRight"]);
    EXPECT_FALSE(damaged[1]["crcRight"]);

    // Blocks without frames are shown all the same.
    WriteText(folder.At("blocks.krt"), bytes.substr(0, 77 + 77 + 2048));
    EXPECT_NE(folder.Do({"info", "blocks.krt"}).find("SourceInfo"), std::string::npos);
}

TEST(Record, VerifyAndRepairLeaveWithTheirStatus) {
    const CToolFolder folder;
    folder.Synthesise();
    folder.Do(Arguments{"record", "-o", "run.krt"} + Dump());
    std::string bytes = ReadText(folder.At("run.krt"));
    const std::size_t frame = ReadText(folder.At("dump.raw")).size() / 3;
    WriteText(folder.At("cut.krt"), bytes.substr(0, bytes.size() - 1));
    const Json verify = Json::parse(folder.Run({"verify", "--json", "cut.krt"}).out);
    const Json& finding = verify["findings"][0];
    EXPECT_EQ(Json({verify["good"], finding["offset"], finding["expected"], finding["found"]}),
              Json({false, bytes.size() - frame, std::to_string(frame) + " bytes", std::to_string(frame - 1)}));
    EXPECT_EQ(folder.Run({"verify", "cut.krt"}).status, 1);
    folder.Do({"repair", "cut.krt", "-o", "good.krt"});
    folder.Do({"verify", "good.krt"});
    EXPECT_EQ(folder.Run({"repair", "cut.krt", "-o", "good.krt"}).status, 4);  // is there already

    bytes[bytes.size() - frame + 64 * 48 * 2 + 32] ^= 1;  // the signature behind the pixels and the digital header
    WriteText(folder.At("bad.krt"), bytes);
    EXPECT_EQ(folder.Run({"repair", "bad.krt", "-o", "rest.krt"}).status, 3);
    EXPECT_EQ(folder.Run({"verify", "dump.raw"}).status, 4);
    EXPECT_EQ(folder.Run({"info", "run.krt", "--size", "64x48"}).status, 2);
}

TEST(Record, PartsAreKeptOnlyWhenAskedAndNeverReplaced) {
    const CToolFolder folder;
    folder.Synthesise();
    std::string bytes = ReadText(folder.At("dump.raw"));
    bytes[bytes.size() / 3 * 2 + 64 * 48 * 2 + 32] ^= 1;  // the signature of the third frame
    WriteText(folder.At("dump.raw"), bytes);
    const Arguments record =
        Arguments{"record", "-o", "run.krt", "--frame-size", std::to_string(bytes.size() / 3)} + Dump();
    EXPECT_EQ(folder.Run(record).status, 1);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"dump.raw"}));
    EXPECT_EQ(folder.Run(record + Arguments{"--keep-part"}).status, 1);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"dump.raw", "run.krt.part"}));
    EXPECT_EQ(folder.Run(record + Arguments{"--keep-part", "--overwrite"}).status, 4);
    folder.Do({"repair", "run.krt.part", "-o", "run.krt"});
    EXPECT_EQ(RowsOf(folder, {"run.krt"}).size(), 2u);
    const Arguments skip = record + Arguments{"--on-error", "skip", "--overwrite"};
    EXPECT_EQ(folder.Run(skip).status, 4);  // the part is there still
    std::filesystem::remove(folder.At("run.krt.part"));
    EXPECT_EQ(folder.Run(skip).status, 3);
    EXPECT_EQ(RowsOf(folder, {"run.krt"}).size(), 2u);
}

TEST(Record, APipeThatIsEndedLeavesAPartForRepair) {
    const CToolFolder folder;
    folder.Synthesise();
    const std::string dump = ReadText(folder.At("dump.raw")), fifo = folder.At("pipe");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const Arguments record = Arguments{"record", "-", "-o", "run.krt"} + FramesOf();
    for (const int signal : {SIGKILL, SIGTERM}) {
        const pid_t child = folder.Start(record, "/dev/null", "/dev/null", RLIM_INFINITY, fifo);
        const int pipe = ::open(fifo.c_str(), O_WRONLY);
        ASSERT_EQ(::write(pipe, dump.data(), dump.size()), static_cast<ssize_t>(dump.size()));
        std::error_code none;
        for (int i = 0; i < 1000 && !(std::filesystem::file_size(folder.At("run.krt.part"), none) + 1 > dump.size());
             ++i)
            ::usleep(10'000);
        ::kill(child, signal);
        ::waitpid(child, nullptr, 0);
        ::close(pipe);
        folder.Do({"repair", "run.krt.part", "-o", "run.krt", "--overwrite"});
        EXPECT_EQ(RowsOf(folder, {"run.krt"}), RowsOf(folder, Dump())) << signal;
        std::filesystem::remove(folder.At("run.krt.part"));
        std::filesystem::remove(folder.At("run.krt"));
    }
}

}  // namespace
}  // namespace ovix::app
