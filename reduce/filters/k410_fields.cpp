#include "reduce/filters/k410_fields.h"

#include "reduce/filters/camera_record_fields.h"
#include "reduce/filters/k410_types.h"

namespace ovix::reduce {

using namespace k410;

namespace {

void DescribeContainer(TArray<SFrameField>& fields, const u8* frame, const u8* container) {
    const u64 at = static_cast<u64>(container - frame);
    DescribeFields(fields, kContainerFields, container, at);
    const u32 recordSize = RecordHeld(container);
    camera_record::Describe(fields, RecordInPlace(container), recordSize,
                            at + LoadLittle<u32>(container + kRecordOffset));
}

void DescribeUncompressed(TArray<SFrameField>& fields, const u8* frame, u64 image, u64 size) {
    const STail tail = FindTail(frame + image, size - image);
    if (tail.IsDigital()) DescribeFields(fields, kDigitalHeaderFields, tail.digitalHeader, image);
    DescribeContainer(fields, frame, tail.container);
}

void DescribeCompressed(TArray<SFrameField>& fields, const u8* frame) {
    const u32 length = LoadBig<u32>(frame);
    const CString told = CString::FromFormat(L"%u bytes", length);
    fields.Add({0, kLengthSize, L"ImageLength", told});
    fields.Add({kLengthSize, length, L"Image", L"a JPEG-LS stream of " + told});
    DescribeContainer(fields, frame, frame + kLengthSize + length);
}

}  // namespace

void DescribeK410Frame(const void* frame, GUID id, u16 width, u16 height, u32 frameSize, TArray<SFrameField>& fields) {
    const u8* bytes = static_cast<const u8*>(frame);
    const SType* type = FindType(id);
    if (IsUncompressed(type)) DescribeUncompressed(fields, bytes, ImageSize(width, height), frameSize);
    if (type->layout == ELayout::JpegLs) DescribeCompressed(fields, bytes);
}

}  // namespace ovix::reduce
