#include "reduce/convert/factory_calibrations.h"

#include <numeric>
#include <utility>

#include "core/record.h"

namespace ovix::reduce {

namespace {

constexpr u32 kRecordSize = 512;  ///< of the Tern and the Merlin family

using CCurlewCal = CCurlewFactoryCalReduceObject;
using CurlewStream =
    TMemberStream<&CCurlewCal::nonlinearGain, &CCurlewCal::nonlinearOffset, &CCurlewCal::offset, &CCurlewCal::gain,
                  &CCurlewCal::nonlinearOn, &CCurlewCal::imgMin, &CCurlewCal::imgMax, &CCurlewCal::planckR,
                  &CCurlewCal::planckB, &CCurlewCal::planckF, &CCurlewCal::atmAlpha1, &CCurlewCal::atmAlpha2,
                  &CCurlewCal::atmBeta1, &CCurlewCal::atmBeta2, &CCurlewCal::atmX, &CCurlewCal::overflowTemp,
                  &CCurlewCal::upperTemp, &CCurlewCal::lowerTemp, &CCurlewCal::underflowTemp,
                  &CCurlewCal::radFitHighTemp, &CCurlewCal::radFitLowTemp>;
static_assert(CurlewStream::Size() == 78);

}  // namespace

bool CCurlewFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    return blockVersion == 0x10000 && CurlewStream::Read(*file, *this);
}

bool CCurlewFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) { return CurlewStream::Write(*file, *this); }

namespace {

using CTernCal = CTernFactoryCalReduceObject;

constexpr TRecordField<CTernCal> kTernFields[] = {
    Field<&CTernCal::atmAlpha1>(8),
    Field<&CTernCal::atmAlpha2>(12),
    Field<&CTernCal::atmBeta1>(16),
    Field<&CTernCal::atmBeta2>(20),
    Field<&CTernCal::atmX>(24),
    Field<&CTernCal::tdriftMode>(28),
    Field<&CTernCal::tdriftReserved1>(32),
    Field<&CTernCal::driftR>(36),
    Field<&CTernCal::driftB>(40),
    Field<&CTernCal::driftF>(44),
    Field<&CTernCal::drift3>(48),
    Field<&CTernCal::drift4>(52),
    Field<&CTernCal::drift5>(56),
    Field<&CTernCal::drift6>(60),
    Field<&CTernCal::drift7>(64),
    Field<&CTernCal::drift8>(68),
    Field<&CTernCal::drift9>(72),
    Field<&CTernCal::tdriftReserved2>(76),
    Field<&CTernCal::reserved16>(80),
    Field<&CTernCal::adjustGain>(82),
    Field<&CTernCal::adjustOffset>(86),
    Field<&CTernCal::planckR>(90),
    Field<&CTernCal::planckB>(94),
    Field<&CTernCal::planckF>(98),
    Field<&CTernCal::gainDrift0>(102),
    Field<&CTernCal::gainDrift1>(106),
    Field<&CTernCal::gainDrift2>(110),
    Field<&CTernCal::gainDrift3>(114),
    Field<&CTernCal::overflowTemp>(118),
    Field<&CTernCal::upperTemp>(122),
    Field<&CTernCal::lowerTemp>(126),
    Field<&CTernCal::underflowTemp>(130),
    Field<&CTernCal::radFitHighTemp>(134),
    Field<&CTernCal::radFitLowTemp>(138),
    Field<&CTernCal::frontPanelTemp>(142),
    Field<&CTernCal::airGapTemp>(146),
    Field<&CTernCal::dewarTemp>(150),
    Field<&CTernCal::unused>(154),
    Field<&CTernCal::reservedSigned16>(182),
    Field<&CTernCal::text1>(184),
    Field<&CTernCal::text2>(216),
    Field<&CTernCal::text3>(232),
    Field<&CTernCal::text4>(248),
    Field<&CTernCal::text5>(258),
    Field<&CTernCal::text6>(268),
    Field<&CTernCal::text7>(278),
    Field<&CTernCal::text8>(288),
    Field<&CTernCal::text9>(298),
    Field<&CTernCal::text10>(308),
    Field<&CTernCal::lastFloat>(340),
};
constexpr u32 kTernFieldsStart = 8, kTernFieldsEnd = 344;
static_assert(RecordEnd(kTernFields) == kTernFieldsEnd);

/// The form older than 0x10001 is what stands between the record's header and its end: there are no gaps.
static_assert(std::accumulate(std::begin(kTernFields), std::end(kTernFields), kTernFieldsStart,
                              [](u32 end, const TRecordField<CTernCal>& field) { return end + field.size; }) ==
              kTernFieldsEnd);

}  // namespace

CTernFactoryCalReduceObject::CTernFactoryCalReduceObject() { version = 0x10001; }

bool CTernFactoryCalReduceObject::IsCalObj() const { return true; }

