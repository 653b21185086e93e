#pragma once

/// Marks what `ovix.so` exports; everything else in it is hidden.
#define OVIX_API __attribute__((visibility("default")))
