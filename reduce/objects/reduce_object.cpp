#include "reduce/objects/reduce_object.h"

#include "core/crc32_file.h"

namespace ovix::reduce {

IReduceObject::IReduceObject() = default;
IReduceObject::IReduceObject(const IReduceObject&) = default;
IReduceObject& IReduceObject::operator=(const IReduceObject&) = default;
IReduceObject::~IReduceObject() = default;

bool IReduceObject::IsCalObj() const { return false; }
void IReduceObject::Default() { valid = false; }
bool IReduceObject::Load(TSharedPtr<IFile>, u32, u32) { return false; }
bool IReduceObject::Save(TSharedPtr<IFile>, u32) { return false; }
bool IReduceObject::ShouldPersist(u32) const { return persist; }

bool IReduceObject::CalcCRC(u32& crc, u64& size, u32 flags) {
    CCalcCRC32File sum;
    if (!Save(BorrowShared(sum), flags)) return false;
    crc = sum.GetCRC();
    size = sum.GetSize();
    return true;
}

}  // namespace ovix::reduce
