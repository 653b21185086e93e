// The tool as its users meet it: command lines in, statuses, texts and files out.

#include <cmath>
#include <thread>

#include "core/bytes.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;

const char* const kStream = "R7X IR (MJLS)";

TEST(Tool, CorrectionComesNearerToTheTruth) {
    const CToolFolder folder;
    folder.Synthesise({"--truth", "truth.npy", "--tables", "nuc"});
    const std::vector<float> truth = ReadArray<float>(folder.At("truth.npy"));
    const auto worst = [&](const Arguments& more) {
        folder.Do(Arguments{"convert"} + Dump() + Arguments{"-o", "out.npy", "--overwrite", "--scale", "K"} + more);
        const auto pixels = ReadArray<float>(folder.At("out.npy"));
        const auto status = ReadArray<u8>(folder.At("out.status.npy"));
        float worstOfGood = 0;
        for (std::size_t i = 0; i < pixels.size(); ++i)
            if (!status[i]) worstOfGood = std::max(worstOfGood, std::abs(pixels[i] - truth[i]));
        return worstOfGood;
    };
    const float after = worst({"--correction", "nuc"});
    EXPECT_LT(after, worst({}) / 2);
    EXPECT_EQ(worst({"--correction", "0=nuc.mvo"}), after);
    // A table that is there and cannot be read is no table that is missing.
    WriteText(folder.At("nuc.mvo"), ReadText(folder.At("nuc.mvo")).substr(0, 1000));
    EXPECT_EQ(folder.Run(Arguments{"stats", "--correction", "nuc"} + Dump()).status, 1);
}

