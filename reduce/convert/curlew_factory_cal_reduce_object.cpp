#include "reduce/convert/curlew_factory_cal_reduce_object.h"

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CCal = CCurlewFactoryCalReduceObject;
using Stream = TMemberStream<&CCal::nonlinearGain, &CCal::nonlinearOffset, &CCal::offset, &CCal::gain,
                             &CCal::nonlinearOn, &CCal::imgMin, &CCal::imgMax, &CCal::planckR, &CCal::planckB,
                             &CCal::planckF, &CCal::atmAlpha1, &CCal::atmAlpha2, &CCal::atmBeta1, &CCal::atmBeta2,
                             &CCal::atmX, &CCal::overflowTemp, &CCal::upperTemp, &CCal::lowerTemp, &CCal::underflowTemp,
                             &CCal::radFitHighTemp, &CCal::radFitLowTemp>;
static_assert(Stream::Size() == 78);

}  // namespace

bool CCurlewFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    return blockVersion == 0x10000 && Stream::Read(*file, *this);
}

bool CCurlewFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) { return Stream::Write(*file, *this); }

}  // namespace ovix::reduce
