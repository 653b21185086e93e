#include "core/record.h"

namespace ovix {

bool ReadRecord(IFile& file, std::span<u8> record, u32 versionLimit) {
    const u32 size = static_cast<u32>(record.size());
    return file.ReadBytes(record.data(), size) && LoadLittle<u32>(record.data()) == size &&
           LoadLittle<u32>(record.data() + 4) < versionLimit;
}

void StartRecord(std::span<u8> record, u32 version) {
    std::fill(record.begin(), record.end(), u8{0});
    StoreLittle(record.data(), static_cast<u32>(record.size()));
    StoreLittle(record.data() + 4, version);
}

}  // namespace ovix
