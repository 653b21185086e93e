#pragma once

#include "reduce/files/pixels_header.h"
#include "reduce/objects/reduce_object_array.h"

/// The acquisition file: an info file whose last block, "Pixels", holds the frames up to the end of the file
/// (`docs/formats/acquisition_file.md`).
///
/// A recording is started, then the application appends its frames, each cut out of a camera buffer by
/// `IFilter::StoreFrame`; at the end the stored source info is patched in place.
namespace ovix::reduce {

/// Writes the metadata, marked as the source's own, and a "Pixels" block made from the array's source info, which must
/// be there.
OVIX_REDUCE_API bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, bool unpacked);
/// The same with a given header.
OVIX_REDUCE_API bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, const SPixelsHeader& header);
/// `UpdateInfoFile` with the frame counts of the first four presets.
OVIX_REDUCE_API bool FinishKRTFile(TSharedPtr<IFile> file, const u32* counts, bool unpacked);

}  // namespace ovix::reduce
