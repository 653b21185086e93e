#pragma once

#include <charls/charls.h>

#include "reduce/filters/frame_types.h"
#include "support/byte_writer.h"

/// Frames of the K410 family, written from the format, with a switch for each form and each fault.
namespace ovix::test {

using namespace reduce::frame_types;
using Bytes = std::vector<u8>;

inline void Patch(Bytes& bytes, std::size_t offset, u64 value, int width, bool bigEndian = false) {
    for (int i = 0; i < width; ++i)
        bytes.at(offset + static_cast<std::size_t>(i)) =
            static_cast<u8>(value >> (8 * (bigEndian ? width - 1 - i : i)));
}

/// Every number in the record tells its place: a float at offset n is n + 0.25, an integer is 100 n + 1, so that a
/// value that comes from elsewhere shows. Bytes that nobody describes are 0xA5.
struct SK410Record {
    /// Its default time, as ticks since 1601.
    static constexpr i64 kTime = 133'444'736'002'500'000;
    bool swapped = false;          ///< the camera has the other byte order
    u16 width = 6, height = 9999;  ///< whoever uses the frame says how high it is
    u16 counter = 0x1234;
    u32 seconds = 1'700'000'000, milliseconds = 250;
    u32 mark = 7;
    u16 invalidFrame = 0;

    Bytes Make() const {
        Bytes record(2428, 0xA5);
        const auto put = [&](std::size_t offset, u64 value, int bytes) {
            Patch(record, offset, value, bytes, swapped);
        };
        put(0, 2, 2);
        put(2, width, 2);
        put(4, height, 2);
        put(12, width - 1u, 2);
        put(16, height - 1u, 2);
        put(24, counter, 2);
        for (const u32 at : {32,  36,  40,  44,  48,  52,  56,  60,  88,  92,  96,  112,
                             116, 120, 124, 128, 144, 148, 152, 156, 160, 164, 780, 792}) {
            put(at, std::bit_cast<u32>(static_cast<float>(at) + 0.25f), 4);
        }
        for (const u32 at : {776, 796}) put(at, 100 * at + 1, 4);
        for (const u32 at : {784, 786, 788}) put(at, (100 * at + 1) & 0xFFFF, 2);
        put(900, seconds, 4);
        put(904, milliseconds, 4);
        put(968, mark, 4);
        put(1130, invalidFrame, 2);
        return record;
    }
};

struct SK410Container {
    u32 signature = 0x004D4B4D;
    u16 firstEntry = 32, secondEntry = 1;
    u32 recordOffset = 128;
    u32 recordSize = 2428;
    u16 pixelsSwapped = 0;
    SK410Record record{};

    /// Ends with the record.
    Bytes Make() const {
        Bytes bytes(128, 0x5A);
        Patch(bytes, 0, signature, 4);
        Patch(bytes, 64, firstEntry, 2);
        Patch(bytes, 76, recordOffset, 4);
        Patch(bytes, 80, recordSize, 4);
        Patch(bytes, 96, secondEntry, 2);
        Patch(bytes, 98, pixelsSwapped, 2);
        const Bytes made = record.Make();
        bytes.insert(bytes.end(), made.begin(), made.end());
        return bytes;
    }
};

struct SK410DigitalHeader {
    u8 mark = 0, in1 = 0, in2 = 0;
    u16 counter = 0x1234;

    Bytes Make() const {
        Bytes bytes(32, 0xC3);
        Patch(bytes, 2, mark, 1);
        Patch(bytes, 10, in1, 1);
        Patch(bytes, 11, in2, 1);
        Patch(bytes, 12, counter, 2, true);
        return bytes;
    }
};

inline Bytes Join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Pixels as little-endian bytes, or with the two bytes of each exchanged.
inline Bytes PixelBytes(const std::vector<u16>& pixels, bool swapped = false) {
    Bytes bytes(2 * pixels.size());
    for (std::size_t i = 0; i < pixels.size(); ++i) Patch(bytes, 2 * i, pixels[i], 2, swapped);
    return bytes;
}

/// Pixels that all differ, in both bytes.
inline std::vector<u16> Ramp(std::size_t count, u16 bits = 16) {
    std::vector<u16> pixels(count);
    for (std::size_t i = 0; i < count; ++i) pixels[i] = static_cast<u16>((0x1357 + 0x0B0D * i) & ((1u << bits) - 1));
    return pixels;
}

inline Bytes PlainFrame(const std::vector<u16>& pixels, const SK410Container& container) {
    return Join({PixelBytes(pixels, container.pixelsSwapped == 1), container.Make()});
}
inline Bytes DigitalFrame(const std::vector<u16>& pixels, const SK410DigitalHeader& header,
                          const SK410Container& container) {
    return Join({PixelBytes(pixels, container.pixelsSwapped == 1), header.Make(), container.Make()});
}

struct SJpegLsOptions {
    int bits = 14;
    int nearLossless = 0;
    charls_jpegls_pc_parameters parameters{};  ///< zeros are the defaults
};

/// A JPEG-LS stream by the codec's own encoder.
inline Bytes EncodeJpegLs(const std::vector<u16>& pixels, u16 width, u16 height, const SJpegLsOptions& options = {}) {
    charls::jpegls_encoder encoder;
    encoder.frame_info({width, height, options.bits, 1});
    encoder.near_lossless(options.nearLossless).preset_coding_parameters(options.parameters);
    Bytes stream(1000 + 8 * pixels.size());
    encoder.destination(stream);
    stream.resize(encoder.encode(pixels));
    return stream;
}

/// The part of the record that the older relatives send, MV310 and Plover.
inline Bytes ShortRecord(const SK410Record& record) {
    Bytes bytes = record.Make();
    bytes.resize(1148);
    return bytes;
}
inline Bytes ShortRecordFrame(const std::vector<u16>& pixels, const SK410Record& record) {
    return Join({PixelBytes(pixels), ShortRecord(record)});
}

inline Bytes CompressedFrame(const Bytes& stream, const SK410Container& container) {
    Bytes length(4);
    Patch(length, 0, stream.size(), 4, true);
    return Join({length, stream, container.Make()});
}

}  // namespace ovix::test
