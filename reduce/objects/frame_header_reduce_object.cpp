#include "reduce/objects/frame_header_reduce_object.h"

namespace ovix::reduce {

CFrameHeaderReduceObject::CFrameHeaderReduceObject() { persist = false; }

TSharedPtr<IReduceObject> CFrameHeaderReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> copy = TReduceObject::Duplicate();
    copy->version = version;
    return copy;
}

void CFrameHeaderReduceObject::Default() {
    const CFrameHeaderReduceObject fresh;
    IReduceObject::operator=(fresh);
    headerType = fresh.headerType;
    headerData.Empty();
}

}  // namespace ovix::reduce
