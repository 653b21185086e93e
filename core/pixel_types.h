#pragma once

#include "core/guid.h"
#include "core/typed_data.h"

namespace ovix {

/// The root of the types whose pixels are measured values, and that of pictures for a screen. Neither is registered
/// itself; both serve as base types.
inline constexpr GUID rootIRType = "{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}"_guid;
inline constexpr GUID rootScreenType = "{1B6BF263-9221-4B15-B247-D66E664A6170}"_guid;

struct SPixelType {
    GUID id;
    CString name;
    u8 bytesPerPixel = 0;
    EDataType type = Opaque;
    GUID baseType;
};

/// Enters a type in the process-wide registry; true. A repeated id leaves the first entry as it is.
/// The registry may be used from any thread.
OVIX_API bool RegisterPixelType(GUID id, const wchar_t* name, u8 bytesPerPixel, EDataType type, GUID baseType);
/// Bytes per pixel; 0 for a type that nobody registered.
OVIX_API u8 PixelWidth(GUID type);
/// True when `type` is `base` or stands under it in the chain of base types.
OVIX_API bool IsPixelBaseType(GUID type, GUID base);
/// The pixel type of a numeric code of the oldest files; `rootIRType` for an unknown code.
OVIX_API GUID OldPixelTypeUInt32ToNewPixelType(u32 code);

/// False for a type that nobody registered.
OVIX_API bool GetPixelType(GUID type, SPixelType& facts);
/// All registered types in order of registration.
OVIX_API void GetPixelTypes(TArray<SPixelType>& types);

}  // namespace ovix
