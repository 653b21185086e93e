#include "apps/ovix/output/library_file.h"

namespace ovix::app {

namespace {

/// Places before the start are refused; those behind the end are not.
bool MoveTo(u64& position, u64 end, i64 offset, int origin) {
    const u64 base = origin == IFile::FromStart ? 0 : origin == IFile::FromCurrent ? position : end;
    const u64 target = base + static_cast<u64>(offset);
    const bool before = offset < 0 && target > base;
    const bool wraps = offset >= 0 && target < base;
    if (origin < IFile::FromStart || origin > IFile::FromEnd || before || wraps || target > u64{1} << 62) return false;
    position = target;
    return true;
}

}  // namespace

u32 CLibraryOutput::Write(const void* data, u32 size) {
    output_.WriteAt(position_, data, size);
    position_ += size;
    return size;
}

u32 CLibraryOutput::Read(void* data, u32 size) {
    const auto read = static_cast<u32>(output_.ReadAt(position_, data, size));
    position_ += read;
    return read;
}

bool CLibraryOutput::Seek(i64 offset, int origin) { return MoveTo(position_, output_.Size(), offset, origin); }

bool CLibraryOutput::Flush() {
    output_.Sync();
    return true;
}

}  // namespace ovix::app
