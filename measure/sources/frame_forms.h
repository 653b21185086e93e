#pragma once

#include <span>

#include "reduce/reduce.h"

namespace ovix::reduce {

struct SObjectParameter {
    float CObjectParametersReduceObject::*member;
};
inline std::span<const SObjectParameter> ObjectParameters() {
    using P = CObjectParametersReduceObject;
    static constexpr SObjectParameter kRows[] = {{&P::emissivity},      {&P::distance},        {&P::reflectedTemp},
                                                 {&P::atmosphereTemp},  {&P::extOpticsTemp},   {&P::extOpticsTrans},
                                                 {&P::atmosphereTrans}, {&P::relativeHumidity}};
    return kRows;
}

inline constexpr SInfoFileBlock InfoFileHeader = {.name = "QUOR KRT-LM File",
                                                  .typeID = "{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}"_guid,
                                                  .version = 4096,
                                                  .preset = IReduceObject::NoPreset,
                                                  .frame = IReduceObject::NoFrame,
                                                  .flags = 0,
                                                  .size = 0,
                                                  .crc = 0,
                                                  .headerOffset = 0,
                                                  .dataOffset = 0};
inline constexpr SInfoFileBlock PixelsBlock = {.name = "Pixels",
                                               .typeID = PixelsBlockTypeID,
                                               .version = SPixelsHeader::Version,
                                               .preset = IReduceObject::NoPreset,
                                               .frame = IReduceObject::NoFrame,
                                               .flags = BlockValid,
                                               .size = SInfoFileBlock::ToEndOfFile,
                                               .crc = 0,
                                               .headerOffset = 0,
                                               .dataOffset = 0};
constexpr u32 PixelsHeaderBytes(u32 blockVersion) { return blockVersion >= SPixelsHeader::Version ? 512 : 44; }

}  // namespace ovix::reduce
