#include "reduce/filters/wren_filter.h"

#include <algorithm>
#include <cstring>

#include "reduce/filters/dunlin_objects.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/pruv_trailer.h"
#include "reduce/filters/tomz_trailer.h"

namespace ovix::reduce {

namespace {

constexpr SDunlinFamily kFamily{L"Wren", frame_types::kWren};
constexpr u16 kPixelMask = 0x3FFF;
constexpr u32 kLockinPresent = 2;

u8 PresetOf(const void* frame) { return static_cast<u8>(LoadLittle<u16>(static_cast<const u8*>(frame)) >> 14); }

void CopyMaskedPixels(u8* __restrict dest, const u8* __restrict source, u64 count) {
    for (u64 i = 0; i < count; ++i) {
        u16 pixel;
        std::memcpy(&pixel, source + 2 * i, 2);
        pixel &= kPixelMask;
        std::memcpy(dest + 2 * i, &pixel, 2);
    }
}

/// For the light operations; false without a signature.
bool LoadClock(SDunlinTrailer& values, const u8* trailer) {
    if (pruv::HasSignature(trailer)) {
        LoadTrailer(values, pruv::kRecord.front(), trailer + pruv::kSignatureSize);
    } else if (tomz::HasSignature(trailer)) {
        LoadTrailer(values, tomz::kClock, trailer);
    } else {
        return false;
    }
    return true;
}

/// Bytes up to the first record of a native buffer.
u64 RecordsOffset(u64 image, u16 frameCount) { return frameCount * image + pruv::kSignatureSize; }
/// Bytes behind the images of a native buffer.
u64 RecordsSize(u16 frameCount) { return pruv::kSignatureSize + u64{frameCount} * pruv::kRecordSize; }
bool HoldsPacket(u32 sourceSize, u64 image, u16 frameCount) {
    return frameCount * image + RecordsSize(frameCount) <= sourceSize;
}

/// A frame in an older buffer: the image, and as many lines as the trailer takes. `width` is not 0.
u64 OlderStride(u16 width, u16 height) {
    const u32 line = 2u * width;
    const u32 trailerLines = (tomz::kSize + line - 1) / line;
    return u64{line} * (height + trailerLines);
}

bool CheckWrenFrame(const void* frame, GUID type, u16 width, u16 height, u32 frameSize, SFrameFault* fault) {
    const CFrameProbe probe(frame, frameSize, fault);
    const u64 image = CDunlinFilter::ImageSize(width, height);
    if (!CDunlinFilter::Takes(kFamily, type)) return probe.Refuse(0, L"a Wren frame", L"another pixel type");
    if (!probe.Holds(0, image, L"pixels of 2 bytes")) return false;
    if (!probe.Holds(image, pruv::kSignatureSize, L"the trailer's signature")) return false;
    const u8* trailer = probe.At(image);
    if (pruv::HasSignature(trailer)) return probe.Holds(image, pruv::kSize, L"the trailer");
    if (!tomz::HasSignature(trailer)) {
        return probe.Refuse(image, L"the trailer's signature (\"PRUV\" or \"TOMZ\")",
                            CString::FromFormat(L"0x%08X", LoadLittle<u32>(trailer)));
    }
    if (!probe.Holds(image, tomz::kSize, L"the trailer")) return false;
    const auto words = tomz::ExpectedWords(trailer);
    return std::all_of(words.begin(), words.end(), [&](const tomz::SExpectedWord& word) {
        return probe.HasWord(image + word.offset, word.value, word.meaning);
    });
}

/// What `StoreFrame` and `CheckForTrigger` read. Images of a native buffer have their records checked by the size
/// alone: a record holds no offset.
bool CheckWrenBuffer(const void* buffer, GUID type, u16 width, u16 height, u16 images, u32 size, SFrameFault* fault) {
    const CFrameProbe probe(buffer, size, fault);
    const u64 image = CDunlinFilter::ImageSize(width, height);
    if (!CDunlinFilter::Takes(kFamily, type)) return probe.Refuse(0, L"a Wren frame", L"another pixel type");
    if (!probe.Holds(image, tomz::kSignatureSize, L"the trailer's signature")) return false;
    if (!tomz::HasSignature(probe.At(image))) {
        const u64 signature = images * image;
        if (!probe.Holds(signature, RecordsSize(images), L"the signature and a record for each image")) return false;
        return pruv::HasSignature(probe.At(signature)) ||
               probe.Refuse(signature, L"the signature of the records (\"PRUV\")", L"other bytes");
    }
    if (width == 0) return probe.Refuse(0, L"a width above 0", L"0");
    const u64 stride = OlderStride(width, height);
    if (!probe.Holds(0, images * stride, L"the images, each with the lines of its trailer")) return false;
    for (u16 i = 0; i < images; ++i) {
        if (CheckWrenFrame(probe.At(i * stride), type, width, height, static_cast<u32>(stride), fault)) continue;
        if (fault) fault->offset += i * stride;
        return false;
    }
    return true;
}

bool GetWrenForm(GUID type, SFrameForm& form) { return CDunlinFilter::GetForm(kFamily, type, form); }

void GetWrenEvidence(const void* frame, GUID, u16 width, u16 height, u32, SFrameEvidence& evidence) {
    const u64 image = CDunlinFilter::ImageSize(width, height);
    const u8* trailer = static_cast<const u8*>(frame) + image;
    evidence.mark = EFrameMark::Present;  // or the check would have refused the frame
    SDunlinTrailer values;
    LoadClock(values, trailer);
    evidence.time = HasTrailerYear(values) ? EFrameTime::Full : EFrameTime::WithoutYear;
    evidence.frameCounter = true;
    evidence.preset = image > 0;  // it stands in the first pixel
}

void DescribeWrenFrame(const void* frame, GUID, u16 width, u16 height, u32, TArray<SFrameField>& fields) {
    const u64 image = CDunlinFilter::ImageSize(width, height);
    const u8* trailer = static_cast<const u8*>(frame) + image;
    const bool native = pruv::HasSignature(trailer);
    fields.Add({0, 2, L"Preset", CUInt8::ToString(PresetOf(frame))});
    fields.Add({image, pruv::kSignatureSize, L"Signature", native ? L"PRUV" : L"TOMZ"});
    if (native) {
        DescribeTrailer(fields, pruv::kRecord, trailer + pruv::kSignatureSize, image + pruv::kSignatureSize);
    } else {
        DescribeTrailer(fields, tomz::kOlderWren, trailer, image);
    }
}

}  // namespace

CWrenFilter::CWrenFilter() : CDunlinFilter(kFamily) {}

bool CWrenFilter::Register() {
    using Functions = TCreateAndDestroy<CWrenFilter, IFilter>;
    return CDunlinFilter::Register(kFamily, Functions::Create, Functions::Destroy,
                                   {.check = CheckWrenFrame,
                                    .checkBuffer = CheckWrenBuffer,
                                    .form = GetWrenForm,
                                    .evidence = GetWrenEvidence,
                                    .describe = DescribeWrenFrame});
}

bool CWrenFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32, STypedData dest,
                             CReduceObjectArray& objects, u8& preset) {
    if (!Takes(type)) return false;
    preset = PresetOf(frame);
    const u8* trailer = TrailerOf(frame, width, height);
    SDunlinTrailer values;
    if (pruv::HasSignature(trailer)) {
        LoadTrailer(values, pruv::kRecord, trailer + pruv::kSignatureSize);
    } else if (!LoadOlder(values, trailer)) {
        return false;
    }
    const SDunlinObjects filled(objects, preset);
    if (!filled) return false;
    filled.FillFactoryCal(values);
    filled.FillFrame(values, pruv::kRecord);  // an older frame shows the values of a native one

    if (dest.data) CopyMaskedPixels(static_cast<u8*>(dest.data), static_cast<u8*>(frame), u64{width} * height);
    return true;
}

