#pragma once

#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/guid.h"

namespace ovix::test {

/// Spells a format byte by byte, little-endian, without the library's own encoders.
class CByteWriter {
  public:
    std::vector<std::uint8_t> bytes;

    CByteWriter& U8(std::uint64_t value) { return Little(value, 1); }
    CByteWriter& U16(std::uint64_t value) { return Little(value, 2); }
    CByteWriter& U32(std::uint64_t value) { return Little(value, 4); }
    CByteWriter& U64(std::uint64_t value) { return Little(value, 8); }
    CByteWriter& F32(float value) { return U32(std::bit_cast<std::uint32_t>(value)); }
    CByteWriter& F64(double value) { return U64(std::bit_cast<std::uint64_t>(value)); }
    /// The text and zeros up to `width` bytes.
    CByteWriter& Text(std::string_view text, std::size_t width) {
        const std::size_t end = bytes.size() + width;
        for (const char c : text) U8(static_cast<std::uint8_t>(c));
        return PadTo(end);
    }
    /// 16 bytes as they stand in a file.
    CByteWriter& Guid(const GUID& id) {
        U32(id.data1).U16(id.data2).U16(id.data3);
        for (const std::uint8_t byte : id.data4) U8(byte);
        return *this;
    }
    /// Zeros up to an offset from the start.
    CByteWriter& PadTo(std::size_t offset) {
        while (bytes.size() < offset) bytes.push_back(0);  // of a resize, g++ 12 warns without cause
        return *this;
    }
    CByteWriter& Zeros(std::size_t n) { return PadTo(bytes.size() + n); }
    CByteWriter& Append(const CByteWriter& other) {
        bytes.insert(bytes.end(), other.bytes.begin(), other.bytes.end());
        return *this;
    }

  private:
    CByteWriter& Little(std::uint64_t value, int width) {
        for (int i = 0; i < width; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        return *this;
    }
};

/// The CRC of zip and Ethernet, bit by bit.
inline std::uint32_t BitwiseCRC(const std::vector<std::uint8_t>& bytes) {
    std::uint32_t crc = ~0u;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320u : 0u);
    }
    return ~crc;
}

}  // namespace ovix::test
