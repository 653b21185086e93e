#include "reduce/filters/generic_pixel_types.h"

#include "core/pixel_types.h"
#include "reduce/filters/frame_types.h"

namespace ovix::reduce {

void RegisterGenericPixelTypes() {
    using namespace frame_types;
    RegisterPixelType(kF7M0, L"F7M0", 2, UInt16, rootIRType);
    RegisterPixelType(kF7M2, L"F7M2", 2, UInt16, rootIRType);
    RegisterPixelType(kF7M3, L"F7M3", 2, Opaque, rootScreenType);
    RegisterPixelType(kUYVY, L"UYVY", 2, Opaque, rootScreenType);
    RegisterPixelType(kYUY2, L"YUY2", 2, Opaque, rootScreenType);
    RegisterPixelType(kY800, L"Y800", 2, Opaque, rootScreenType);
}

}  // namespace ovix::reduce
