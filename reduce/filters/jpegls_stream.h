#pragma once

#include "reduce/filters/frame_probe.h"

namespace ovix::reduce {

/// Whether the `size` bytes at `offset`, which must be held, begin as a JPEG-LS stream of exactly this picture: the
/// given width and height, one component of 9 to 16 bits, lossless, default coding parameters.
///
/// All segments up to the first scan are read. The decoder believes a stream's declared sizes and parameters, so what
/// differs is refused here, and so is a stream that does not end in its end mark. The rest of the scan is not judged: a
/// damaged one gives a wrong picture. The decoder may look at one byte behind the stream, so one must be held.
bool CheckJpegLsStream(const CFrameProbe& probe, u64 offset, u64 size, u16 width, u16 height);

/// Decodes to pixels of 16 bits. A stream that will not do leaves some or all of `dest` as it was.
void DecodeJpegLs(void* dest, u64 destSize, const void* stream, u64 size);

}  // namespace ovix::reduce
