#include "reduce/filters/dunlin_factory_cal_reduce_object.h"

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CCal = CDunlinFactoryCalReduceObject;
using Stream = TMemberStream<&CCal::calWord0, &CCal::calValue0, &CCal::calValue1, &CCal::calValue2, &CCal::calValue3,
                             &CCal::calValue4, &CCal::calValue5, &CCal::calValue6, &CCal::calWord1, &CCal::calWord2,
                             &CCal::calValue7, &CCal::calValue8, &CCal::detectorTemp, &CCal::integrationTime>;
static_assert(Stream::Size() == 56);

}  // namespace

bool CDunlinFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32, u32) {
    Default();
    return Stream::Read(*file, *this);
}

bool CDunlinFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) { return Stream::Write(*file, *this); }

}  // namespace ovix::reduce
