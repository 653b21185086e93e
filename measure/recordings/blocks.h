#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "measure/api.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// A block of a recording or info file as it stands there.
struct SBlock {
    reduce::SInfoFileBlock header = {};
    std::string name;                   ///< for a reader; "free" for reserved space
    u64 bytes = 0;                      ///< of its data; of the pixels up to the end of the file
    bool known = true;                  ///< the library has a class for it
    std::optional<bool> crcRight = {};  ///< nothing where the format has no sum: pixels, reserved space
};

/// All blocks that can be reached, in order; nothing for a file that is no recording. Reads the data of all but the
/// pixels. Throws `CError` for a file that cannot be read.
OVIX_MEASURE_API std::vector<SBlock> BlocksOf(const std::filesystem::path& path);

}  // namespace ovix::measure