bool CTernFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    u8 record[kRecordSize];
    if (blockVersion < 0x10001 ? !file->ReadBytes(record + kTernFieldsStart, kTernFieldsEnd - kTernFieldsStart)
                               : !ReadRecord(*file, record, 0x20000)) {
        return false;
    }
    LoadRecord(*this, kTernFields, record);
    return true;
}

bool CTernFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kTernFields, record);
    return file->WriteBytes(record, sizeof record);
}

namespace {

using CMerlinCal = CMerlinFactoryCalReduceObject;

constexpr TRecordField<CMerlinCal> kMerlinFields[] = {
    Field<&CMerlinCal::degree>(8),           Field<&CMerlinCal::c>(12),
    Field<&CMerlinCal::signalOffset>(68),    Field<&CMerlinCal::reserved32>(76),
    Field<&CMerlinCal::reservedDoubles>(80), Field<&CMerlinCal::planckR>(152),
    Field<&CMerlinCal::planckB>(160),        Field<&CMerlinCal::planckF>(168),
    Field<&CMerlinCal::atmX>(176),           Field<&CMerlinCal::atmAlpha1>(184),
    Field<&CMerlinCal::atmAlpha2>(192),      Field<&CMerlinCal::atmBeta1>(200),
    Field<&CMerlinCal::atmBeta2>(208),       Field<&CMerlinCal::lowTemp>(216),
    Field<&CMerlinCal::highTemp>(220),       Field<&CMerlinCal::reservedFloats>(224),
    Field<&CMerlinCal::fitLowSignal>(232),   Field<&CMerlinCal::fitHighSignal>(234),
    Field<&CMerlinCal::tableCount>(236),
};
static_assert(RecordEnd(kMerlinFields) == 240 && RecordEnd(kMerlinFields) <= kRecordSize);

// The form older than 0x10001, before and behind the tables.
using OldHead = TMemberStream<&CMerlinCal::degree, &CMerlinCal::c, &CMerlinCal::signalOffset, &CMerlinCal::planckR,
                              &CMerlinCal::planckB, &CMerlinCal::planckF, &CMerlinCal::tableCount>;
using OldTail = TMemberStream<&CMerlinCal::reserved32, &CMerlinCal::reservedDoubles, &CMerlinCal::atmX,
                              &CMerlinCal::atmAlpha1, &CMerlinCal::atmAlpha2, &CMerlinCal::atmBeta1,
                              &CMerlinCal::atmBeta2, &CMerlinCal::lowTemp, &CMerlinCal::highTemp,
                              &CMerlinCal::reservedFloats, &CMerlinCal::fitLowSignal, &CMerlinCal::fitHighSignal>;

}  // namespace

CMerlinFactoryCalReduceObject::CMerlinFactoryCalReduceObject() { version = 0x10001; }

bool CMerlinFactoryCalReduceObject::IsCalObj() const { return true; }

TSharedPtr<IReduceObject> CMerlinFactoryCalReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> made = TReduceObject::Duplicate();
    const TSharedPtr<CMerlinCal> copy = made.Cast<CMerlinCal>();
    copy->table1.Unshare(static_cast<u64>(tableCount));
    copy->table2.Unshare(static_cast<u64>(tableCount));
    return made;
}

bool CMerlinFactoryCalReduceObject::CreateLUT(i32 count) {
    table1.Reset();
    table2.Reset();
    tableCount = 0;
    if (count < 1) return true;
    for (TSharedTable<double>* table : {&table1, &table2}) {
        table->Allocate(static_cast<u64>(count));
        std::fill_n(table->get(), count, 0.0);
    }
    tableCount = count;
    return true;
}

/// Of as many entries as the record just read says.
bool CMerlinFactoryCalReduceObject::ReadTables(IFile& file) {
    const i32 count = std::exchange(tableCount, 0);
    constexpr u64 kBytesPerEntry = 2 * sizeof(double);
    if (count > 0 && static_cast<u64>(count) > file.GetRemaining() / kBytesPerEntry) return false;
    CreateLUT(count);
    const u64 entries = static_cast<u64>(tableCount);
    return ReadTable(file, table1.get(), entries) && ReadTable(file, table2.get(), entries);
}

bool CMerlinFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    if (blockVersion < 0x10001) {
        return OldHead::Read(*file, *this) && ReadTables(*file) && OldTail::Read(*file, *this);
    }
    u8 record[kRecordSize];
    if (!ReadRecord(*file, record, 0x20000)) return false;
    LoadRecord(*this, kMerlinFields, record);
    return ReadTables(*file);
}

bool CMerlinFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kMerlinFields, record);
    const u64 entries = static_cast<u64>(tableCount);
    return file->WriteBytes(record, sizeof record) && WriteTable(*file, table1.get(), entries) &&
           WriteTable(*file, table2.get(), entries);
}

}  // namespace ovix::reduce
