#pragma once

#include "support/k410_frames.h"

/// Frames of the older relatives of the K410, written from the format.
namespace ovix::test {

/// The part of the record that these cameras send.
inline Bytes ShortRecord(const SK410Record& record) {
    Bytes bytes = record.Make();
    bytes.resize(1148);
    return bytes;
}
inline Bytes ShortRecordFrame(const std::vector<u16>& pixels, const SK410Record& record) {
    return Join({PixelBytes(pixels), ShortRecord(record)});
}

}  // namespace ovix::test
