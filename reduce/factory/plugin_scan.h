#pragma once

#include "core/singleton_ptr.h"
#include "reduce/api.h"

namespace ovix::reduce {

/// Run once by whichever factory is created first: loads every plug-in beside this library.
///
/// A plug-in is a file named `ovix.reduce.*.so`, except the library itself, `ovix.reduce.NET.so` and
/// `ovix.reduce.*.NET.so`. It contributes by registering from its own load-time code. One that cannot be loaded leaves
/// no trace; one that loads stays for the life of the process.
struct OVIX_REDUCE_API SSharedPtrFactoryPostCreateLoadDLLs {
    static void PostCreate();
};

/// The holder of a factory: made at the first use, deleted at exit with this priority.
template <class Factory>
using TFactoryHolder = TSingletonPtr<Factory, 100000, 0, SSharedPtrFactoryPostCreateLoadDLLs>;

}  // namespace ovix::reduce
