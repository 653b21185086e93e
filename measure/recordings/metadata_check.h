#pragma once

#include "measure/recordings/recording_file.h"
#include "measure/sources/frame_layout.h"

namespace ovix::measure {

/// Holds everything that stands before the frames of a recording against itself: the fixed fields of its headers, the
/// CRCs of its blocks, the sizes of blocks against records, names against type ids, the geometry of the pixels against
/// that of the source. Reports in the order of the file, and nothing behind a damaged file header.
void CheckMetadata(const CRecordingFile& file, const Report& report);

/// The header that the block of an object must have, as far as its fields follow from each other and from its data; of
/// a block whose CRC is right, what differs is damage of the header.
reduce::SInfoFileBlock ExpectedHeader(const CRecordingFile& file, const reduce::SInfoFileBlock& block);
/// The record of the pixels, likewise and as far as it follows from the source info, which may be null.
reduce::SPixelsHeader ExpectedPixels(const CRecordingFile& file, const reduce::CSourceInfoReduceObject* source);
/// The first source info that can be loaded, whatever its CRC; empty when none can.
TSharedPtr<reduce::CSourceInfoReduceObject> LoadSourceInfo(const CRecordingFile& file);
/// Whether a block, which ends within the file, is what its header says: its CRC, and for an object of a known class
/// that it can be loaded.
bool IsWholeBlock(const CRecordingFile& file, const reduce::SInfoFileBlock& block);
inline bool IsFree(const reduce::SInfoFileBlock& block) { return block.typeID == CGUID::Empty && !block.name[0]; }

/// Reports every part in which two forms of one record differ; `text` is its description for the part's name.
void ReportDifferences(StoredLayout layout, const u8* expected, const u8* found, const SFinding& place,
                       const char* suffix, const Report& report);

}  // namespace ovix::measure
