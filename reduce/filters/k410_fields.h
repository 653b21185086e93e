#pragma once

#include "reduce/filters/frame_table.h"
#include "reduce/filters/k410_container.h"

namespace ovix::reduce {

namespace k410 {

/// The family's flags are shown as numbers.
inline constexpr frame_values::SKind kFlagNumber{L"Flag", L"int"};

/// The digital header: the flags in the order in which they are shown beside a frame, and the frame counter.
inline constexpr STableField kDigitalHeaderFields[] = {
    {kDigitalIn1, 1, L"DigitalIn1", kFlagNumber, Shown<LoadLittle<u8>>, L"%d"},
    {kDigitalIn2, 1, L"DigitalIn2", kFlagNumber, Shown<LoadLittle<u8>>, L"%d"},
    {kMark, 1, L"Mark", kFlagNumber, Shown<LoadLittle<u8>>, L"%d"},
    {kDigitalCounter, 2, L"FrameCounter", kToldOnly, Shown<LoadBig<u16>>, L"%d"},
};

inline constexpr STableField kContainerFields[] = {
    {0, 4, L"Signature", kToldOnly, Shown<LoadLittle<u32>>, L"0x%08X"},
    {kFirstEntry, 2, L"FirstEntry", kToldOnly, Shown<LoadLittle<u16>>, L"%d"},
    {kRecordOffset, 4, L"RecordOffset", kToldOnly, Shown<LoadLittle<u32>>, L"%u", L"bytes"},
    {kRecordSize, 4, L"RecordSize", kToldOnly, Shown<LoadLittle<u32>>, L"%u", L"bytes"},
    {kSecondEntry, 2, L"SecondEntry", kToldOnly, Shown<LoadLittle<u16>>, L"%d"},
    {kPixelsSwapped, 2, L"PixelsSwapped", kToldOnly, Shown<LoadLittle<u16>>, L"%d"},
};

}  // namespace k410

/// The family's answer to `DescribeFrame`. Video frames have no fields.
void DescribeK410Frame(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, TArray<SFrameField>& fields);

}  // namespace ovix::reduce
