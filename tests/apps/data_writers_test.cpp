#include <tiffio.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>

#include "app_files.h"
#include "apps/ovix/app_error.h"
#include "apps/ovix/output/frame_writer.h"
#include "support/text.h"

namespace ovix::app {
namespace {

using namespace test;
using Names = std::vector<std::string>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

SSeries Series(u16 width, u16 height, u64 frames) {
    SSeries series;
    series.width = width;
    series.height = height;
    series.frames = frames;
    series.unit = UnitText(TemperatureFactory, Celsius);
    series.title = "test";
    series.parameters = {{"emissivity", 0.95}};
    return series;
}

void Write(const std::filesystem::path& target, const SSeries& series, const std::vector<SPicture>& pictures,
           int compression = 1) {
    const auto writer = MakeFrameWriter(target, series, {.compression = compression});
    for (const SPicture& picture : pictures) writer->Add(picture);
    writer->Finish();
}

/// The header of an array file by its published layout: magic, version, length, a dictionary padded to a multiple of
/// 64 and ended by a newline.
void ExpectNpy(const std::string& file, const std::string& dictionary, const std::string& data) {
    ASSERT_GE(file.size(), 10u);
    EXPECT_EQ(file.substr(0, 8), std::string("\x93NUMPY\x01\x00", 8));
    const std::size_t length = static_cast<u8>(file[8]) + 256u * static_cast<u8>(file[9]);
    EXPECT_EQ((10 + length) % 64, 0u);
    const std::string header = file.substr(10, length);
    EXPECT_EQ(header.substr(0, dictionary.size()), dictionary);
    EXPECT_EQ(header.find_first_not_of(' ', dictionary.size()), header.size() - 1);
    EXPECT_EQ(header.back(), '\n');
    EXPECT_EQ(file.substr(10 + length), data);
}

TEST(NpyWriter, WritesValuesStatusAndDescription) {
    const std::vector<float> values{1.0f, -2.5f};
    const std::vector<u8> status{0, 34};
    const std::string bytes("\x00\x00\x80\x3f\x00\x00\x20\xc0", 8);
    {
        CTestFolder folder;
        Write(folder.At("a.npy"), Series(2, 1, 1), {{7, values, status, ""}});
        EXPECT_EQ(folder.Names(), (Names{"a.json", "a.npy", "a.status.npy"}));
        ExpectNpy(ReadText(folder.At("a.npy")), "{'descr': '<f4', 'fortran_order': False, 'shape': (1, 1, 2), }",
                  bytes);
        ExpectNpy(ReadText(folder.At("a.status.npy")), "{'descr': '|u1', 'fortran_order': False, 'shape': (1, 1, 2), }",
                  std::string("\x00\x22", 2));
        const Json json = Json::parse(ReadText(folder.At("a.json")));
        EXPECT_EQ(json["unit"], "°C");
        EXPECT_EQ(json["parameters"]["emissivity"], 0.95);
        EXPECT_EQ(json["frames"].dump(), R"([{"frame":7,"status":{"good":1,"noData":1}}])");
    }
    {
        // Three were asked for and one was skipped: the shape says what is there.
        CTestFolder folder;
        Write(folder.At("a.npy"), Series(2, 1, 3), {{0, values, {}, "t0"}, {2, values, {}, "t2"}});
        EXPECT_EQ(folder.Names(), (Names{"a.json", "a.npy"}));
        ExpectNpy(ReadText(folder.At("a.npy")), "{'descr': '<f4', 'fortran_order': False, 'shape': (2, 1, 2), }",
                  bytes + bytes);
        EXPECT_EQ(Json::parse(ReadText(folder.At("a.json")))["frames"].dump(),
                  R"([{"frame":0,"caption":"t0"},{"frame":2,"caption":"t2"}])");
    }
}

TEST(CsvWriter, NumbersReadBackExactly) {
    CTestFolder folder;
    std::vector<float> values{0.1f, -1e-30f, 16777217.0f, std::nextafter(300.0f, 301.0f), 25.0f, kNaN};
    // More than texts are kept.
    while (values.size() < 60'000) values.push_back(20 + 0.001f * static_cast<float>(values.size()));
    Write(folder.At("a.csv"), Series(300, 200, 2), {{4, values, {}, ""}, {9, values, {}, ""}});
    const std::string text = ReadText(folder.At("a.csv"));
    EXPECT_TRUE(text.starts_with("frame,row,x0 [°C],x1 [°C],x2 [°C],"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 401);
    EXPECT_NE(text.find("\n4,0,0.1,"), std::string::npos);
    const char *next = text.data() + text.find("\n9,0,"), *end = text.data() + text.size();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i % 300 == 0) next = std::find(std::find(next, end, ',') + 1, end, ',') + 1;  // behind frame and row
        float read = 0;
        next = std::from_chars(next, end, read).ptr + 1;
        ASSERT_TRUE(read == values[i] || (std::isnan(read) && std::isnan(values[i]))) << i << ' ' << read;
    }
    EXPECT_EQ(next, end);
}

/// What any reader of TIFF sees of a page.
struct SPage {
    u32 width = 0;
    u32 height = 0;
    u16 bits = 0;
    u16 format = 0;
    u16 compression = 0;
    u16 predictor = 0;
    std::string description;
    std::vector<char> pixels;
};

std::vector<SPage> ReadTiff(const std::filesystem::path& path) {
    std::vector<SPage> pages;
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    EXPECT_NE(tiff, nullptr);
    if (!tiff) return pages;
    do {
        SPage& page = pages.emplace_back();
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &page.width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &page.height);
        TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &page.bits);
        TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &page.format);
        TIFFGetField(tiff, TIFFTAG_COMPRESSION, &page.compression);
        TIFFGetField(tiff, TIFFTAG_PREDICTOR, &page.predictor);
        char* text = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_IMAGEDESCRIPTION, &text)) page.description = text;
        page.pixels.resize(std::size_t{page.height} * static_cast<std::size_t>(TIFFScanlineSize(tiff)));
        for (u32 y = 0; y < page.height; ++y)
            EXPECT_EQ(TIFFReadScanline(tiff, page.pixels.data() + y * TIFFScanlineSize(tiff), y, 0), 1);
    } while (TIFFReadDirectory(tiff));
    TIFFClose(tiff);
    return pages;
}

