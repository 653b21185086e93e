#pragma once

/// The families of cameras. Each stands in the file of its name, `k410_filter.cpp` and so on, with all that it is, and
/// is reached through the factory alone; `COspreyFilter`, whose header is public, registers itself. Every function
/// enters the family's decoder and its pixel types; false when the decoder's name was taken before.
namespace ovix::reduce {

bool RegisterK410Filter();
bool RegisterLORFilterRA();
bool RegisterLORFilterSB();
bool RegisterMVFalconFilter();
bool RegisterLapwingFilter();
bool RegisterWrenFilter();
bool RegisterMV310Filter();
bool RegisterPloverFilter();

/// Enters the forms of pixels on which types of several families stand; every such family calls it, and the registry
/// passes over what it has. "BGR8" is not among them: one family alone uses it and enters it itself.
void RegisterGenericPixelTypes();

}  // namespace ovix::reduce
