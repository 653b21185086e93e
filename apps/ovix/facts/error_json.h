#pragma once

#include "apps/ovix/fault.h"
#include "apps/ovix/json.h"

namespace ovix::app {

/// The exception that is being handled, whatever it is, as a fault. What is no `CAppError` has the exit status of bad
/// data.
CFault CurrentFault();

/// An error with all its facts: exit status, the line for a reader, its parts as far as they apply, and an identifier
/// that stays from version to version: "OVX-402" of the measuring layer's 402; of the tool itself OVX-1 wrong usage,
/// OVX-2 data that would not do, OVX-3 a file.
Json ErrorJson(const CFault& fault);

/// From here on errors are JSON, one object a line, on the standard error.
void UseJsonErrors();
/// An error on the standard error: its one line, or {"schema": 1, "error": {...}}.
void SayFault(const CFault& fault);

}  // namespace ovix::app
