#include "reduce/filters/k410_container.h"

#include <cstring>

namespace ovix::reduce::k410 {

STail FindTail(const u8* bytes, u64 size) {
    constexpr u32 kSignatureSize = sizeof kSignature;
    if (size >= kSignatureSize && HasSignature(bytes)) return {nullptr, bytes};
    if (size >= kDigitalHeaderSize + kSignatureSize && HasSignature(bytes + kDigitalHeaderSize)) {
        return {bytes, bytes + kDigitalHeaderSize};
    }
    return {};
}

bool CopyRecord(SRecord& record, const u8* container, u16 height) {
    if (!HasIndex(container)) return false;
    const u32 size = RecordHeld(container);
    std::memcpy(record.bytes, RecordInPlace(container), size);
    std::memset(record.bytes + size, 0, sizeof record.bytes - size);
    if (camera_record::IsSwapped(record.bytes)) camera_record::Swap(record.bytes);
    StoreLittle(record.bytes + camera_record::kHeight, height);
    StoreLittle(record.bytes + camera_record::kLastRow, static_cast<u16>(height - 1));
    return true;
}

}  // namespace ovix::reduce::k410
