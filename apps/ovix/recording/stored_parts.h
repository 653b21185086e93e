#pragma once

#include <functional>
#include <span>

#include "apps/ovix/recording/recording_check.h"

namespace ovix::app {

/// A part of a header or record with a meaning of its own.
struct SStoredPart {
    enum EKind { Number, Hex, Text, Id, Bytes };

    u32 offset;
    u32 size;
    const char* name;
    EKind kind = Number;
};

/// Of the header of a block.
std::span<const SStoredPart> BlockHeaderParts();
/// Of the record of the pixels, in its newest form.
std::span<const SStoredPart> PixelsRecordParts();

/// Calls `report(part, expected, found)`, both as texts, for every part in which the two differ.
void CompareParts(std::span<const SStoredPart> parts, const u8* expected, const u8* found,
                  const std::function<void(const SStoredPart&, std::string, std::string)>& report);

}  // namespace ovix::app
