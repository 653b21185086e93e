#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/dunlin_frames.h"
#include "support/header_line_frames.h"
#include "support/k410_frames.h"
#include "support/short_record_frames.h"

/// Writes good frames of every family as first inputs of `fuzz_frames` to the folder that is named: fuzz/corpus/frames.
namespace {

using namespace ovix;
using namespace ovix::test;

constexpr u16 kWidth = 4, kHeight = 2;

class CSeedFolder {
  public:
    explicit CSeedFolder(std::filesystem::path folder) : folder_(std::move(folder)) {
        std::filesystem::create_directories(folder_);
    }

    /// As the fuzzer reads it; `packet` has the number of images in its low half and the wanted one in the high half.
    void Add(const char* name, const GUID& type, const Bytes& frame, u8 packet = 1, u16 width = kWidth,
             u16 height = kHeight) const {
        CByteWriter input;
        input.Guid(type).U8(width).U8(height).U8(packet);
        input.bytes.insert(input.bytes.end(), frame.begin(), frame.end());
        std::ofstream file(folder_ / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(input.bytes.data()), static_cast<std::streamsize>(input.bytes.size()));
        if (!file.flush()) throw std::runtime_error("cannot write " + (folder_ / name).string());
    }

  private:
    std::filesystem::path folder_;
};

void AddK410(const CSeedFolder& folder) {
    const std::vector<u16> pixels = Ramp(kWidth * kHeight), packet = Ramp(2 * kWidth * kHeight);
    SK410Container native, turned;
    turned.record.swapped = true;
    turned.pixelsSwapped = 1;
    const SK410DigitalHeader header{.mark = 2, .in1 = 1};
    folder.Add("k410_f7m0_plain", kK410F7M0, PlainFrame(pixels, native));
    folder.Add("k410_f7m0_digital", kK410F7M0, DigitalFrame(pixels, header, native));
    folder.Add("k410_fnm0_plain", kK410FNM0, PlainFrame(pixels, turned));
    folder.Add("k410_gige_packet", kK410GigE, DigitalFrame(packet, header, native), 0x12);
    folder.Add("k410_gige_flipped", kK410GigEFlipped, PlainFrame(pixels, turned));
    folder.Add("k410_uyvy", kK410UYVY, PixelBytes(pixels));
    folder.Add("k410_yuy2", kK410YUY2, PixelBytes(pixels));
    folder.Add("k410_bgr", kK410BGR, Bytes(3 * pixels.size(), 0x55));
    const Bytes stream = EncodeJpegLs(Ramp(pixels.size(), 14), kWidth, kHeight);
    folder.Add("k410_mjls", kK410MJLS, CompressedFrame(stream, native));
    // Scans that break off keep the codec busy for seconds: one without its end mark, and one with it.
    const Bytes noEnd(stream.begin(), stream.end() - 2), cut(stream.begin(), stream.end() - 12);
    folder.Add("k410_mjls_no_end", kK410MJLS, CompressedFrame(noEnd, native));
    folder.Add("k410_mjls_cut", kK410MJLS, CompressedFrame(Join({cut, {0xFF, 0xD9}}), native));
}

void AddShortRecord(const CSeedFolder& folder) {
    const std::vector<u16> pixels = Ramp(kWidth * kHeight), packet = Ramp(3 * kWidth * kHeight);
    const SK410Record sent{.swapped = true}, turned;
    folder.Add("mv310_f7m2", kMV310, ShortRecordFrame(pixels, sent));
    folder.Add("mv310_f7m2_native", kMV310, ShortRecordFrame(pixels, turned));
    folder.Add("mv310_f7m2_packet", kMV310, ShortRecordFrame(packet, sent), 0x23);
    folder.Add("mv310_screen", kMV310Screen, PixelBytes(pixels));
    folder.Add("mv310_uyvy", kMV310YUV, PixelBytes(pixels));
    folder.Add("plover_f7m0", kPlover, ShortRecordFrame(pixels, sent));
    folder.Add("plover_f7m0_native", kPlover, ShortRecordFrame(pixels, turned));
    folder.Add("plover_uyvy", kPloverYUV, PixelBytes(pixels));
}

/// A frame whose line holds the whole header, a frame of narrow lines, and the header alone.
void AddHeaderLine(const CSeedFolder& folder, const std::string& name, const GUID& frame, const GUID& header,
                   Bytes (*make)(u16 width)) {
    constexpr u16 kWide = 130, kNarrow = 50, kLines = 3;
    const auto add = [&](const char* form, const GUID& type, const Bytes& bytes, u16 width, u16 height) {
        folder.Add((name + form).c_str(), type, bytes, 1, width, height);
    };
    add("_wide", frame, HeaderLineFrame(make(kWide), kWide, Ramp(kWide)), kWide, 1);
    add("_narrow", frame, HeaderLineFrame(make(kNarrow), kNarrow, Ramp(kNarrow * kLines)), kNarrow, kLines);
    add("_header", header, make(kWide), kWide, kLines);
}

void AddHeaderLines(const CSeedFolder& folder) {
    AddHeaderLine(folder, "osprey", kOsprey, kOspreyHeader, OspreyHeader);
    AddHeaderLine(folder, "lorra", kLORRA, kLORRAHeader, LORHeader);
    AddHeaderLine(folder, "lorsb", kLORSB, kLORSBHeader, LORHeader);
    AddHeaderLine(folder, "mvfalcon", kMVFalcon, kMVFalconHeader, MVFalconHeader);
}

/// Four columns are too few for a line that holds the trailer, which the check does not mind.
void AddLapwing(const CSeedFolder& folder) {
    const std::vector<u16> pixels = Ramp(kWidth * kHeight);
    folder.Add("lapwing_signed", kLapwing, TomzFrame(pixels, {.triggerInput = 1, .flags = 15}));
    folder.Add("lapwing_unsigned", kLapwing, TomzFrame(pixels, {.signature = "none"}));
}

void AddWren(const CSeedFolder& folder) {
    const std::vector<u16> pixels = Ramp(kWidth * kHeight), packet = Ramp(2 * kWidth * kHeight, 14);
    const SPruvRecord record{.timeFlags = 1}, disabled{.dataDisable = 1};
    folder.Add("wren_native", kWren, PruvBuffer(pixels, {record}));
    folder.Add("wren_native_packet", kWren, PruvBuffer(packet, {disabled, record}), 0x12);
    folder.Add("wren_older", kWren, TomzFrame(pixels, {.olderWren = true, .flags = 2, .timeFlags = 5}, 16 + 12 * 8));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_frame_seeds FOLDER\n");
        return 2;
    }
    const CSeedFolder folder(argv[1]);
    AddK410(folder);
    AddShortRecord(folder);
    AddHeaderLines(folder);
    AddLapwing(folder);
    AddWren(folder);
    return 0;
}
