#pragma once

#include <vector>

#include "bench/support/data.h"
#include "bench/support/kernel.h"

/// What stands beside the kernels: the plain loop that anybody writes first, the fastest loops by hand that are known
/// (they may add in any order, and know neither flags nor forms), and the calls of OpenCV where it was found. None of
/// them has to give the library's bits: they say what time the machine needs.
namespace ovix::bench {

std::vector<SPeer> StatsPeers(const std::vector<std::vector<u16>>& frames);
std::vector<SPeer> StatsPeers(const std::vector<std::vector<float>>& frames);
/// Through a mask with one byte for each pixel.
std::vector<SPeer> MaskPeers(const std::vector<std::vector<u16>>& frames, const std::vector<u8>& mask);
std::vector<SPeer> MaskPeers(const std::vector<std::vector<float>>& frames, const std::vector<u8>& mask);

std::vector<SPeer> LutPeers(const std::vector<std::vector<u16>>& in, std::vector<std::vector<float>>& out,
                            const std::vector<float>& lut);
/// Gain and offset; all but OpenCV follow the replacement map.
std::vector<SPeer> NucPeers(const std::vector<std::vector<u16>>& in, std::vector<std::vector<float>>& out,
                            const STables& tables);
/// Corrected, looked up with the status, and counted in one pass; all pixels count.
std::vector<SPeer> ChainPeers(const std::vector<std::vector<u16>>& in, std::vector<std::vector<float>>& out,
                              std::vector<std::vector<u8>>& status, const STables& tables,
                              const std::vector<float>& lut, const std::vector<u8>& statusLut);
std::vector<SPeer> ConvertPeers(const std::vector<std::vector<float>>& in, std::vector<std::vector<u16>>& out);

}  // namespace ovix::bench