TEST(Tool, RubbishIsAnsweredWithOneLineAStatusAndNoFile) {
    const CToolFolder folder;
    folder.Synthesise({"--form", "plain"});
    std::string outside = ReadText(folder.At("dump.raw"));
    StoreLittle(reinterpret_cast<u8*>(outside.data()) + 64 * 48 * 2 + 76, u32{0xFFFFFFF0});
    WriteText(folder.At("outside.raw"), outside);
    WriteText(folder.At("empty.raw"), "");
    WriteText(folder.At("noise.raw"), std::string(50000, '\x5A'));
    WriteText(folder.At("there.npy"), "mine");
    WriteText(folder.At("rubbish.mvg"), "no table");
    std::filesystem::create_directory(folder.At("folder"));
    std::filesystem::create_directory(folder.At("folder.png"));
    const std::vector<std::string> files = folder.Names();

    const Arguments frames = FramesOf();
    const auto convert = [&](const char* file, const Arguments& more = {"-o", "new.png"}) {
        return Arguments{"convert", file} + frames + more;
    };
    const std::pair<int, Arguments> cases[] = {
        {1, convert("empty.raw")},
        {1, convert("noise.raw")},
        {1, convert("outside.raw")},
        {1, Arguments{"stats", "noise.raw", "--on-error", "skip", "--frame-size", "10000"} + frames},
        {1, {"convert", "dump.raw", "--pixel-type", kGigE, "--size", "64x47", "-o", "new.tif"}},
        {1, {"convert", "dump.raw", "--pixel-type", kStream, "--size", "64x48", "-o", "new.npy"}},
        {1, convert("dump.raw", {"-o", "new.npy", "--unit", "red"})},
        {1, convert("dump.raw", {"-o", "new.npy", "--unit", "temperature", "--cal", "user"})},
        {2, {"info", "dump.raw", "--pixel-type", "K410 IR (GigF)", "--size", "64x48"}},
        {2, {"info", "dump.raw", "--pixel-type", "F7M0", "--size", "64x48"}},
        {2, {"info", "dump.raw", "--pixel-type", kGigE}},
        {2, {"info", "dump.raw", "--pixel-type", kGigE, "--size", "0x48"}},
        {2, {"covnert"}},
        {2, {"convert"}},
        {2, convert("dump.raw", {"--unti", "counts", "-o", "new.png"})},
        {2, convert("dump.raw", {"--unit", "kelvin", "-o", "new.png"})},
        {2, convert("dump.raw", {"-o", "new.jpg"})},
        {2, convert("dump.raw", {"-o", "new.png", "--frames", "3"})},
        {2, convert("dump.raw", {"-o", "new.png", "--frames", "1-"})},
        {2, convert("dump.raw", {"-o", "new.png", "--roi", "60,0,5,5"})},
        {2, convert("dump.raw", {"-o", "new.png", "--emissivity", "0"})},
        {2, convert("dump.raw", {"-o", "new.png", "--reflected-temp", "20"})},
        {2, convert("dump.raw", {"-o", "new.png", "--range", "5,5"})},
        {2, convert("dump.raw", {"-o", "new.png", "--scale", "C", "--scale", "F"})},
        {2, Arguments{"stats", "dump.raw", "--csv", "--json"} + frames},
        {2, Arguments{"stats", "dump.raw", "--emissivity="} + frames},
        {2, {"synth", "-o", "new.raw", "--pixel-type", "F7M0"}},
        {2, {"synth", "-o", "new.raw", "--form", "digitla"}},
        {2, {"synth", "-o", "new.raw", "--count", "0"}},
        {4, {"missing.raw"}},
        {4, convert("missing.raw")},
        {4, convert("folder")},
        {4, convert("/dev/null")},
        {4, convert("dump.raw", {"-o", "there.npy"})},
        {4, convert("dump.raw", {"-o", "folder.png", "--frames", "0"})},
        {4, convert("dump.raw", {"-o", "no/such/place.png"})},
        {4, convert("dump.raw", {"-o", "new.npy", "--correction", "missing"})},
        {1, convert("dump.raw", {"-o", "new.npy", "--correction", "rubbish"})},
    };
    for (const auto& [status, arguments] : cases) {
        std::string line;
        for (const std::string& argument : arguments) line += argument + ' ';
        SCOPED_TRACE(line);
        const SToolRun run = folder.Run(arguments);
        EXPECT_EQ(run.status, status) << run.error;
        EXPECT_EQ(run.out, "");
        // A run that skips says each frame beside its end.
        const bool skips = line.find("skip") != std::string::npos;
        // What was found at opening stands before the error that it became.
        EXPECT_TRUE(skips || run.ErrorLines() == 1 || run.error.find(": damage: ") != std::string::npos) << run.error;
        const bool inJson = line.find("--json") != std::string::npos;
        EXPECT_TRUE(inJson ? Json::parse(run.error)["error"]["exit"] == status : run.error.starts_with("ovix: "));
        EXPECT_EQ(folder.Names(), files);
    }
    EXPECT_EQ(ReadText(folder.At("there.npy")), "mine");

    // What is measured of a source that is cut does not end with success.
    std::filesystem::resize_file(folder.At("dump.raw"), outside.size() - 1000);
    const SToolRun cut = folder.Run(Arguments{"stats", "--json"} + Dump());
    EXPECT_EQ(cut.status, 3) << cut.error;
    EXPECT_FALSE(Json::parse(cut.out)["complete"]);
    EXPECT_EQ(Json::parse(cut.out)["findings"][0]["id"], "OVX-F204");
}

TEST(Tool, ABadFrameEndsTheRunOrIsPassedOver) {
    const CToolFolder folder;
    for (const char* type : {kGigE, kStream}) {
        SCOPED_TRACE(type);
        folder.Synthesise({"--form", type == kGigE ? "plain" : "jpeg-ls"}, type);
        std::string dump = ReadText(folder.At("dump.raw"));
        if (type == kGigE) {
            dump[dump.size() / 3 + 64 * 48 * 2] = 'X';  // the signature behind the pixels of frame 1
        } else {
            const std::size_t second = dump.find("MKM") + 128 + 2428;
            for (std::size_t i = 0; i < 400; ++i) dump[second + 60 + i] = static_cast<char>(i * 37);
        }
        WriteText(folder.At("dump.raw"), dump);

        const SToolRun stopped = folder.Run(Arguments{"convert"} + Dump(type) + Arguments{"-o", "new.npy"});
        EXPECT_EQ(stopped.status, 1) << stopped.error;
        EXPECT_NE(stopped.error.find("dump.raw: frame 1"), std::string::npos) << stopped.error;
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"dump.raw"});

        const SToolRun skipped = folder.Run(Arguments{"stats", "--json", "--on-error", "skip"} + Dump(type));
        EXPECT_EQ(skipped.status, 3) << skipped.error;
        const Json stats = Json::parse(skipped.out);
        ASSERT_TRUE(stats["skipped"] == 1 && stats["rows"].size() == 2);
        EXPECT_EQ(stats["rows"][1]["frame"], 2);

        // What was printed before the stop is still one document that says so.
        const SToolRun cut = folder.Run(Arguments{"stats", "--json"} + Dump(type));
        EXPECT_EQ(cut.status, 1);
        EXPECT_EQ(Json::parse(cut.out)["complete"], false);
        EXPECT_EQ(folder.Run(Arguments{"stats", "--frames", "0,2"} + Dump(type)).status, type == kGigE ? 3 : 0);
    }
}

