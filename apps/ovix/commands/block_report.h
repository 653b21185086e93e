#pragma once

#include <span>
#include <string>

#include "apps/ovix/json.h"
#include "measure/measure.h"

namespace ovix::app {

/// The blocks of a recording as they stand in the file, each with whether its CRC is right (null where it has none).
Json BlocksJson(std::span<const measure::SBlock> blocks);
/// The same as a table.
std::string BlockTable(const Json& blocks);

/// What the recording says of its source: camera, time, texts, the frame counts that it was finished with, and whether
/// those are the frames that are there. Null without a source info.
Json RecordedSourceJson(const measure::CSource& source, reduce::CReduceObjectArray& objects);

}  // namespace ovix::app
