#pragma once

#include "core/core.h"

/// What a measuring process and its helper `ovix-decode` say to each other. Both are of one build: the helper ends at
/// once when `kVersion`, its first argument, is not its own.
///
/// The arguments that follow: name of the decoder, pixel type as 32 hexadecimal digits of its 16 bytes, width, height,
/// process id of the parent. Descriptor `kSocket` is one end of a pair of sockets, `kMemory` the memory that both map:
/// the pixels from its start, the frame from `frameAt` on.
namespace ovix::measure::decode_protocol {

inline constexpr const char* kVersion = "ovix-decode-1";
inline constexpr int kSocket = 3;
inline constexpr int kMemory = 4;

struct SRequest {
    u64 memoryBytes = 0;  ///< of all of the memory, which grows with the frames
    u64 frameAt = 0;
    u64 frameBytes = 0;
};

/// With what a helper leaves that is of another build, or does not find the decoder.
inline constexpr int kMisfit = 2;

/// The answer is one byte.
inline constexpr u8 kRefused = 0;
inline constexpr u8 kDecoded = 1;

}  // namespace ovix::measure::decode_protocol
