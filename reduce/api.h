#pragma once

/// Marks what `ovix.reduce.so` exports; everything else in it is hidden.
#define OVIX_REDUCE_API __attribute__((visibility("default")))
