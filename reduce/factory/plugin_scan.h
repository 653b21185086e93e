#pragma once

#include "core/process.h"
#include "core/string.h"
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

/// Where a function that a class registered with is at home: the name of the plug-in's file, without its directory, or
/// of the program's; empty for this library.
OVIX_REDUCE_API CString OriginOf(void (*function)());
/// Any function will do, as the `create` of a factory's entry.
template <class Function>
CString OriginOf(Function* function) {
    return OriginOf(reinterpret_cast<void (*)()>(function));
}

/// The holder of a factory: made at the first use, deleted at exit with this priority.
template <class Factory>
using TFactoryHolder = TSingletonPtr<Factory, 100000, 0, SSharedPtrFactoryPostCreateLoadDLLs>;

}  // namespace ovix::reduce
