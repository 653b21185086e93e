#pragma once

#include "core/file.h"
#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

/// Writes an object's block, header and data, with the given flags.
bool WriteObjectBlock(TSharedPtr<IFile> file, IReduceObject& object, u32 flags);

}  // namespace ovix::reduce
