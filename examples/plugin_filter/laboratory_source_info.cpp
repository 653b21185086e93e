// A plug-in that replaces a class of the library by one derived from it.

#include "laboratory_source_info.h"

namespace toy {
namespace {

using namespace ovix;
using namespace ovix::reduce;

/// Plug-ins register before the built-in classes, and the first of a name keeps it: from now on, whoever asks the
/// factory for a "SourceInfo" is given one of ours.
[[maybe_unused]] const bool kRegistered = [] {
    using Functions = TCreateAndDestroy<CLaboratorySourceInfo, IReduceObject>;
    return reduceObjectFactory()->Register(CSourceInfoReduceObject::kName, CSourceInfoReduceObject::typeID,
                                           Functions::Create, Functions::Destroy);
}();

}  // namespace
}  // namespace toy