class TiffWriter : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Compression, TiffWriter, testing::Values(0, 1, 6, 12));

TEST_P(TiffWriter, PagesReadBack) {
    CTestFolder folder;
    constexpr u16 kWidth = 500;
    constexpr u16 kHeight = 301;  // more than two strips, the last of them short
    std::vector<std::vector<float>> frames(3, std::vector<float>(kWidth * kHeight));
    for (std::size_t f = 0; f < frames.size(); ++f)
        for (std::size_t i = 0; i < frames[f].size(); ++i) frames[f][i] = std::sin(static_cast<float>(i * (f + 1)));
    std::vector<u8> status(frames[0].size());
    status[12] = 4;
    Write(folder.At("a.tif"), Series(kWidth, kHeight, 3),
          {{0, frames[0], status, ""}, {5, frames[1], status, ""}, {6, frames[2], status, ""}}, GetParam());
    EXPECT_EQ(folder.Names(), (Names{"a.status.tif", "a.tif"}));

    const std::vector<SPage> pages = ReadTiff(folder.At("a.tif"));
    ASSERT_EQ(pages.size(), 3u);
    for (std::size_t f = 0; f < pages.size(); ++f) {
        EXPECT_EQ(Text(pages[f].width, pages[f].bits, pages[f].format, pages[f].compression),
                  Text(kWidth, 32, SAMPLEFORMAT_IEEEFP, GetParam() ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE));
        EXPECT_LE(pages[f].predictor, PREDICTOR_NONE);
        ASSERT_EQ(pages[f].pixels.size(), frames[f].size() * 4);
        EXPECT_EQ(std::memcmp(pages[f].pixels.data(), frames[f].data(), pages[f].pixels.size()), 0);
    }
    const Json first = Json::parse(pages[0].description);
    EXPECT_EQ(Json({first["unit"], first["parameters"]["emissivity"], first["status"]["overflow"]}),
              Json({"°C", 0.95, 1}));
    EXPECT_TRUE(std::all_of(pages[0].description.begin(), pages[0].description.end(), [](char c) { return c > 0; }));
    EXPECT_EQ(Json::parse(pages[1].description)["frame"], 5);

    const std::vector<SPage> flags = ReadTiff(folder.At("a.status.tif"));
    ASSERT_EQ(flags.size(), 3u);
    EXPECT_TRUE(flags[2].bits == 8 && flags[2].pixels[12] == 4);
}