bool CWrenFilter::LoadOlder(SDunlinTrailer& values, const u8* trailer) {
    if (!tomz::HasSignature(trailer)) return false;
    const auto words = tomz::ExpectedWords(trailer);
    const auto isThere = [&](const tomz::SExpectedWord& word) { return word.IsThere(trailer); };
    if (!std::all_of(words.begin(), words.end(), isThere)) return false;
    LoadTrailer(values, tomz::kOlderWren, trailer);
    values.frameCounter = Extended(static_cast<u32>(values.frameCounter));
    if (!(values.flags & kLockinPresent)) {
        values.lockinWord = 0;
        values.lockinPeriod = values.lockinPhase = 0;
        values.lockinMin = values.lockinMax = values.signalNumber = 0;
        for (u16& mean : values.lockinMean) mean = 0;
    }
    return true;
}

u64 CWrenFilter::Extended(u32 counter) {
    constexpr u32 kHighHalf = 0x80000001;  // a lower number that falls is no overflow
    if (lastCounter_ >= kHighHalf && counter < lastCounter_) counterHigh_ += u64{1} << 32;
    lastCounter_ = counter;
    return counterHigh_ | counter;
}

bool CWrenFilter::ParsePreset(void* frame, GUID type, u16, u16, u32, u8& preset) {
    if (!Takes(type)) return false;
    preset = PresetOf(frame);
    return true;
}

