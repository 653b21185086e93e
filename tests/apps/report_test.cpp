#include <gmock/gmock.h>
#include <libdeflate.h>

#include <cmath>

#include "apps/ovix/app_error.h"
#include "apps/ovix/report/packed_frame.h"
#include "apps/ovix/report/report_page.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::ElementsAreArray;

/// The bytes behind the text of a packed frame.
std::vector<u8> Unpacked(const std::string& base64, std::size_t size) {
    std::vector<u8> zipped;
    u32 word = 0;
    int bits = 0;
    for (char c : base64) {
        if (c == '=') break;
        const u32 digit = c >= 'a'   ? c - 'a' + 26u
                          : c >= 'A' ? c - 'A' + 0u
                          : c >= '0' ? c - '0' + 52u
                          : c == '+' ? 62
                                     : 63;
        word = word << 6 | digit;
        if ((bits += 6) >= 8) zipped.push_back(static_cast<u8>(word >> (bits -= 8)));
    }
    std::vector<u8> bytes(size + 1);
    std::size_t count = 0;
    libdeflate_decompressor* const zlib = libdeflate_alloc_decompressor();
    EXPECT_EQ(libdeflate_zlib_decompress(zlib, zipped.data(), zipped.size(), bytes.data(), bytes.size(), &count), 0);
    libdeflate_free_decompressor(zlib);
    bytes.resize(count);
    return bytes;
}

TEST(PackedFrame, BytesAreThoseOfTheForm) {
    const SPagePixels pixels{3, 2, {10, 10.6f, 9, 200, NAN, -1}, {0, 2, 0, 4, 32, 0}};
    const SPackedFrame packed = PackFrame(pixels, 0.5);
    // Steps 20, 21, 18; 400, as before, -2; differences to the left 20, 1, -3; to above 380; 0, -402.
    EXPECT_THAT(Unpacked(packed.text, 26), ElementsAre(2, 1,                  // byte planes, and there are gaps
                                                       0, 0, 0, 2, 0, 3,      // 40, 2, 5, 760, 0, 803: high bytes
                                                       40, 2, 5, 248, 0, 35,  // low bytes
                                                       0, 0, 0, 0, 1, 0,      // gaps
                                                       0, 2, 0, 4, 32, 0));   // status
    EXPECT_NEAR(packed.figures.largestRounding, 0.1, 1e-6);
    EXPECT_EQ(packed.figures.gaps, 1u);
    EXPECT_EQ(packed.figures.range.Range().low, -1);  // of the pixels within what can be measured
    EXPECT_EQ(packed.figures.range.Range().high, 10);
}

TEST(PackedFrame, TakesAsManyPlanesAsItsLargestDifference) {
    const std::pair<float, u8> cases[] = {{127, 1},     {128, 2},     {32767, 2},        {32768, 3},
                                          {8388607, 3}, {8388608, 4}, {-2147483520.f, 4}};
    for (const auto& [value, planes] : cases)
        EXPECT_EQ(Unpacked(PackFrame({1, 1, {value}, {0}}, 1).text, 2u + planes + 1)[0], planes) << value;
    EXPECT_THROW(PackFrame({1, 1, {2147483648.f}, {0}}, 1), CAppError);
    EXPECT_THROW(PackFrame({1, 1, {1e30f}, {0}}, 1e-12), CAppError);
}

TEST(BinPixels, MeansOfGoodPixelsAndAllFlags) {
    const std::vector<float> values{1, 3,  5,   NAN,  //
                                    5, 99, 7,   8,    //
                                    4, 6,  NAN, INFINITY};
    const std::vector<u8> status{0, 0,  2,  0,  //
                                 0, 32, 4,  1,  //
                                 0, 0,  32, 0};
    const SPagePixels binned = BinPixels(values, status, 4, 3, 2);
    EXPECT_TRUE(binned.width == 2 && binned.height == 2);
    // The flagged 99 aside; none is without a flag and a number; half a block at the edge.
    EXPECT_THAT(binned.values, ElementsAre(3, (5 + 7 + 8) / 3.f, 5, testing::IsNan()));
    EXPECT_THAT(binned.status, ElementsAre(32, 2 | 4 | 1, 0, 32));
    EXPECT_THAT(BinPixels(values, status, 4, 3, 1).status, ElementsAreArray(status));
}

