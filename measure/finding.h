#pragma once

#include <optional>
#include <string>

#include "core/core.h"

namespace ovix::measure {

/// How much a finding weighs.
enum class EWeight : u8 {
    Note,    ///< worth knowing: padding, a block of an unknown class
    Doubt,   ///< the source may be another than it was taken for: a size, a counter that jumps, no mark of the family
    Damage,  ///< bytes are missing or wrong: a CRC, a frame that is cut, counts that differ from what is there
};

/// What a finding is about, by a number that keeps its meaning.
enum class EFinding : u16 {
    Padding = 1,
    UnknownBlock = 2,
    NoFrames = 3,  ///< a sound info file: blocks alone
    NeverFinished = 4,

    OtherSize = 101,  ///< a header names another size than was asked for
    NoMark = 102,     ///< frames hold no mark of their family
    CounterJumps = 103,
    AllPixelsFlagged = 104,
    TimeRunsBack = 105,

    BlockDamaged = 201,   ///< the CRC of a block of metadata, or its content
    HeaderDamaged = 202,  ///< a field of a block's header or of a record
    ChainBroken = 203,    ///< blocks cannot be followed
    FrameCut = 204,       ///< the last frame is not whole
    FrameDamaged = 205,
    CountsDiffer = 206,     ///< from what is there
    BytesPassedOver = 207,  ///< between two frames
    SumDiffers = 208,
    SumsMissing = 209,  ///< a side file of sums that is itself damaged or of another recording
};

/// One thing that a source is worth knowing for.
struct SFinding {
    EFinding id = EFinding::Padding;
    EWeight weight = EWeight::Note;
    std::optional<u64> frame = {};
    std::string block = {};
    std::optional<u64> offset = {};  ///< in the file
    std::string what = {};
    std::string expected = {};
    std::string found = {};

    bool operator==(const SFinding&) const = default;
};

}  // namespace ovix::measure
