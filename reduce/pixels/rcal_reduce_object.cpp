#include "reduce/pixels/rcal_reduce_object.h"

namespace ovix::reduce {

CRCalReduceObject::CRCalReduceObject() = default;

bool CRCalReduceObject::Load(TSharedPtr<IFile> file, u32, u32) { return cal.Load(file, 0); }
bool CRCalReduceObject::Save(TSharedPtr<IFile> file, u32) { return cal.Save(file, 0); }

}  // namespace ovix::reduce
