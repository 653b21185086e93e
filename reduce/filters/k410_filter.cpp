#include <cstring>

#include "core/pixel_types.h"
#include "reduce/filters/camera_record_objects.h"
#include "reduce/filters/families.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/k410_frame.h"

namespace ovix::reduce {

using namespace k410;

namespace {

constexpr u32 kCounterEnd = 65536;

/// The tail as the light operations see it, which alone look at the frame's size.
STail TailWithin(const void* frame, u16 width, u16 height, u32 frameSize) {
    constexpr u32 kLeastTail = 64;
    const u64 image = ImageSize(width, height);
    return frameSize < image + kLeastTail ? STail{} : FindTail(static_cast<const u8*>(frame) + image);
}

u64 CounterOf(const u8* digitalHeader) { return LoadBig<u16>(digitalHeader + kDigitalCounter); }

/// The record is read in place: one in the other byte order gives a swapped number here, unlike in `ParseFrame`.
u64 CounterInPlace(const STail& tail) {
    if (tail.IsDigital()) return CounterOf(tail.digitalHeader);
    return LoadLittle<u16>(RecordInPlace(tail.container) + camera_record::kFrameCounter);
}

/// Read in place as the counter is. A digital link sends no time.
void SetTimeInPlace(CDateTime& time, const STail& tail) {
    if (tail.IsDigital()) {
        time.Now();
    } else {
        camera_record::SetTime(time, RecordInPlace(tail.container));
    }
}

/// The decoder of the K410 camera family and of the R7X camera: uncompressed and compressed infrared frames, each with
/// the camera's own record, and video. Reached through the factory as "K410".
///
/// It counts frames, and remembers the record's mark counter between calls of `CheckForTrigger`: one object serves one
/// stream. The frame is never changed.
class CK410Filter final : public IFilter {
  public:
    const wchar_t* GetName() const override;
    bool HasPixels(GUID type) const override;
    bool GetPixels(void* frame, GUID type, u16 width, u16 height, u32 frameSize, void** pixels, i32& stride) override;
    bool ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                    CReduceObjectArray& objects, u8& preset) override;

    bool ParsePreset(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset) override;
    bool ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) override;
    bool ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) override;
    bool ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                        CDateTime& time) override;

    bool StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                    u16 frameIndex, void* dest, u32 destSize) override;
    bool CheckForTrigger(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount, u8 field,
                         bool& triggered, u16& frameIndex) override;

    bool HasTime(GUID type) const override;
    bool HasFrameCounter(GUID type) const override;
    bool GetTriggerFields(GUID type, TArray<CString>& names) const override;

  private:
    /// One frame as `ParseFrame` was given it.
    struct SFrame {
        const u8* bytes;
        const k410::SType& type;
        u16 width, height;
        u32 size;

        u64 Pixels() const { return u64{width} * height; }
    };
    // The three ways of `ParseFrame`.
    bool ParseUncompressed(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects);
    bool ParseCompressed(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects);
    bool ParseVideo(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects);
    void CountFrame();

    u32 ownCounter_ = 0;  ///< frames parsed, 65535 being followed by 0
    u32 lastMark_ = 0;    ///< mark counter of the last record that `CheckForTrigger` saw
    bool lastMarkValid_ = false;
};

const wchar_t* CK410Filter::GetName() const { return L"K410"; }
bool CK410Filter::HasPixels(GUID type) const { return IsUncompressed(FindType(type)); }
bool CK410Filter::HasFrameCounter(GUID type) const { return k410::HasFrameCounter(FindType(type)); }

bool CK410Filter::HasTime(GUID type) const {
    const SType* known = FindType(type);
    return known && known->hasTime;
}

bool CK410Filter::GetPixels(void* frame, GUID type, u16 width, u16, u32, void** pixels, i32& stride) {
    if (!HasPixels(type)) return false;
    *pixels = frame;
    stride = 2 * width;
    return true;
}

bool CK410Filter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                             CReduceObjectArray& objects, u8& preset) {
    const SCameraRecordObjects filled(objects);
    preset = 0;
    const SType* known = FindType(type);
    if (!known || !filled) return false;
    const SFrame seen{static_cast<const u8*>(frame), *known, width, height, frameSize};
    switch (known->layout) {
        case ELayout::Uncompressed:
            return ParseUncompressed(seen, dest, filled);
        case ELayout::JpegLs:
            return ParseCompressed(seen, dest, filled);
        default:
            return ParseVideo(seen, dest, filled);
    }
}

