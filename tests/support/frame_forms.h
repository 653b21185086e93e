#pragma once

#include "core/pixel_types.h"
#include "support/dunlin_frames.h"
#include "support/header_line_frames.h"

/// One frame of every form in every family, of 6 x 4 pixels, or of 130 or 2 columns where a header line wants it.
namespace ovix::test {

struct SFrameForm {
    const char* name;
    const wchar_t* filter;
    GUID type;
    Bytes frame;
    const char* evidence;        ///< mark, time, counter, preset, size
    const char* form = "3 2 0";  ///< element, bytes per pixel, unit, and what else there is
    u16 width = 6;
    std::size_t least = frame.size();  ///< bytes that decoders rely on
};

inline std::vector<SFrameForm> FrameForms() {
    constexpr u16 kHeight = 4;
    const std::vector<u16> image = Ramp(24);
    const SK410Container whole, swapped{.record = {.swapped = true, .width = 320}}, none{.recordSize = 4};
    const SK410Container untimed{.recordSize = 907}, uncounted{.recordSize = 25}, brief{.recordSize = 64};
    constexpr std::size_t kUpToTime = 48 + 128 + 908;  // read in place, whatever the container says
    const Bytes stream = EncodeJpegLs(Ramp(24, 14), 6, kHeight);
    Bytes noRecord = ShortRecordFrame(image, {});
    Patch(noRecord, 48, 0x1234, 2);
    static constexpr char kCounts[] = "3 2 0", kColours[] = "10 3 6", kLine[] = "- day counter preset",
                          kNone[] = "- - - -";
    std::vector<SFrameForm> forms = {
        {"plain", L"K410", kK410F7M0, PlainFrame(image, whole), "marked full counter - 6x9999"},
        {"plain over GigE", L"K410", kK410GigE, PlainFrame(image, swapped), "marked full counter - 320x9999"},
        {"turned", L"K410", kK410GigEFlipped, PlainFrame(image, whole), "marked full counter - 6x9999"},
        {"record before the time", L"K410", kK410F7M0, PlainFrame(image, untimed), "marked - counter - 6x9999", kCounts,
         6, kUpToTime},
        {"record before the counter", L"K410", kK410GigEFlipped, PlainFrame(image, uncounted), "marked - - - 6x9999",
         kCounts, 6, kUpToTime},
        {"record of 4 bytes", L"K410", kK410F7M0, PlainFrame(image, none), "marked - - -", kCounts, 6, kUpToTime},
        {"numbered by the decoder", L"K410", kK410FNM0, PlainFrame(image, brief), "marked - - - 6x9999", kCounts, 6,
         48 + 128 + 64},
        {"digital", L"K410", kK410F7M0, DigitalFrame(image, {}, whole), "marked - counter - 6x9999"},
        {"digital", L"K410", kK410FNM0, DigitalFrame(image, {}, brief), "marked - counter - 6x9999", kCounts, 6,
         48 + 32 + 128 + 64},
        {"compressed", L"K410", kK410MJLS, CompressedFrame(stream, whole), "marked - - - 6x4",
         "3 2 0 compressed own-length"},
        {"video", L"K410", kK410UYVY, Bytes(48), kNone, kColours},
        {"video", L"K410", kK410YUY2, Bytes(48), kNone, kColours},
        {"video", L"K410", kK410BGR, Bytes(72), kNone, kColours},
        {"trailer", L"Lapwing", kLapwing, TomzFrame(image, {.timeFlags = 5}), "marked full counter preset"},
        {"trailer", L"Lapwing", rootIRType, TomzFrame(image, {}), "marked full counter preset"},
        {"no trailer", L"Lapwing", kLapwing, TomzFrame(image, {.signature = "TOMB"}), "unmarked - - -"},
        {"time stamp", L"Wren", kWren, PruvBuffer(image, {{.timeFlags = 4}}), "marked full counter preset"},
        {"time code", L"Wren", rootIRType, PruvBuffer(image, {{.timeFlags = 1}}), "marked full counter preset"},
        {"no year", L"Wren", kWren, PruvBuffer(image, {{.timeFlags = 5}}), "marked day counter preset"},
        {"older, no year", L"Wren", kWren, TomzFrame(image, {.olderWren = true, .timeFlags = 5}),
         "marked day counter preset"},
        {"infrared", L"MV310", kMV310, ShortRecordFrame(image, {.swapped = true}), "marked full - - 6x9999"},
        {"no record", L"MV310", kMV310, noRecord, "unmarked full - -"},
        {"video", L"MV310", kMV310Screen, Bytes(48), kNone, kColours},
        {"video", L"MV310", kMV310YUV, Bytes(48), kNone, kColours},
        {"infrared", L"Plover", kPlover, ShortRecordFrame(image, {}), "marked full counter - 6x9999"},
        {"video", L"Plover", kPloverYUV, Bytes(48), kNone, kColours}};
    const auto addLine = [&](const wchar_t* filter, GUID frame, GUID header, Bytes (*make)(u16), std::size_t read) {
        for (const u16 width : {u16{130}, u16{2}, u16{0}}) {
            Bytes bytes = make(width);
            bytes.resize(read);
            forms.push_back({"header", filter, header, bytes, kLine, "12 0 0 header", width});
            // A line that is shorter than the header is followed by pixels, and these by whatever there is.
            const std::size_t size = std::max<std::size_t>(read, 2u * width * (kHeight + 1u));
            bytes.resize(size, 0xFF);
            for (const GUID& type : {frame, rootIRType})
                forms.push_back({"header line", filter, type, bytes, kLine, kCounts, width});
        }
    };
    addLine(L"Osprey", kOsprey, kOspreyHeader, OspreyHeader, 192);
    addLine(L"LOR-RA", kLORRA, kLORRAHeader, LORHeader, 96);
    addLine(L"LOR-SB", kLORSB, kLORSBHeader, LORHeader, 120);
    addLine(L"MVFalcon", kMVFalcon, kMVFalconHeader, MVFalconHeader, 256);
    return forms;
}

}  // namespace ovix::test
