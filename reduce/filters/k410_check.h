#pragma once

#include "reduce/filters/frame_questions.h"

namespace ovix::reduce {

/// The answers of the K410 family. After true no operation touches a byte outside the frame, the destination or
/// the library's own memory.
bool CheckK410Frame(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault);
/// The same for a buffer of several images with one tail behind them.
bool CheckK410Buffer(const void* buffer, GUID type, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault);

bool GetK410Form(GUID type, SFrameForm& form);
void GetK410Evidence(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameEvidence& evidence);

}  // namespace ovix::reduce
