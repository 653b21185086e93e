#include "reduce/files/acquisition_file.h"

#include "reduce/files/info_file.h"
#include "reduce/objects/source_info_reduce_object.h"

namespace ovix::reduce {

bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, bool unpacked) {
    return SaveInfoFile(file, array, PersistInitialState) &&
           WritePixelsHeader(file, array.GetSourceInfo(false), unpacked);
}

bool StartKRTFile(TSharedPtr<IFile> file, CReduceObjectArray& array, const SPixelsHeader& header) {
    return SaveInfoFile(file, array, PersistInitialState) && WritePixelsHeader(file, header);
}

bool FinishKRTFile(TSharedPtr<IFile> file, const u32* counts, bool unpacked) {
    return UpdateInfoFile(file, counts, unpacked);
}

}  // namespace ovix::reduce
