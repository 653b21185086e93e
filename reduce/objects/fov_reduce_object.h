#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// The angular size of a detector element. One object serves the whole source; a decoder that knows the values sets
/// `valid`.
class OVIX_REDUCE_API CFOVReduceObject : public TReduceObject<CFOVReduceObject> {
  public:
    static constexpr GUID typeID = "{42FD8DA7-B376-45C2-8255-B9267E512077}"_guid;
    static constexpr const wchar_t* kName = L"FOV";

    double IHFOV = 0;  ///< instantaneous horizontal field of view
    double IVFOV = 0;  ///< instantaneous vertical field of view

    CFOVReduceObject();

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
