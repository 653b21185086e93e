#pragma once

#include "reduce/filters/generic_pixel_types.h"

/// The pixel types of the K410 family, in their order at the factory.
namespace ovix::reduce::k410 {

enum class ELayout {
    Uncompressed,  ///< 16-bit pixels, then the tail
    JpegLs,        ///< length, JPEG-LS stream, container
    UYVY,
    YUY2,
    BGR,
};

struct SType {
    GUID id;
    const wchar_t* name;
    GUID base;
    ELayout layout;
    bool hasFrameCounter = false;  ///< frames are numbered by the camera, and the light operations read the number
    bool hasTime = false;          ///< `ParseTime` reads the time from the frame
    bool overGigE = false;         ///< offers trigger fields
    bool flipped = false;          ///< the picture is turned by 180 degrees
};

inline constexpr SType kTypes[] = {
    {.id = "{76ECF27C-7517-49D1-AED0-8C429934409D}"_guid,
     .name = L"K410 IR (F7M0)",
     .base = generic::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .hasTime = true},
    {.id = "{E97ED85F-B45C-409C-B685-0568E493A9D0}"_guid,
     .name = L"K410 IR (FNM0)",
     .base = generic::kF7M0,
     .layout = ELayout::Uncompressed},
    {.id = "{3874994E-B76D-45DE-871A-5CF46393B19B}"_guid,
     .name = L"K410 IR (GigE)",
     .base = generic::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .overGigE = true},
    {.id = "{B3E83B04-FC6B-411D-B883-258685C80882}"_guid,
     .name = L"K410 IR (GigE, Flipped)",
     .base = generic::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .overGigE = true,
     .flipped = true},
    {.id = "{4030E1B1-6E28-4E5C-88F7-16E54AF6A54A}"_guid,
     .name = L"K410 YUV (UYVY)",
     .base = generic::kUYVY,
     .layout = ELayout::UYVY},
    {.id = "{DDBF6368-76B6-49F2-A410-6CC47415AFD3}"_guid,
     .name = L"K410 YUV (YUY2)",
     .base = generic::kYUY2,
     .layout = ELayout::YUY2},
    {.id = "{036DA1C3-5794-4341-8BC1-5DEEAB52DFD5}"_guid,
     .name = L"K410 BGR (24-bit)",
     .base = generic::kBGR8,
     .layout = ELayout::BGR},
    {.id = "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid,
     .name = L"R7X IR (MJLS)",
     .base = generic::kF7M0,
     .layout = ELayout::JpegLs},
};

/// Null for a type of another family.
constexpr const SType* FindType(const GUID& id) {
    for (const SType& type : kTypes) {
        if (type.id == id) return &type;
    }
    return nullptr;
}

constexpr bool IsUncompressed(const SType* type) { return type && type->layout == ELayout::Uncompressed; }
constexpr bool HasFrameCounter(const SType* type) { return type && type->hasFrameCounter; }

}  // namespace ovix::reduce::k410
