#pragma once

#include "reduce/objects/source_info_reduce_object.h"

namespace toy {

/// A source info that also knows the room in which the camera stands.
class CLaboratorySourceInfo final : public ovix::reduce::CSourceInfoReduceObject {
  public:
    CLaboratorySourceInfo() { cameraName = L"Laboratory Camera"; }

    /// The library's copy is made by the factory, so it is one of this class already; only the new field is missing.
    ovix::TSharedPtr<ovix::reduce::IReduceObject> Duplicate() const override {
        const auto copy = CSourceInfoReduceObject::Duplicate();
        if (const auto own = copy.Cast<CLaboratorySourceInfo>()) own->room = room;
        return copy;
    }

    ovix::CString room = L"basement";
};

}  // namespace toy
