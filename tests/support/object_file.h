#pragma once

#include <vector>

#include "core/file.h"
#include "reduce/objects/reduce_object.h"
#include "support/byte_writer.h"

namespace ovix::test {

/// A file in memory that holds the bytes, or the first `size` of them, at its start.
inline TSharedPtr<IFile> FileOf(const CByteWriter& content, std::size_t size = ~std::size_t{0}) {
    const TSharedPtr<CMemFile> file = MakeShared<CMemFile>();
    file->WriteBytes(content.bytes.data(), static_cast<u32>(std::min(size, content.bytes.size())));
    file->SeekToBegin();
    return file;
}

/// What `Save` writes; empty when it fails.
inline std::vector<u8> SavedBytes(reduce::IReduceObject& object, u32 flags = 0) {
    const TSharedPtr<CMemFile> file = MakeShared<CMemFile>();
    if (!object.Save(file, flags)) return {};
    return {file->GetData(), file->GetData() + file->GetSize()};
}

}  // namespace ovix::test
