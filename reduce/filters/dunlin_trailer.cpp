#include "reduce/filters/dunlin_trailer.h"

namespace ovix::reduce {

void LoadTrailer(SDunlinTrailer& values, DunlinFields part, const u8* trailer) {
    for (const SDunlinField& field : part) field.load(values, trailer, field.offset);
}

void LoadTrailer(SDunlinTrailer& values, DunlinLayout layout, const u8* trailer) {
    for (const DunlinFields part : layout) LoadTrailer(values, part, trailer);
}

void DescribeTrailer(TArray<SFrameField>& fields, DunlinLayout layout, const u8* trailer, u64 offset) {
    SDunlinTrailer values;
    LoadTrailer(values, layout, trailer);
    for (const DunlinFields part : layout) {
        for (const SDunlinField& field : part) {
            CString text = field.text(values, field.kind);
            if (*field.unit) text = CString::FromFormat(L"%s %s", text.c_str(), field.unit);
            fields.Add({offset + field.offset, field.size, field.name, text});
        }
    }
}

namespace {

constexpr u8 kUseTimeCode = 1, kYearNotValid = 4;  // of the time flags

}  // namespace

bool HasTrailerYear(const SDunlinTrailer& values) {
    return !(values.timeFlags & kUseTimeCode) || !(values.timeFlags & kYearNotValid);
}

void SetTrailerTime(CDateTime& time, const SDunlinTrailer& values) {
    if (!(values.timeFlags & kUseTimeCode)) {
        time.SetTimestamp(static_cast<i64>(values.timeStamp * 10));
        return;
    }
    const int milliseconds = static_cast<int>(values.microseconds / 1000);
    const int microseconds = static_cast<int>(values.microseconds % 1000);
    const int year = HasTrailerYear(values) ? 2000 + values.year : time.GetYear();
    time.SetYYDHMS(year, values.dayOfYear, values.hours, values.minutes, values.seconds, milliseconds, microseconds);
}

}  // namespace ovix::reduce
