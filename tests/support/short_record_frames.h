#pragma once

#include "support/k410_frames.h"

/// Frames of the older relatives of the K410, written from the format.
namespace ovix::test {

inline constexpr GUID kMV310 = "{07C06B52-E505-45EA-85F5-73C9E5F0519C}"_guid;
inline constexpr GUID kMV310Screen = "{B9A7A170-5FEF-4CBC-96E4-E6B84B9F56D7}"_guid;
inline constexpr GUID kMV310Yuv = "{4C264D2A-288C-4A7B-A9A4-A9E18695CDFE}"_guid;
inline constexpr GUID kPlover = "{FD728B9B-9B9B-4098-81E4-73EC59D2505C}"_guid;
inline constexpr GUID kPloverYuv = "{0612D7F1-A3F5-423B-8A16-F77199066239}"_guid;

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
