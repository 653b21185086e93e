#include "reduce/filters/osprey_filter.h"

#include <algorithm>
#include <cstring>

#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/frame_types.h"
#include "reduce/filters/header_line_registration.h"
#include "reduce/filters/osprey_frame_info_reduce_object.h"
#include "reduce/filters/osprey_header.h"

namespace ovix::reduce {

using namespace osprey;

namespace {

constexpr SHeaderLine kLine{.frameType = frame_types::kOsprey,
                            .frameName = L"IACF",
                            .headerType = frame_types::kOspreyHeader,
                            .words = kHeaderWords,
                            .bytesRead = kHeaderSize};
static_assert(kHeaderSize == sizeof COspreyFrameInfoReduceObject::header);

void DescribeHeader(const void* frame, GUID, u16 width, u16, u32, TArray<SFrameField>& fields) {
    Describe(fields, static_cast<const u8*>(frame), width);
}

float ToKelvin(float celsius) { return static_cast<float>(static_cast<double>(celsius) + 273.15); }

/// The low bytes of `count` words, the most significant first; the high bytes stay.
void StoreLowBytes(u8* line, u32 offset, u32 value, u32 count) {
    for (u32 i = 0; i < count; ++i) line[offset + Word(i)] = static_cast<u8>(value >> (8 * (count - 1 - i)));
}

void StoreTemperature(u8* timeBlock, u32 offset, float celsius) {
    const u16 raw = RawTemperature(celsius);
    timeBlock[offset] = static_cast<u8>(raw);
    timeBlock[offset + Word(1)] = static_cast<u8>(raw >> 8);
}

}  // namespace

COspreyFilter::COspreyFilter() : CHeaderLineFilter(kLine) {}

bool COspreyFilter::Register() {
    using Functions = TCreateAndDestroy<COspreyFilter, IFilter>;
    return RegisterHeaderLineFilter(L"Osprey", kLine, Functions::Create, Functions::Destroy,
                                    HeaderLineAnswers<kLine>(DescribeHeader));
}

bool COspreyFilter::ParseHeader(SHeader& header, void* line, u16 width) {
    const u8* bytes = static_cast<const u8*>(line);
    header.preset = Preset(bytes + kPreset);
    header.integrationTime = Words<4>(bytes + kIntegrationTime);
    header.frameCounter = Words<2>(bytes + kFrameCounter);
    header.saturationFlag = SaturationFlag(bytes + kSaturation);
    header.saturation = Saturation(bytes + kSaturation);
    header.fpaControlWord = Words<4>(bytes + kFPAControlWord);
    header.fpaWindowWord = Words<4>(bytes + kFPAWindowWord);
    header.resolution = Words<1>(bytes + kResolution);

    const u8* timeBlock = bytes + TimeBlock(width);
    const SDayClock clock = Clock(timeBlock);
    header.day = clock.day;
    header.hours = clock.hours;
    header.minutes = clock.minutes;
    header.seconds = clock.seconds;
    header.milliseconds = clock.milliseconds;
    header.microseconds = clock.microseconds;
    header.airGapTemp = Temperature(timeBlock + kAirGapTemp);
    header.dewarTemp = Temperature(timeBlock + kDewarTemp);
    header.frontPanelTemp = Temperature(timeBlock + kFrontPanelTemp);
    return true;
}

bool COspreyFilter::EncodeHeader(SHeader& header, void* line, u16 width) {
    u8* bytes = static_cast<u8*>(line);
    bytes[kPreset] = header.preset;  // unshifted, although it is read from bits 4 and 5
    StoreLowBytes(bytes, kIntegrationTime, header.integrationTime, 4);
    StoreLowBytes(bytes, kFPAControlWord, header.fpaControlWord, 4);
    StoreLowBytes(bytes, kFPAWindowWord, header.fpaWindowWord, 4);
    StoreLowBytes(bytes, kFrameCounter, header.frameCounter, 2);
    const u32 resolution = (LoadLittle<u16>(bytes + kResolution) & 0xFF00u) | header.resolution;
    StoreLittle(bytes + kResolution, static_cast<u16>(resolution));
    StoreLowBytes(bytes, kSaturation, header.saturation | (header.saturationFlag > 0 ? 0x800000 : 0), 3);

    u8* timeBlock = bytes + TimeBlock(width);
    StoreClock(timeBlock, {.day = header.day,
                           .hours = header.hours,
                           .minutes = header.minutes,
                           .seconds = header.seconds,
                           .milliseconds = header.milliseconds,
                           .microseconds = header.microseconds});
    StoreLowBytes(timeBlock, kZeros, 0, 3);
    timeBlock[kC0] = 0xC0;
    timeBlock[k0D] = 0x0D;
    StoreTemperature(timeBlock, kFrontPanelTemp, header.frontPanelTemp);
    StoreTemperature(timeBlock, kAirGapTemp, header.airGapTemp);
    StoreTemperature(timeBlock, kDewarTemp, header.dewarTemp);
    return true;
}

const wchar_t* COspreyFilter::GetName() const { return L"MV7100"; }

u8 COspreyFilter::PresetOf(const u8* header) const { return Preset(header + kPreset); }
u64 COspreyFilter::CounterOf(const u8* header) const { return Words<2>(header + kFrameCounter); }
void COspreyFilter::SetTime(CDateTime& time, const u8* header, u16 width) const {
    Clock(header + TimeBlock(width)).SetInThisYear(time);
}

bool COspreyFilter::ParseFrame(void* frame, GUID type, u16 width, u16 height, u32 frameSize, STypedData dest,
                               CReduceObjectArray& objects, u8& preset) {
    if (dest.type != UInt16 && dest.type != NoPixels) return false;
    return CHeaderLineFilter::ParseFrame(frame, type, width, height, frameSize, dest, objects, preset);
}

bool COspreyFilter::FillObjects(const u8* header, GUID, u16 width, CReduceObjectArray& objects, u8& preset) {
    preset = PresetOf(header);
    const auto calibration = objects.Get<CTernFactoryCalReduceObject>(preset, true);
    const auto info = objects.Get<CFrameInfoReduceObject>(preset, true);
    const auto raw = objects.Get<COspreyFrameInfoReduceObject>(preset, true);
    if (!calibration || !info || !raw) return false;

    const u8* timeBlock = header + TimeBlock(width);
    calibration->frontPanelTemp = ToKelvin(Temperature(timeBlock + kFrontPanelTemp));
    calibration->airGapTemp = ToKelvin(Temperature(timeBlock + kAirGapTemp));
    calibration->dewarTemp = ToKelvin(Temperature(timeBlock + kDewarTemp));

    std::memcpy(raw->header, header, sizeof raw->header);
    raw->headerWords = std::min(width, kHeaderWords);
    raw->valid = true;
    raw->preset = preset;
    raw->frameNumber = CounterOf(header);

    frame_values::StartFrame(*info, preset, CounterOf(header));
    // Through the text: digits that make no time of day leave the time of the frame before.
    info->time.Set(Clock(timeBlock).Text());
    AddValues(info->extra, header, width);
    return true;
}

}  // namespace ovix::reduce
