#pragma once

#include "reduce/filters/frame_types.h"

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
    {.id = frame_types::kK410F7M0,
     .name = L"K410 IR (F7M0)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .hasTime = true},
    {.id = frame_types::kK410FNM0,
     .name = L"K410 IR (FNM0)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed},
    {.id = frame_types::kK410GigE,
     .name = L"K410 IR (GigE)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .overGigE = true},
    {.id = frame_types::kK410GigEFlipped,
     .name = L"K410 IR (GigE, Flipped)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .overGigE = true,
     .flipped = true},
    {.id = frame_types::kK410UYVY, .name = L"K410 YUV (UYVY)", .base = frame_types::kUYVY, .layout = ELayout::UYVY},
    {.id = frame_types::kK410YUY2, .name = L"K410 YUV (YUY2)", .base = frame_types::kYUY2, .layout = ELayout::YUY2},
    {.id = frame_types::kK410BGR, .name = L"K410 BGR (24-bit)", .base = frame_types::kBGR8, .layout = ELayout::BGR},
    {.id = frame_types::kK410MJLS, .name = L"R7X IR (MJLS)", .base = frame_types::kF7M0, .layout = ELayout::JpegLs},
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
