#include "reduce/pixels/correction_cfg_reduce_object.h"

#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

CCorrectionCfgReduceObject::CCorrectionCfgReduceObject() {
    valid = true;
    persist = false;
}

TSharedPtr<CCorrectionCfgReduceObject> CReduceObjectArray::GetCorrectionCfg(bool create) {
    return Get<CCorrectionCfgReduceObject>(-1, create);
}

}  // namespace ovix::reduce
