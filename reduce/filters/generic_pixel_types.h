#pragma once

namespace ovix::reduce {

/// Enters the forms of pixels on which types of several families stand; every such family calls it, and the registry
/// passes over what it has. "BGR8" is not among them: one family alone uses it and enters it itself.
void RegisterGenericPixelTypes();

}  // namespace ovix::reduce
