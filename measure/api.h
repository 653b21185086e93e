#pragma once

/// Exported from `ovix.measure.so`, which is built with everything else hidden.
#define OVIX_MEASURE_API __attribute__((visibility("default")))
