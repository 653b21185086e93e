#include "reduce/filters/curlew_camera_info_reduce_object.h"

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CInfo = CCurlewCameraInfoReduceObject;
using Stream =
    TMemberStream<&CInfo::record, &CInfo::recordPresent, &CInfo::digitalHeader, &CInfo::digitalHeaderPresent>;
static_assert(Stream::Size() == 2462);

}  // namespace

bool CCurlewCameraInfoReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    return blockVersion == 0x10000 && Stream::Read(*file, *this);
}

bool CCurlewCameraInfoReduceObject::Save(TSharedPtr<IFile> file, u32) { return Stream::Write(*file, *this); }

}  // namespace ovix::reduce