TEST(ReportPage, StepsAndBinsGetCoarserInOrder) {
    const auto text = [](const std::vector<SPacking>& packings) {
        std::string all;
        for (const auto& [bin, step] : packings)
            all += std::to_string(bin) + "/" + std::to_string(static_cast<int>(step)) + " ";
        return all;
    };
    EXPECT_EQ(text(CoarserPackings({1, 5}, false, false, 64, 40)), "1/5 1/10 1/20 2/5 2/10 2/20 ");
    EXPECT_EQ(text(CoarserPackings({1, 5}, true, false, 640, 64)), "1/5 2/5 4/5 ");
    EXPECT_EQ(text(CoarserPackings({3, 5}, false, true, 8, 8)), "3/5 3/10 3/20 ");
    EXPECT_NEAR(SuitingStep(0, 1), 1e-4, 1e-18);
    EXPECT_NEAR(SuitingStep(0, 3), 2e-4, 1e-18);
    EXPECT_NEAR(SuitingStep(-3, 4.5f), 5e-4, 1e-18);
    EXPECT_GT(SuitingStep(7, 7), 0);
}

TEST(ReportPage, NoTextEndsItsElement) {
    std::string page;
    CReportPage writer([&](std::string_view text) { page += text; });
    const std::string before = page;
    const std::string name = "</script><!--<script>\xFF\"";
    writer.Add(PackFrame({1, 1, {0}, {0}}, 1));
    writer.Finish({.title = name,
                   .sourceWidth = 1,
                   .sourceHeight = 1,
                   .frames = {{.number = 0, .time = name}},
                   .regions = {measure::SShape::Rectangle(name, 0, 0, 1, 1)},
                   .facts = {{name, {name}, {{name}}}}});
    EXPECT_EQ(page.size(), writer.Size());
    const std::string data = page.substr(before.size(), page.rfind("<script>") - before.size());
    const auto count = [&](std::string_view what) {
        int n = 0;
        for (std::size_t at = 0; (at = data.find(what, at)) != data.npos; ++at) ++n;
        return n;
    };
    EXPECT_TRUE(count("<") == 4 && count("</script>") == 2);  // the elements of the frame and of the head
    EXPECT_EQ(count("<!--"), 0);
}

TEST(ReportCommand, KeepsItsPromisesAboutFiles) {
    CToolFolder folder;
    folder.Synthesise();
    const std::tuple<Arguments, int, const char*> cases[] = {
        {{"-o", "page.html"}, 0, "3 frames"},
        {{"-o", "page.html"}, 4, "page.html"},
        {{"-o", "a.html", "--max-size", "60k"}, 1, "expected at most 60000 bytes"},
        {{"-o", "a.html", "--max-size", "much"}, 2, "--max-size"},
        {{"-o", "a.html", "--step", "0"}, 2, "--step"},
        {{"-o", "a.html", "--bin", "49"}, 2, "--bin: expected 1 to 48"},
        {{"-o", "a.html", "--step", "1e-12"}, 1, "a larger --step"},
    };
    for (const auto& [more, status, error] : cases) {
        const SToolRun run = folder.Run(Arguments{"report"} + Dump() + more);
        EXPECT_EQ(run.status, status) << run.error;
        EXPECT_THAT(run.error, testing::HasSubstr(error));
    }
    EXPECT_THAT(folder.Names(), ElementsAre("dump.raw", "page.html"));
}

}  // namespace
}  // namespace ovix::app
