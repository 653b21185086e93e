#pragma once

#include "support/k410_frames.h"

/// Headers of the families with a header line, written from the formats, and frames around them.
namespace ovix::test {

/// The bytes as low halves of 16-bit words from a word on.
inline void PutLow(Bytes& header, std::size_t word, std::initializer_list<int> bytes) {
    for (const int byte : bytes) header.at(2 * word++) = static_cast<u8>(byte);
}

/// 14:25:36.789012 of day 123, two digits a word, lowest first.
inline void PutDigits(Bytes& header, std::size_t word) {
    PutLow(header, word, {0x12, 0x90, 0x78, 0x36, 0x25, 0x14, 0x23, 0x01});
}

inline Bytes OspreyHeader(u16 width) {
    Bytes header(192);
    PutLow(header, 1, {0x25});                     // preset 2
    PutLow(header, 2, {0x00, 0x00, 0x61, 0x4B});   // integration time 24907
    PutLow(header, 6, {0x80, 0x42, 0xA1, 0x07});   // FPA control word
    PutLow(header, 10, {0x02, 0x80, 0x02, 0x00});  // FPA window word
    PutLow(header, 18, {0x12, 0x34});              // frame counter
    Patch(header, 40, 270, 2);                     // resolution, a whole word
    PutLow(header, 21, {0xFA, 0x12, 0x34});        // saturation flag and 20 bits of saturation
    const std::size_t block = width < 96 ? 24 : 69;
    PutDigits(header, block);
    PutLow(header, block + 19, {0x4A, 0x01});  // front panel temperature 330
    PutLow(header, block + 21,
           {0x00, 0xF0});  // air gap temperature 0, the upper half of the second byte is not its own
    PutLow(header, block + 23, {0x00, 0x04});  // dewar temperature 1024
    return header;
}

/// With the lens block behind the 96 bytes.
inline Bytes LORHeader(u16 = 0) {
    Bytes header(120);
    const auto put = [&](std::size_t offset, std::initializer_list<u32> values, int bytes) {
        for (const u32 value : values) {
            Patch(header, offset, value, bytes);
            offset += static_cast<std::size_t>(bytes);
        }
    };
    put(0, {0x1234}, 2);
    put(2, {0x8000 | 123 << 2, 14 << 12 | 25 << 6 | 36, 12, 2580},
        2);                                  // locked, day 123, 14:25:36, 789012 microseconds
    put(10, {0x8000 | 0x10 | 0x04 | 2}, 2);  // trigger, video and Camera Link NUC, preset 2
    put(12, {29315, 30000, 26815, 7700}, 2);
    put(20, {0xF0000001, 12501}, 4);
    put(30, {3}, 2);
    put(34, {0x0102, 0x0304, 0xA506, 0x0708, 0x090A}, 2);
    put(44, {65535}, 2);
    put(46, {0x80000000 | 70000, 125000}, 4);
    put(54, {24575, 0xFFFF}, 2);  // digital gain, digital offset -1 half
    put(58, {7, 8, 9, 10}, 1);
    put(62, {1250, 31234, 27315, 29315, 26815, 500, 1001, 65535}, 2);
    put(78, {4000000000, 5}, 4);
    put(86, {600}, 2);
    put(88, {0x0A, 0xB0}, 1);
    put(90, {14, 1042, 50}, 2);
    put(96, {1}, 2);
    put(98, {500, 0xAB000010, 0x00FFFFF0}, 4);  // focal length, encoders of 24 bits: 16 and -16
    put(110, {285, 0, 271, 65535, 1}, 2);
    return header;
}

inline Bytes MVFalconHeader(u16 = 0) {
    Bytes header(256, 0xEE);  // in the high halves, which do not count
    for (std::size_t i = 0; i < header.size(); i += 2) header[i] = 0;
    PutLow(header, 1, {0x06});                                                        // preset 2, or 6
    PutLow(header, 2, {0x12, 0x34, 0x56, 0x78});                                      // integration time
    PutLow(header, 6, {0x01, 0x02, 0x03, 0x04, 0x05, 0xA6, 0x07, 0x08, 0x09, 0x0A});  // FPA control word
    PutLow(header, 16, {0xF0, 0x00, 0x01, 0x12, 0x34, 0x01, 0x00, 0x02});  // counter, saturation threshold and pixels
    PutDigits(header, 24);
    PutLow(header, 32, {0x02, 40, 101, 0xF4, 0xFF});           // locked, humidity, pressure, temperature -12
    PutLow(header, 43, {210, 0, 0x4A, 0x01, 0x54, 0x01});      // front panel 210, air gap 330, dewar 340
    PutLow(header, 52, {0x60, 0x00, 0xFF, 0xFF});              // gain 24576, offset -1 half
    PutLow(header, 58, {14, 0x0B, 0xB8});                      // resolution, analog offset 3000
    PutLow(header, 61, {0x48, 0x03, 0xFF, 0x03, 0xF4, 0x01});  // analog inputs 840, 1023, 500
    PutLow(header, 67, {0x0A, 0xB0, 0x00, 0x01, 0xF4, 0x00});  // digital inputs and outputs, frame period 128000
    PutLow(header, 73, {0xFF, 0xFF, 0xFF, 0xFE, 0x00});        // pixel threshold, flag
    PutLow(header, 117, {1, 2, 3, 0x00, 0x04, 0x12, 50});      // types, serial number, lens
    return header;
}

/// The header as the start of a line of `width` words, cut to it, and the pixels.
inline Bytes HeaderLineFrame(Bytes header, u16 width, const std::vector<u16>& pixels) {
    header.resize(2 * std::size_t{width}, 0x77);
    return Join({header, PixelBytes(pixels)});
}

}  // namespace ovix::test
