#pragma once

#include "core/guid.h"

/// Pixel formats that belong to no camera family. The types of several families stand on them.
namespace ovix::reduce::generic {

inline constexpr GUID kF7M0 = "{44ACBC8C-03B3-4599-B784-14DAD5C4BBF8}"_guid;
inline constexpr GUID kF7M2 = "{F5143BE1-3F5C-46E8-99B7-E5BC2A0A9990}"_guid;
inline constexpr GUID kF7M3 = "{6AAAF0FA-3BCF-41A4-842E-EEE17BFA1C00}"_guid;
inline constexpr GUID kUYVY = "{BB8A3D05-C4F6-4193-B198-08D9E797E886}"_guid;
inline constexpr GUID kYUY2 = "{88DF0B84-7417-41CB-9B49-2F585323D620}"_guid;
inline constexpr GUID kY800 = "{327F8ED5-4584-48C7-9FB1-E326376CD4B8}"_guid;
inline constexpr GUID kBGR8 = "{5BA4C88B-EBB4-4676-88E4-FC5C0FF6EB36}"_guid;

/// Enters all but "BGR8", which one family alone uses and enters itself. Every family that stands on them calls this;
/// the registry passes over what it has.
void RegisterPixelTypes();

}  // namespace ovix::reduce::generic
