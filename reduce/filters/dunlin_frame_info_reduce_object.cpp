#include "reduce/filters/dunlin_frame_info_reduce_object.h"

namespace ovix::reduce {

CDunlinFrameInfoReduceObject::CDunlinFrameInfoReduceObject() { persist = false; }

}  // namespace ovix::reduce
