#pragma once

#include <span>
#include <string>
#include <vector>

#include "core/types.h"

/// What stands where in a stored record, for programs that show, check or mend records byte by byte. The tables from
/// which records are read and written (`core/record.h`) are such layouts as well, so nothing is listed twice.
namespace ovix {

/// How a part of a record reads. Numbers are little-endian.
enum class EStored : u8 {
    Number,  ///< unsigned
    Signed,
    Real,   ///< IEEE 754
    Flag,   ///< any byte but 0 is true
    Hex,    ///< unsigned; a version or a sum
    Text,   ///< filled with zeros
    Id,     ///< a GUID
    Time,   ///< 100 ns since 1601
    Bytes,  ///< without a meaning here
};

/// One entry of a layout: a part, or a structure with a layout of its own that stands there once or several times.
struct SStoredField {
    u32 offset = 0;
    u32 size = 0;
    const char* name = "";  ///< in words; of a part of a structure, without the structure's
    EStored kind = EStored::Bytes;
    std::span<const SStoredField> parts = {};  ///< of a structure
    u32 count = 1;                             ///< of structures, one every `size / count` bytes
};

/// A record's entries; the bytes between them have no meaning and are zero.
using StoredLayout = std::span<const SStoredField>;

/// A part of a record by itself.
struct OVIX_API SStoredPart {
    u32 offset = 0;  ///< in the record
    u32 size = 0;
    std::string name;  ///< "width", "use of frame block 3"
    EStored kind = EStored::Bytes;

    /// The part of this record for a reader, in ASCII: "640", "0x00010001", "\"SourceInfo\"", "zeros".
    std::string Text(const u8* record) const;
};

/// All parts of a layout, those of its structures in their places.
OVIX_API std::vector<SStoredPart> StoredParts(StoredLayout layout);
/// The parts in which two records differ.
OVIX_API std::vector<SStoredPart> DifferingParts(StoredLayout layout, const u8* a, const u8* b);

}  // namespace ovix
