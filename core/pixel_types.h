#pragma once

#include "core/guid.h"
#include "core/typed_data.h"
#include "core/types.h"

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

/// Puts the lines of an image that came as two fields, one after the other, in their places: the first
/// (height + 1) / 2 source lines go to lines 0, 2, 4 and so on, the rest to 1, 3, 5 and so on. The last two arguments
/// are not used. Sizes below 1 move nothing. The buffers must not overlap.
OVIX_API void deinterlace(void* dest, const void* source, int width, int height, int bytesPerPixel, int, int);

}  // namespace ovix