bool CK410Filter::ParseUncompressed(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects) {
    if (dest.type != UInt16 && dest.type != NoPixels) return false;
    const STail tail = FindTail(frame.bytes + ImageSize(frame.width, frame.height));
    SRecord record;
    if (!tail || !CopyRecord(record, tail.container, frame.height)) return false;

    objects.FillFromRecord(record.bytes);
    objects.KeepRecord(record.bytes, sizeof record.bytes, tail.digitalHeader);
    CFrameInfoReduceObject& info = *objects.frameInfo;
    CFrameValues values(info.extra);  // of a digital header alone
    if (tail.IsDigital()) {
        values.Add(kDigitalHeaderFields, tail.digitalHeader);
        info.frameNumber = CounterOf(tail.digitalHeader);
        info.time.Now();
    } else if (!frame.type.hasFrameCounter) {  // although the record holds a counter and a time
        info.frameNumber = ownCounter_;
        info.time.Now();
    } else {
        info.frameNumber = LoadLittle<u16>(record.bytes + camera_record::kFrameCounter);
        camera_record::SetTime(info.time, record.bytes);
    }
    CountFrame();

    if (dest.data) {
        const SPixelOrder order{.swapped = HasSwappedPixels(tail.container), .reversed = frame.type.flipped};
        CopyPixels(dest.data, frame.bytes, frame.Pixels(), order);
    }
    return true;
}

bool CK410Filter::ParseCompressed(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects) {
    if (dest.type != UInt16 && dest.type != NoPixels) return false;
    constexpr u32 kLeastSize = kLengthSize + sizeof kSignature;
    if (frame.size < kLeastSize) return false;
    const u64 length = LoadBig<u32>(frame.bytes);
    if (length + kLeastSize > frame.size) return false;
    const u8* stream = frame.bytes + kLengthSize;
    const u8* container = stream + length;
    SRecord record;
    if (!HasSignature(container) || !CopyRecord(record, container, frame.height)) return false;

    objects.FillFromRecord(record.bytes);
    objects.KeepRecord(record.bytes, sizeof record.bytes, nullptr);
    objects.frameInfo->frameNumber = ownCounter_;
    objects.frameInfo->time.Now();
    objects.frameInfo->extra.Clear();
    CountFrame();

    // A damaged stream is not reported: the metadata is good all the same.
    if (dest.data) DecodeJpegLs(dest.data, ImageSize(frame.width, frame.height), stream, length);
    return true;
}

bool CK410Filter::ParseVideo(const SFrame& frame, STypedData dest, const SCameraRecordObjects& objects) {
    if (dest.type != Opaque && dest.type != NoPixels) return false;
    objects.FillForVideo(ownCounter_);
    CountFrame();
    if (!dest.data) return true;
    u8* rgb = static_cast<u8*>(dest.data);
    if (frame.type.layout == ELayout::BGR) {
        BGRToRGB(rgb, frame.bytes, frame.width, frame.height);
    } else {
        YuvToRGB(rgb, frame.bytes, frame.Pixels(), frame.type.layout == ELayout::YUY2 ? kYUY2Order : kUYVYOrder);
    }
    return true;
}

void CK410Filter::CountFrame() { ownCounter_ = (ownCounter_ + 1) % kCounterEnd; }

bool CK410Filter::ParsePreset(void*, GUID, u16, u16, u32, u8& preset) {
    preset = 0;
    return true;
}

bool CK410Filter::ParseTime(void* frame, GUID type, u16 width, u16 height, u32 frameSize, CDateTime& time) {
    if (!HasTime(type)) {
        time.Now();
        return true;
    }
    const STail tail = TailWithin(frame, width, height, frameSize);
    if (!tail) return false;
    SetTimeInPlace(time, tail);
    return true;
}

bool CK410Filter::ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u64& counter) {
    counter = ownCounter_;
    if (!HasFrameCounter(type)) return true;
    const STail tail = TailWithin(frame, width, height, frameSize);
    if (!tail) return false;
    counter = CounterInPlace(tail);
    return true;
}

