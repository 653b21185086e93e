#pragma once

#include "apps/ovix/synth/detector.h"

namespace ovix::app {

/// Writes the header of a frame; all bytes are 0 beforehand.
using WriteHeader = void (*)(u8* header, const SSynthOptions& options, u64 frame);

/// Frames with one more line of 16-bit words ahead of the image, which begins with a header; in a line that is shorter
/// than the header, with as much of it as there is room for. Throws wrong usage for an image so small that the decoder
/// would read the header beyond the frame.
std::unique_ptr<ISynthesizer> MakeHeaderLineSynth(const SSynthOptions& options, u32 headerBytes, WriteHeader write,
                                                  CResponse::Formula response = CPlainResponse::Linear);

}  // namespace ovix::app
