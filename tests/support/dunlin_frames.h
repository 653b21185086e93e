#pragma once

#include "reduce/filters/dunlin_reduce_objects.h"
#include "support/k410_frames.h"
#include "support/text.h"

/// Frames of the Lapwing and Wren families, written from the format, with a switch for each form and each fault.
namespace ovix::test {

/// The trailer of 96 bytes. Sensors and clock stand as Lapwing sends them, or as older Wren cameras do.
struct STomzTrailer {
    const char* signature = "TOMZ";
    u16 version = 1, words = 48;
    bool olderWren = false;
    u32 counter = 0x12345678;
    u8 activePreset = 2, triggerInput = 0, flags = 0, timeFlags = 0;
    u16 checksumError = 0;

    Bytes Make() const {
        CByteWriter w;
        w.Text(signature, 4).U16(version).U16(words).U64(13'000'000'000'000'000).U32(counter);
        w.U8(0x53).U8(3).U8(activePreset).U8(9);  // two video presets, three presets, page 9
        if (olderWren) {
            w.F32(295.5f).F32(296.25f).F32(297).F32(298).F32(77.5f).F32(40e6f);
        } else {
            w.U16(0x805).U16(0xFFFF).U16(0x7FF).PadTo(40).F32(77.5f).U32(40);
        }
        w.U32(39'999).U32(800'000);  // clock ticks: 1000 us less one, 20 ms
        w.U8(olderWren ? 4 : triggerInput).U8(olderWren ? 0xEE : 4).U8(flags).U8(0xEE);
        w.U8(olderWren ? triggerInput : 0xEE);
        w.U8(timeFlags).U16(200).U8(13).U8(14).U8(15).U32(678'901).U8(26);  // day 200, 13:14:15.678901, 2026
        w.U16(0x1111).U32(22'222).U32(33'333).U8(0b10110).U8(0).U16(41).U16(42).U16(43).U16(44).PadTo(94);
        u16 sum = checksumError;
        for (std::size_t i = 0; i < 94; i += 2) sum = static_cast<u16>(sum + w.bytes[i] + 256 * w.bytes[i + 1]);
        return w.U16(sum).bytes;
    }
};

/// A record of 109 bytes of the native trailer: what is not named is its own offset.
struct SPruvRecord {
    u64 counter = 0x1'0000'0002;
    u8 dataDisable = 0, triggerInput = 0, timeFlags = 0;

    Bytes Make() const {
        Bytes record(109);
        for (std::size_t i = 0; i < 109; ++i) record[i] = static_cast<u8>(i);
        Patch(record, 14, counter, 8);
        Patch(record, 64, dataDisable, 1);
        Patch(record, 68, triggerInput, 1);
        Patch(record, 69, timeFlags, 1);
        return record;
    }
};

/// Images one after the other, the signature, and their records: of one image a frame by itself.
inline Bytes PruvBuffer(const std::vector<u16>& pixels, const std::vector<SPruvRecord>& records) {
    Bytes bytes = Join({PixelBytes(pixels), {'P', 'R', 'U', 'V'}});
    for (const SPruvRecord& record : records) bytes = Join({bytes, record.Make()});
    return bytes;
}

/// An image with its trailer, filled up to `size` bytes.
inline Bytes TomzFrame(const std::vector<u16>& pixels, const STomzTrailer& trailer, std::size_t size = 0) {
    Bytes bytes = Join({PixelBytes(pixels), trailer.Make()});
    if (size) bytes.resize(size, 0x77);
    return bytes;
}

/// All fields in their order, a blank between two.
inline std::string FieldsOf(const reduce::SDunlinFrame& f) {
    return Text(f.flags, f.timeStamp, f.frameCounter, f.numPresets, f.videoPresetLow, f.videoPresetHigh, f.activePreset,
                f.detectorTemp, f.sensorTemp[0], f.sensorTemp[1], f.sensorTemp[2], f.sensorTemp[3], f.masterClock,
                f.integrationTime, f.frameRate, f.filterPosition, f.externalTrigger, f.dataDisable, f.pageIndex,
                f.lensChange, f.inputSignalGrabbed, f.triggerInput, f.lockinWord, f.lockinPeriod, f.lockinPhase,
                f.lockinMin, f.lockinMax, f.signalNumber, f.lockinMean[0], f.lockinMean[1], f.lockinMean[2],
                f.lockinMean[3], f.timeFlags, f.dayOfYear, f.hours, f.minutes, f.seconds, f.microseconds, f.year);
}

}  // namespace ovix::test
