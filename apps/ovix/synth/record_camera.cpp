#include "apps/ovix/synth/record_camera.h"

#include <algorithm>

#include "apps/ovix/output/palette.h"
#include "apps/ovix/synth/frame_fields.h"

namespace ovix::app {
namespace {

constexpr u16 kFullCount = 16383;  ///< the detector's converter has 14 bits

/// About 130 counts a kelvin at room temperature.
const reduce::SAdjustParams kAdjust = {.offset = 5000, .gain = 0.5f, .imgMin = 16, .imgMax = kFullCount};
const reduce::SObjectParams kObject = {.emissivity = 0.95f,
                                       .distance = 2.0f,
                                       .reflectedTemp = 295.15f,
                                       .atmosphereTemp = 294.15f,
                                       .extOpticsTemp = 293.15f,
                                       .extOpticsTrans = 1.0f,
                                       .atmosphereTrans = 0.0f,
                                       .relativeHumidity = 0.45f};
const reduce::SCalibParams kCalib = {.planckR = 515000.0f,
                                     .planckB = 1428.0f,
                                     .planckF = 1.0f,
                                     .atmAlpha1 = 0.006569f,
                                     .atmAlpha2 = 0.01262f,
                                     .atmBeta1 = -0.002276f,
                                     .atmBeta2 = -0.00667f,
                                     .atmX = 1.9f,
                                     .radFitHighTemp = 373.15f,
                                     .radFitLowTemp = 263.15f,
                                     .overflowTemp = 365.15f,
                                     .underflowTemp = 271.15f,
                                     .upperTemp = 363.15f,
                                     .lowerTemp = 273.15f};

SColour ColourOf(float kelvin) {
    constexpr float kFirst = 283.15f;
    constexpr float kLast = 358.15f;
    return Palettes().front().At((double{kelvin} - kFirst) / (double{kLast} - kFirst));
}

/// Red, green and blue to luma and the two differences of colour, in the usual studio range.
struct SYuv {
    explicit SYuv(SColour c)
        : y(static_cast<u8>((66 * c.red + 129 * c.green + 25 * c.blue + 128) / 256 + 16)),
          u(static_cast<u8>((-38 * c.red - 74 * c.green + 112 * c.blue + 128) / 256 + 128)),
          v(static_cast<u8>((112 * c.red - 94 * c.green - 18 * c.blue + 128) / 256 + 128)) {}
    u8 y;
    u8 u;
    u8 v;
};

}  // namespace

CRecordCamera::CRecordCamera(const SSynthOptions& options)
    : width_(options.width),
      height_(options.height),
      response_([model = reduce::CMeasConv(&kAdjust, &kObject, &kCalib)](double kelvin) {
          return model.objSigToPow(model.tempToObjSig(static_cast<float>(kelvin))) / kAdjust.gain - kAdjust.offset;
      }),
      detector_(options, kFullCount) {}

void CRecordCamera::AppendRecord(std::vector<u8>& bytes, u32 size, u64 frame, bool swapped) const {
    const std::size_t start = bytes.size();
    bytes.resize(start + size);
    CFields record(bytes.data() + start, swapped);
    record.Put<u16>(0, 2);  // reads 2 in the camera's own order
    record.Put<u16>(2, width_);
    record.Put<u16>(4, height_);
    record.Put<u16>(12, static_cast<u16>(width_ - 1));
    record.Put<u16>(16, static_cast<u16>(height_ - 1));
    record.Put<u16>(24, static_cast<u16>(frame));
    record.PutRow<float>(
        32, {kObject.emissivity, kObject.distance, kObject.reflectedTemp, kObject.atmosphereTemp, kObject.extOpticsTemp,
             kObject.extOpticsTrans, kObject.atmosphereTrans, kObject.relativeHumidity});
    record.PutRow<float>(88, {kCalib.planckR, kCalib.planckB, kCalib.planckF});
    record.PutRow<float>(112, {kCalib.atmAlpha1, kCalib.atmAlpha2, kCalib.atmBeta1, kCalib.atmBeta2, kCalib.atmX});
    record.PutRow<float>(144, {kCalib.radFitHighTemp, kCalib.radFitLowTemp, kCalib.overflowTemp, kCalib.underflowTemp,
                               kCalib.upperTemp, kCalib.lowerTemp});
    record.Put<i32>(776, kAdjust.offset);
    record.Put<float>(780, kAdjust.gain);
    record.PutRow<u16>(784, {kAdjust.imgMin, kAdjust.imgMax, kAdjust.nonlinearOn});
    record.Put<float>(792, kAdjust.nonlinearGain);
    record.Put<i32>(796, kAdjust.nonlinearOffset);
    const u64 milliseconds = SSynthTime(frame).UnixMilliseconds();
    record.Put<u32>(900, static_cast<u32>(milliseconds / 1000));
    record.Put<u32>(904, static_cast<u32>(milliseconds % 1000));
    record.Put<u32>(968, 0);   // no mark so far
    record.Put<u16>(1130, 0);  // a valid frame
}

std::vector<u8> YuvPicture(std::span<const float> kelvin, SYuvPlaces places) {
    std::vector<u8> bytes(kelvin.size() * 2);
    for (std::size_t i = 0; i + 1 < kelvin.size(); i += 2) {
        const SYuv first(ColourOf(kelvin[i]));
        const SYuv second(ColourOf(kelvin[i + 1]));
        u8* pair = &bytes[i * 2];
        pair[places.y0] = first.y;
        pair[places.u] = first.u;
        pair[places.y1] = second.y;
        pair[places.v] = first.v;
    }
    return bytes;
}

std::vector<u8> BGRPicture(std::span<const float> kelvin, u16 width, u16 height) {
    std::vector<u8> bytes;
    bytes.reserve(kelvin.size() * 3);
    for (u32 y = height; y-- > 0;) {
        for (u32 x = 0; x < width; ++x) {
            const SColour c = ColourOf(kelvin[y * width + x]);
            for (const u8 channel : {c.blue, c.green, c.red}) bytes.push_back(channel);
        }
    }
    return bytes;
}

}  // namespace ovix::app
