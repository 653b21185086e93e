// The library's only static initialiser: registers the built-in classes in their order.
//
// The first step asks for the filter factory, whose creation loads the plug-ins. So plug-ins register before any built-in
// class, and as the first registrant of a name keeps it, a plug-in can replace a built-in one.

#include "reduce/objects/fov_reduce_object.h"
#include "reduce/objects/frame_header_reduce_object.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/filters/filter_factory.h"

namespace ovix::reduce {

namespace {

constexpr bool (*kBuiltins[])() = {
    CFOVReduceObject::Register,               // metadata object "FOV"
    CFrameHeaderReduceObject::Register,       // metadata object "FrameHeader"
    CFrameInfoReduceObject::Register,         // metadata object "FrameInfo"
    CObjectParametersReduceObject::Register,  // metadata object "ObjectParameters"
    CSourceInfoReduceObject::Register,        // metadata object "SourceInfo"
};

/// A result of false says that a plug-in was first; nobody needs it.
[[maybe_unused]] const bool kRegistered = [] {
    filterFactory();
    for (const auto registerClass : kBuiltins) registerClass();
    return true;
}();

}  // namespace

}  // namespace ovix::reduce