bool CWrenFilter::ParseTime(void* frame, GUID type, u16 width, u16 height, u32, CDateTime& time) {
    SDunlinTrailer values;
    if (!Takes(type) || !LoadClock(values, TrailerOf(frame, width, height))) return false;
    SetTrailerTime(time, values);
    return true;
}

bool CWrenFilter::ParseFrameCounter(void* frame, GUID type, u16 width, u16 height, u32, u64& counter) {
    SDunlinTrailer values;
    if (!Takes(type) || !LoadClock(values, TrailerOf(frame, width, height))) return false;
    counter = values.frameCounter;
    return true;
}

bool CWrenFilter::ParseBasicInfo(void* frame, GUID type, u16 width, u16 height, u32, u8& preset, u64& counter,
                                 CDateTime& time) {
    SDunlinTrailer values;
    if (!Takes(type) || !LoadClock(values, TrailerOf(frame, width, height))) return false;
    preset = PresetOf(frame);
    counter = values.frameCounter;
    SetTrailerTime(time, values);
    return true;
}

bool CWrenFilter::StoreFrame(const void* source, u32 sourceSize, GUID, u16 width, u16 height, u16 frameCount,
                             u16 frameIndex, void* dest, u32 destSize) {
    const u64 image = ImageSize(width, height);
    if (frameIndex >= frameCount || image + pruv::kSignatureSize > sourceSize) return false;
    const u8* from = static_cast<const u8*>(source);
    u8* to = static_cast<u8*>(dest);
    if (tomz::HasSignature(from + image)) {
        if (width == 0) return false;
        const u64 stride = OlderStride(width, height);
        if (frameCount * stride > sourceSize || stride > destSize) return false;
        std::memcpy(to, from + frameIndex * stride, stride);
        return true;
    }
    if (!HoldsPacket(sourceSize, image, frameCount) || image + pruv::kSize > destSize) return false;
    const u8* record = from + RecordsOffset(image, frameCount) + u64{frameIndex} * pruv::kRecordSize;
    if (record[pruv::kDataDisable]) return false;
    if (image) std::memcpy(to, from + frameIndex * image, image);
    pruv::PutSignature(to + image);
    std::memcpy(to + image + pruv::kSignatureSize, record, pruv::kRecordSize);
    return true;
}

bool CWrenFilter::CheckForTrigger(const void* source, u32 sourceSize, GUID, u16 width, u16 height, u16 frameCount, u8,
                                  bool& triggered, u16& frameIndex) {
    triggered = false;
    frameIndex = 0;
    const u64 image = ImageSize(width, height);
    if (!HoldsPacket(sourceSize, image, frameCount)) return false;
    const u8* input = static_cast<const u8*>(source) + RecordsOffset(image, frameCount) + pruv::kTriggerInput;
    for (u16 i = 0; i < frameCount && !triggered; ++i) {
        triggered = input[u64{i} * pruv::kRecordSize] != 0;
        if (triggered) frameIndex = i;
    }
    return true;
}

}  // namespace ovix::reduce
