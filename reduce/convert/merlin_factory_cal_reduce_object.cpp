#include "reduce/convert/merlin_factory_cal_reduce_object.h"

#include <utility>

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CCal = CMerlinFactoryCalReduceObject;

constexpr u32 kRecordSize = 512;

constexpr TRecordField<CCal> kFields[] = {
    Field<&CCal::degree>(8),           Field<&CCal::c>(12),
    Field<&CCal::signalOffset>(68),    Field<&CCal::reserved32>(76),
    Field<&CCal::reservedDoubles>(80), Field<&CCal::planckR>(152),
    Field<&CCal::planckB>(160),        Field<&CCal::planckF>(168),
    Field<&CCal::atmX>(176),           Field<&CCal::atmAlpha1>(184),
    Field<&CCal::atmAlpha2>(192),      Field<&CCal::atmBeta1>(200),
    Field<&CCal::atmBeta2>(208),       Field<&CCal::lowTemp>(216),
    Field<&CCal::highTemp>(220),       Field<&CCal::reservedFloats>(224),
    Field<&CCal::fitLowSignal>(232),   Field<&CCal::fitHighSignal>(234),
    Field<&CCal::tableCount>(236),
};
static_assert(RecordEnd(kFields) == 240 && RecordEnd(kFields) <= kRecordSize);

// The form older than 0x10001, before and behind the tables.
using OldHead = TMemberStream<&CCal::degree, &CCal::c, &CCal::signalOffset, &CCal::planckR, &CCal::planckB,
                              &CCal::planckF, &CCal::tableCount>;
using OldTail = TMemberStream<&CCal::reserved32, &CCal::reservedDoubles, &CCal::atmX, &CCal::atmAlpha1,
                              &CCal::atmAlpha2, &CCal::atmBeta1, &CCal::atmBeta2, &CCal::lowTemp, &CCal::highTemp,
                              &CCal::reservedFloats, &CCal::fitLowSignal, &CCal::fitHighSignal>;

}  // namespace

CMerlinFactoryCalReduceObject::CMerlinFactoryCalReduceObject() { version = 0x10001; }

bool CMerlinFactoryCalReduceObject::IsCalObj() const { return true; }

TSharedPtr<IReduceObject> CMerlinFactoryCalReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> made = TReduceObject::Duplicate();
    const TSharedPtr<CCal> copy = made.Cast<CCal>();
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
    LoadRecord(*this, kFields, record);
    return ReadTables(*file);
}

bool CMerlinFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    const u64 entries = static_cast<u64>(tableCount);
    return file->WriteBytes(record, sizeof record) && WriteTable(*file, table1.get(), entries) &&
           WriteTable(*file, table2.get(), entries);
}

}  // namespace ovix::reduce