TEST(Tool, AFullDiskLeavesNothingBehind) {
    const CToolFolder folder;
    folder.Synthesise();
    const std::vector<std::string> files = folder.Names();
    for (const char* name : {"a.png", "a.tif", "a.npy", "a.csv"}) {
        const SToolRun run = folder.Run(Arguments{"convert"} + Dump() + Arguments{"-o", name}, nullptr, 1000);
        EXPECT_EQ(run.status, 4) << name << run.error;
        EXPECT_EQ(run.ErrorLines(), 1) << run.error;
        EXPECT_EQ(folder.Names(), files);
    }
    // The frame and the first table fit.
    EXPECT_EQ(folder.Run({"synth", "-o", "b.raw", "--size", "64x48", "--tables", "b"}, nullptr, 14000).status, 4);
    EXPECT_EQ(folder.Names(), files);
    for (const Arguments& line :
         {Arguments{"formats"}, Arguments{"stats"} + Dump(), Arguments{"info", "--json"} + Dump()}) {
        const SToolRun run = folder.Run(line, "/dev/full");
        EXPECT_EQ(run.status, 4);
        EXPECT_NE(run.error.find("standard output"), std::string::npos) << run.error;
    }
}

TEST(Tool, StreamsThatAreClosedTakeNothingWithThem) {
    const CToolFolder folder;
    folder.Synthesise({"--form", "plain"});
    std::filesystem::resize_file(folder.At("dump.raw"), std::filesystem::file_size(folder.At("dump.raw")) - 1);
    const auto convert = [&](const std::string& target, const char* streams) {
        const std::string line = "cd '" + folder.At().string() + "' && exec '" OVIX_TOOL "' convert dump.raw " +
                                 "--pixel-type '" + kGigE + "' --size 64x48 --on-error skip -o " + target + streams;
        return WEXITSTATUS(std::system(line.c_str()));
    };
    EXPECT_EQ(convert("a.npy", " 2>/dev/null"), 3);
    EXPECT_EQ(convert("b.npy", " <&- >&- 2>&-"), 3);
    EXPECT_EQ(convert("c.npy", " 2>/dev/full"), 3);
    EXPECT_EQ(ReadText(folder.At("b.npy")), ReadText(folder.At("a.npy")));
}

TEST(Tool, NamesNeedNotBeText) {
    const CToolFolder folder;
    folder.Synthesise();
    std::filesystem::rename(folder.At("dump.raw"), folder.At() / "d\xFF.raw");
    for (const char* target : {"\xFE.npy", "\xFE.tif", "\xFE.png"}) {
        const Arguments convert = {"convert", "d\xFF.raw", "--frames", "0", "--json", "-o", target};
        EXPECT_TRUE(Json::accept(folder.Do(convert + FramesOf())));
    }
}

TEST(Tool, ReadsFromAPipeAndTellsTheValuesOfOneFrame) {
    const CToolFolder folder;
    folder.Synthesise({"--form", "digital"});
    const std::string fifo = folder.At("pipe");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::thread writer([&] { WriteText(fifo, ReadText(folder.At("dump.raw"))); });
    const SToolRun run = folder.Run(Arguments{"info", "-", "--frame", "-1", "--spool", "--json"} + FramesOf(), nullptr,
                                    RLIM_INFINITY, fifo);
    writer.join();
    ASSERT_EQ(run.status, 0) << run.error;
    const Json values = Json::parse(run.out)["values"];
    ASSERT_GT(values.size(), 3u);
    EXPECT_EQ(Json({values[0]["name"], values[1]["name"], values[1]["value"]}), Json({"Time", "FrameNumber", 2}));
    EXPECT_EQ(folder.Do(Arguments{"--json"} + Dump()), folder.Do(Arguments{"info"} + Dump() + Arguments{"--json"}));
    EXPECT_NE(folder.Run({"stts", "x"}).error.find("did you mean \"stats\""), std::string::npos);
}

}  // namespace
}  // namespace ovix::app
