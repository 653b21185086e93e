// Frame adjustment and hexdumps on files that are written byte by byte.

#include "support/byte_writer.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;

void Write(const CToolFolder& folder, const CByteWriter& content) {
    WriteText(folder.At("dump.raw"), {content.bytes.begin(), content.bytes.end()});
}

CByteWriter Words(std::initializer_list<u16> words) {
    CByteWriter bytes;
    for (const u16 word : words) bytes.U16(word);
    return bytes;
}

/// "adjust dump.raw -o out.raw" with more arguments.
SToolRun Adjust(const CToolFolder& folder, const Arguments& more) {
    return folder.Run(Arguments{"adjust", "dump.raw", "-o", "out.raw", "--overwrite"} + more);
}

TEST(Adjust, WritesEveryFrameAsTold) {
    const CToolFolder folder;
    // Two frames of 4 x 3 words with a word of something else behind each.
    CByteWriter dump;
    for (u16 frame = 0; frame < 2; ++frame) {
        for (u16 i = 0; i < 12; ++i) dump.U16(1000u * frame + i);
        dump.U16(0xFFFF);
    }
    Write(folder, dump);
    const std::tuple<int, Arguments, CByteWriter> cases[] = {
        {0,
         {"--pixel-type", "counts", "--size", "2x2", "--margins", "1,1,1,0", "--frame-size", "26"},
         Words({5, 6, 9, 10, 1005, 1006, 1009, 1010})},
        {0,
         {"--pixel-type", "k410 ir (gige)", "--size", "4x3", "--frame-size", "26", "--frames", "1", "--mirror",
          "--flip", "--shift", "-1", "--mask", "0xFFFC"},
         Words({2020, 2020, 2016, 2016, 2012, 2012, 2008, 2008, 2004, 2004, 2000, 2000})},
        {3,  // the file is no whole number of such frames
         {"--pixel-type", "RGB24", "--size", "1x4", "--deinterlace", "--frames", "0"},
         CByteWriter().U8(0).U8(0).U8(1).U8(3).U8(0).U8(4).U8(0).U8(2).U8(0).U8(0).U8(5).U8(0)},
    };
    for (const auto& [status, line, expected] : cases) {
        EXPECT_EQ(Adjust(folder, line).status, status);
        EXPECT_EQ(ReadText(folder.At("out.raw")), std::string(expected.bytes.begin(), expected.bytes.end())) << line[1];
    }
}

TEST(Adjust, RefusesWhatWouldLeaveTheFrame) {
    const CToolFolder folder;
    Write(folder, Words({0, 1, 2, 3, 4, 5, 6, 7, 8}));  // one frame of 4 x 2 and a part
    const std::tuple<const char*, Arguments, const char*> cases[] = {
        {"counts", {"--size", "2x1", "--margins", "1,1,1,0", "--flip"}, "1 words ahead"},
        {"counts", {"--size", "4x2", "--frame-size", "15"}, "at least the 16 bytes"},
        {"counts", {"--size", "4x2", "--margins", "0,4,0,0", "--frame-size", "16"}, "at least the 48 bytes"},
        {"counts", {"--size", "4x2", "--margins", "-1,0,0,0"}, "LEFT,TOP,RIGHT,BOTTOM"},
        {"counts", {"--size", "65535x16384", "--margins", "65535,65535,65535,65535"}, "4 GiB"},
        {"counts", {"--size", "4x2", "--shift", "0x1F0000000"}, "--shift"},
        {"counts", {"--size", "4x2", "--deinterlace"}, "no effect"},
        {"YUV", {"--size", "1x1", "--shift", "1"}, "no effect on YUV"},
        {"UYVY", {"--size", "2x2"}, "nothing to adjust"},  // stands under the pictures for a screen
    };
    for (const auto& [type, line, says] : cases) {
        const SToolRun run = Adjust(folder, Arguments{"--pixel-type", type} + line);
        EXPECT_EQ(run.status, 2) << says << run.error;
        EXPECT_NE(run.error.find(says), std::string::npos) << run.error;
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"dump.raw"});
    }
    const SToolRun cut = Adjust(folder, {"--size", "4x2", "--pixel-type", "counts"});
    EXPECT_EQ(cut.status, 3);
    EXPECT_NE(cut.error.find("frame 1, offset 16: the last frame is cut"), std::string::npos) << cut.error;
}

/// A Plover frame of 1 x 2 pixels: the record's bytes are all 0x11 up to 24, then zeros, then 0x22.
TEST(Hexdump, ShowsEveryByteInLines) {
    const CToolFolder folder;
    CByteWriter frame = Words({0x1234, 0x5678, 2});
    while (frame.bytes.size() < 4 + 24) frame.U8(0x11);
    frame.U16(300).F32(0).PadTo(4 + 970);
    while (frame.bytes.size() < 4 + 1148) frame.U8(0x22);
    Write(folder, frame);
    const Arguments line = {"info", "--hexdump", "dump.raw", "--pixel-type", "Plover IR (F7M0)", "--size", "1x2"};
    const std::string text = folder.Do(line);
    for (const char* expected : {
             "\n     0  (4 bytes)                                        pixels\n",
             "\n     4  02 00                                            ByteOrder         native\n",
             "\n    10  11 11 11 11 11 11\n",
             "\n   904  00 00 00 00 00 00 00 00                          Time              1970-01-01 00:00:00.000000 "
             "UTC\n",
             "\n   912  00 × 60\n",
             "\n   972  00 00 22 22                                      MarkCounter       572653568\n",
             "\n   976  22 × 158\n",
             "\n  1136  22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22\n",
         })
        EXPECT_NE(text.find(expected), std::string::npos) << expected << text;
    EXPECT_EQ(folder.Run({"info", "--hexdump", "dump.raw", "--pixel-type", "Plover IR (F7M0)", "--size", "2x2"}).status,
              1);
    EXPECT_EQ(folder.Run({"info", "--hexdump", "--frames", "0", "dump.raw"}).status, 2);
}

}  // namespace
}  // namespace ovix::app
