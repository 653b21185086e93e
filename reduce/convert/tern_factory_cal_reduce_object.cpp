#include "reduce/convert/tern_factory_cal_reduce_object.h"

#include <numeric>

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CCal = CTernFactoryCalReduceObject;

constexpr u32 kRecordSize = 512;

constexpr TRecordField<CCal> kFields[] = {
    Field<&CCal::atmAlpha1>(8),
    Field<&CCal::atmAlpha2>(12),
    Field<&CCal::atmBeta1>(16),
    Field<&CCal::atmBeta2>(20),
    Field<&CCal::atmX>(24),
    Field<&CCal::tdriftMode>(28),
    Field<&CCal::tdriftReserved1>(32),
    Field<&CCal::driftR>(36),
    Field<&CCal::driftB>(40),
    Field<&CCal::driftF>(44),
    Field<&CCal::drift3>(48),
    Field<&CCal::drift4>(52),
    Field<&CCal::drift5>(56),
    Field<&CCal::drift6>(60),
    Field<&CCal::drift7>(64),
    Field<&CCal::drift8>(68),
    Field<&CCal::drift9>(72),
    Field<&CCal::tdriftReserved2>(76),
    Field<&CCal::reserved16>(80),
    Field<&CCal::adjustGain>(82),
    Field<&CCal::adjustOffset>(86),
    Field<&CCal::planckR>(90),
    Field<&CCal::planckB>(94),
    Field<&CCal::planckF>(98),
    Field<&CCal::gainDrift0>(102),
    Field<&CCal::gainDrift1>(106),
    Field<&CCal::gainDrift2>(110),
    Field<&CCal::gainDrift3>(114),
    Field<&CCal::overflowTemp>(118),
    Field<&CCal::upperTemp>(122),
    Field<&CCal::lowerTemp>(126),
    Field<&CCal::underflowTemp>(130),
    Field<&CCal::radFitHighTemp>(134),
    Field<&CCal::radFitLowTemp>(138),
    Field<&CCal::frontPanelTemp>(142),
    Field<&CCal::airGapTemp>(146),
    Field<&CCal::dewarTemp>(150),
    Field<&CCal::unused>(154),
    Field<&CCal::reservedSigned16>(182),
    Field<&CCal::text1>(184),
    Field<&CCal::text2>(216),
    Field<&CCal::text3>(232),
    Field<&CCal::text4>(248),
    Field<&CCal::text5>(258),
    Field<&CCal::text6>(268),
    Field<&CCal::text7>(278),
    Field<&CCal::text8>(288),
    Field<&CCal::text9>(298),
    Field<&CCal::text10>(308),
    Field<&CCal::lastFloat>(340),
};
constexpr u32 kFieldsStart = 8, kFieldsEnd = 344;
static_assert(RecordEnd(kFields) == kFieldsEnd);

/// The form older than 0x10001 is what stands between the record's header and its end: there are no gaps.
static_assert(std::accumulate(std::begin(kFields), std::end(kFields), kFieldsStart,
                              [](u32 end, const TRecordField<CCal>& field) { return end + field.size; }) == kFieldsEnd);

}  // namespace

CTernFactoryCalReduceObject::CTernFactoryCalReduceObject() { version = 0x10001; }

bool CTernFactoryCalReduceObject::IsCalObj() const { return true; }

bool CTernFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    u8 record[kRecordSize];
    if (blockVersion < 0x10001 ? !file->ReadBytes(record + kFieldsStart, kFieldsEnd - kFieldsStart)
                               : !ReadRecord(*file, record, 0x20000)) {
        return false;
    }
    LoadRecord(*this, kFields, record);
    return true;
}

bool CTernFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    return file->WriteBytes(record, sizeof record);
}

}  // namespace ovix::reduce
