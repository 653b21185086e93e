#pragma once

#include "core/api.h"

namespace ovix {

/// Text for a developer's eyes: to standard error when the environment variable `OVIX_DEBUG_OUTPUT` is set, else
/// dropped.
OVIX_API void DebugOutput(const wchar_t* text);

/// A number that names the calling thread.
OVIX_API unsigned CurrentThreadId();

}  // namespace ovix