bool CK410Filter::ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32 frameSize, u8& preset, u64& counter,
                                 CDateTime& time) {
    preset = 0;
    if (!HasFrameCounter(type)) {
        counter = ownCounter_;
        time.Now();
        return true;
    }
    const STail tail = TailWithin(frame, width, height, frameSize);
    if (!tail) return false;
    counter = CounterInPlace(tail);
    SetTimeInPlace(time, tail);  // also over GigE, where `ParseTime` gives the present time
    return true;
}

bool CK410Filter::StoreFrame(const void* source, u32 sourceSize, GUID type, u16 width, u16 height, u16 frameCount,
                             u16 frameIndex, void* dest, u32 destSize) {
    if (frameCount < 2) {
        return IFilter::StoreFrame(source, sourceSize, type, width, height, frameCount, frameIndex, dest, destSize);
    }
    const SPacket packet{static_cast<const u8*>(source), sourceSize, ImageSize(width, height), frameCount};
    if (!packet.Store(frameIndex, dest, destSize)) return false;
    if (!HasFrameCounter(type)) return true;

    u8* storedTail = static_cast<u8*>(dest) + packet.imageSize;
    const STail tail = FindTail(storedTail, packet.TailSize());
    if (tail.IsDigital() && (frameCount == 2 || frameCount == 4)) {
        // So that the images of a packet keep distinct, ascending numbers. Other counts leave them alike.
        const u64 counter = CounterOf(tail.digitalHeader) * frameCount | frameIndex;
        StoreBig(storedTail + kDigitalCounter, static_cast<u16>(counter));
    }
    return static_cast<bool>(tail);
}

bool CK410Filter::CheckForTrigger(const void* source, u32, GUID type, u16 width, u16 height, u16, u8 field,
                                  bool& triggered, u16& frameIndex) {
    triggered = false;
    frameIndex = 0;
    const SType* known = FindType(type);
    // A turned picture comes with the same fields, and is refused all the same.
    if (!IsUncompressed(known) || known->flipped) return false;
    const STail tail = FindTail(static_cast<const u8*>(source) + ImageSize(width, height));
    if (tail.IsDigital()) {
        const u8* header = tail.digitalHeader;
        const u8 inputs[] = {header[kDigitalIn1], header[kDigitalIn2], static_cast<u8>(header[kMark] & 3)};
        triggered = field < std::size(inputs) && inputs[field] != 0;
    } else if (tail.IsPlain()) {
        SRecord record;
        if (!CopyRecord(record, tail.container, height)) return false;
        const u32 mark = LoadLittle<u32>(record.bytes + camera_record::kMarkCounter);
        constexpr u8 kMarkField = 2;
        triggered = lastMarkValid_ && mark > lastMark_ && field == kMarkField;
        lastMark_ = mark;
        lastMarkValid_ = true;
    }
    return true;
}

bool CK410Filter::GetTriggerFields(GUID type, TArray<CString>& names) const {
    names.Empty();
    const SType* known = FindType(type);
    if (known && known->overGigE) {
        for (const wchar_t* name : {L"DigitalIn1", L"DigitalIn2", L"Mark"}) names.Add(name);
    }
    return true;
}

}  // namespace

bool RegisterK410Filter() {
    using Functions = TCreateAndDestroy<CK410Filter, IFilter>;
    TArray<GUID> ids;
    for (const SType& type : kTypes) ids.Add(type.id);
    const bool done = filterFactory()->Register(L"K410", ids, Functions::Create, Functions::Destroy, kAnswers);
    RegisterGenericPixelTypes();
    RegisterPixelType(frame_types::kBGR8, L"BGR8", 3, Opaque, rootScreenType);
    // 16-bit pixels throughout, also for video and for the 24-bit type: existing recordings rely on the size of a
    // pixel.
    for (const SType& type : kTypes) RegisterPixelType(type.id, type.name, 2, UInt16, type.base);
    return done;
}

void RegisterGenericPixelTypes() {
    using namespace frame_types;
    RegisterPixelType(kF7M0, L"F7M0", 2, UInt16, rootIRType);
    RegisterPixelType(kF7M2, L"F7M2", 2, UInt16, rootIRType);
    RegisterPixelType(kF7M3, L"F7M3", 2, Opaque, rootScreenType);
    RegisterPixelType(kUYVY, L"UYVY", 2, Opaque, rootScreenType);
    RegisterPixelType(kYUY2, L"YUY2", 2, Opaque, rootScreenType);
    RegisterPixelType(kY800, L"Y800", 2, Opaque, rootScreenType);
}

}  // namespace ovix::reduce
