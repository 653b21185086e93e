#pragma once

#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

/// What is written once: schema, title, quantity and unit, size, parameters.
Json DescribeSeries(const SSeries& series);
/// What is written for each frame: its number, caption, and the status bytes by flag where there are any.
Json DescribeFrame(const SPicture& picture);

}  // namespace ovix::app