TEST(TiffWriterSize, BigOnlyWhenMuchIsToCome) {
    const std::vector<float> values(1024 * 1024);
    for (const auto& [frames, version] : {std::pair<u64, char>{512, 42}, {513, 43}}) {  // of 4 MiB each
        CTestFolder folder;
        Write(folder.At("a.tif"), Series(1024, 1024, frames), {{0, values, {}, ""}});
        EXPECT_EQ(ReadText(folder.At("a.tif"))[2], version);
    }
}

/// Frames may be encoded in any order, ahead of what is written, and by several threads at a time.
TEST(FrameWriter, EncodesFramesIndependently) {
    constexpr u64 kFrames = 6;
    std::vector<std::vector<float>> values(kFrames, std::vector<float>(64 * 20));
    std::vector<std::vector<u8>> status(kFrames, std::vector<u8>(64 * 20));
    std::vector<SPicture> pictures;
    for (u64 f = 0; f < kFrames; ++f) {
        for (std::size_t i = 0; i < values[f].size(); ++i) {
            values[f][i] = std::sin(static_cast<float>(i * (f + 1)));
            status[f][i] = i % 97 == f ? 1 : 0;
        }
        pictures.push_back({f, values[f], status[f], "t" + std::to_string(f)});
    }
    for (const char* name : {"a.npy", "a.csv", "a.tif", "a.png"}) {
        CTestFolder expected, got;
        const SWriteOptions options{.range = std::pair(-1.0f, 1.0f)};
        const auto inOrder = MakeFrameWriter(expected.At(name), Series(64, 20, kFrames), options);
        for (const SPicture& picture : pictures) inOrder->Add(picture);
        inOrder->Finish();

        const auto writer = MakeFrameWriter(got.At(name), Series(64, 20, kFrames), options);
        std::vector<SEncodedFrame> encoded(kFrames);
        {
            std::vector<std::jthread> threads;
            for (u64 f = kFrames; f-- > 0;) threads.emplace_back([&, f] { encoded[f] = writer->Encode(pictures[f]); });
        }
        for (u64 f = 0; f < kFrames; ++f) writer->Append(pictures[f], encoded[f]);
        writer->Finish();
        ASSERT_EQ(got.Names(), expected.Names());
        for (const std::string& file : got.Names())
            EXPECT_TRUE(ReadText(got.At(file)) == ReadText(expected.At(file))) << file;
    }
}

TEST(FrameWriter, CountsEachPixelUnderItsHeaviestFlag) {
    std::vector<u8> status(1000);
    std::fill(status.begin() + 100, status.begin() + 700, 1);  // through whole blocks and across their edges
    status[0] = 32, status[299] = 3, status[999] = 4;
    EXPECT_EQ(CountStatus(status).dump(),
              R"({"good":398,"outsideCalibration":599,"underflow":1,"overflow":1,"noData":1})");
}

TEST(FrameWriter, WritesNothingWithoutFinishOrFrames) {
    const std::vector<float> values(4);
    const std::vector<u8> status(4);
    for (const char* name : {"a.npy", "a.csv", "a.tif", "a.TIFF", "a.png"}) {
        CTestFolder folder;
        MakeFrameWriter(folder.At(name), Series(2, 2, 1), {})->Add({0, values, status, ""});
        EXPECT_EQ(folder.Names(), Names{}) << name;
        EXPECT_THROW(MakeFrameWriter(folder.At(name), Series(2, 2, 1), {})->Finish(), CAppError) << name;
        EXPECT_EQ(folder.Names(), Names{}) << name;
    }
    CTestFolder folder;
    for (const char* name : {"a", "a.jpg", ".png"})
        EXPECT_THROW(MakeFrameWriter(folder.At(name), Series(2, 2, 1), {}), CAppError) << name;
}

}  // namespace
}  // namespace ovix::app
