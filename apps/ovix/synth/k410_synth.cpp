#include "apps/ovix/synth/k410_synth.h"

#include <charls/charls.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/ovix/fault.h"
#include "apps/ovix/output/palette.h"
#include "apps/ovix/synth/detector.h"

namespace ovix::app {
namespace {

constexpr GUID kF7M0 = "{76ECF27C-7517-49D1-AED0-8C429934409D}"_guid;
constexpr GUID kFNM0 = "{E97ED85F-B45C-409C-B685-0568E493A9D0}"_guid;
constexpr GUID kGigE = "{3874994E-B76D-45DE-871A-5CF46393B19B}"_guid;
constexpr GUID kGigEFlipped = "{B3E83B04-FC6B-411D-B883-258685C80882}"_guid;
constexpr GUID kUYVY = "{4030E1B1-6E28-4E5C-88F7-16E54AF6A54A}"_guid;
constexpr GUID kYUY2 = "{DDBF6368-76B6-49F2-A410-6CC47415AFD3}"_guid;
constexpr GUID kBGR = "{036DA1C3-5794-4341-8BC1-5DEEAB52DFD5}"_guid;
constexpr GUID kMJLS = "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid;

constexpr u16 kFullCount = 16383;  ///< the detector's converter has 14 bits
constexpr int kBitsPerPixel = 14;
constexpr u32 kRecordBytes = 2428;
constexpr u32 kRecordOffset = 128;  ///< behind the container's index
constexpr u32 kDigitalHeaderBytes = 32;
constexpr u32 kFirstSecond = 1'768'478'400;  ///< 2026-01-15 12:00:00 UTC, in Unix seconds
constexpr u32 kMillisecondsPerFrame = 20;

/// Videos show this span of temperatures from black to white.
constexpr float kVideoLow = 283.15f;
constexpr float kVideoHigh = 358.15f;

/// A camera for 0 to 90 degrees Celsius: about 130 counts a kelvin at room temperature.
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

bool IsVideo(const GUID& type) { return type == kUYVY || type == kYUY2 || type == kBGR; }

/// Bytes at fixed places, in the camera's byte order.
class CFields {
  public:
    CFields(u8* bytes, bool swapped) : bytes_(bytes), swapped_(swapped) {}
    template <Number T>
    void Put(u32 offset, T value) {
        swapped_ ? StoreBig(bytes_ + offset, value) : StoreLittle(bytes_ + offset, value);
    }
    template <Number T>
    void PutRow(u32 offset, std::initializer_list<T> values) {
        for (T value : values) {
            Put(offset, value);
            offset += sizeof(T);
        }
    }

  private:
    u8* bytes_;
    bool swapped_;
};

void WriteRecord(u8* bytes, const SSynthOptions& options, u64 frame, bool swapped) {
    CFields record(bytes, swapped);
    record.Put<u16>(0, 2);  // reads 2 in the camera's own order
    record.Put<u16>(2, options.width);
    record.Put<u16>(4, options.height);
    record.Put<u16>(12, static_cast<u16>(options.width - 1));
    record.Put<u16>(16, static_cast<u16>(options.height - 1));
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
    const u64 milliseconds = frame * kMillisecondsPerFrame;
    record.Put<u32>(900, kFirstSecond + static_cast<u32>(milliseconds / 1000));
    record.Put<u32>(904, static_cast<u32>(milliseconds % 1000));
    record.Put<u32>(968, 0);   // no mark so far
    record.Put<u16>(1130, 0);  // a valid frame
}

/// The index, of two entries of 32 bytes, and the record. Its own fields are little-endian in every form.
void AppendContainer(std::vector<u8>& bytes, const SSynthOptions& options, u64 frame, bool swapped) {
    const std::size_t start = bytes.size();
    bytes.resize(start + kRecordOffset + kRecordBytes);
    CFields container(bytes.data() + start, false);
    container.Put<u32>(0, 0x4D4B4D);
    container.Put<u16>(64, 32);  // the camera record
    container.Put<u32>(76, kRecordOffset);
    container.Put<u32>(80, kRecordBytes);
    container.Put<u16>(96, 1);  // the pixels
    container.Put<u16>(98, swapped ? 1 : 0);
    WriteRecord(bytes.data() + start + kRecordOffset, options, frame, swapped);
}

void AppendDigitalHeader(std::vector<u8>& bytes, u64 frame) {
    const std::size_t start = bytes.size();
    bytes.resize(start + kDigitalHeaderBytes);
    bytes[start + 10] = frame % 2;  // something turns on one input with every frame
    StoreBig(&bytes[start + 12], static_cast<u16>(frame));
}

/// The stream behind its length.
std::vector<u8> CompressedImage(const SSynthOptions& options, const std::vector<u16>& pixels) {
    constexpr std::size_t kLengthBytes = 4;
    try {
        charls::jpegls_encoder encoder;
        encoder.frame_info({options.width, options.height, kBitsPerPixel, 1});
        std::vector<u8> bytes(kLengthBytes + encoder.estimated_destination_size());
        encoder.destination(bytes.data() + kLengthBytes, bytes.size() - kLengthBytes);
        const std::size_t size = encoder.encode(pixels);
        StoreBig(bytes.data(), static_cast<u32>(size));
        bytes.resize(kLengthBytes + size);
        return bytes;
    } catch (const charls::jpegls_error& error) {
        throw UsageFault(
            fmt::format("{} x {} pixels cannot be compressed: {}", options.width, options.height, error.what()));
    }
}

std::vector<u8> CompressedFrame(const SSynthOptions& options, u64 frame, const std::vector<u16>& pixels) {
    std::vector<u8> bytes = CompressedImage(options, pixels);
    AppendContainer(bytes, options, frame, false);
    return bytes;
}

std::vector<u8> PlainFrame(const SSynthOptions& options, u64 frame, std::vector<u16> pixels) {
    const bool swapped = options.form.ends_with("-swapped");
    if (options.type == kGigEFlipped) std::reverse(pixels.begin(), pixels.end());
    std::vector<u8> bytes(pixels.size() * 2);
    CFields image(bytes.data(), swapped);
    for (u32 i = 0; i < pixels.size(); ++i) image.Put(2 * i, pixels[i]);
    if (options.form.starts_with("digital")) AppendDigitalHeader(bytes, frame);
    AppendContainer(bytes, options, frame, swapped);
    return bytes;
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

std::vector<u8> VideoFrame(const SSynthOptions& options, std::span<const float> kelvin) {
    const u32 pixels = u32{options.width} * options.height;
    std::vector<SColour> colours(pixels);
    for (u32 i = 0; i < pixels; ++i) colours[i] = PaletteColour(kelvin[i], kVideoLow, kVideoHigh);
    std::vector<u8> bytes(std::size_t{pixels} * (options.type == kBGR ? 3 : 2));
    if (options.type == kBGR) {  // lines from the bottom up
        for (u32 i = 0; i < pixels; ++i) {
            const u32 row = options.height - 1u - i / options.width;
            const SColour c = colours[row * options.width + i % options.width];
            const u8 pixel[] = {c.blue, c.green, c.red};
            std::copy_n(pixel, 3, &bytes[std::size_t{i} * 3]);
        }
        return bytes;
    }
    for (u32 i = 0; i + 1 < pixels; i += 2) {  // two pixels share the colour of the first
        const SYuv first(colours[i]);
        const SYuv second(colours[i + 1]);
        const u8 uyvy[] = {first.u, first.y, first.v, second.y};
        const u8 yuy2[] = {first.y, first.u, second.y, first.v};
        std::copy_n(options.type == kUYVY ? uyvy : yuy2, 4, &bytes[std::size_t{i} * 2]);
    }
    return bytes;
}

class CK410Synth : public ISynthesizer {
  public:
    explicit CK410Synth(const SSynthOptions& options)
        : options_(options), model_(&kAdjust, &kObject, &kCalib), detector_(options, kFullCount) {}

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) override {
        if (IsVideo(options_.type)) return VideoFrame(options_, kelvin);
        even_.clear();
        for (float temperature : kelvin) even_.push_back(CountOf(temperature));
        detector_.Read(even_, number, pixels_);
        return options_.type == kMJLS ? CompressedFrame(options_, number, pixels_)
                                      : PlainFrame(options_, number, pixels_);
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override {
        return IsVideo(options_.type) ? nullptr : detector_.Correction();
    }

  private:
    /// With its fraction, which the noise still needs.
    float CountOf(float kelvin) const {
        const double pow = model_.objSigToPow(model_.tempToObjSig(kelvin));
        return static_cast<float>(pow / kAdjust.gain - kAdjust.offset);
    }

    SSynthOptions options_;
    reduce::CMeasConv model_;
    CDetector detector_;
    std::vector<float> even_;
    std::vector<u16> pixels_;
};

std::vector<SSynthForm> Forms() {
    std::vector<SSynthForm> forms;
    for (const GUID& type : {kF7M0, kFNM0, kGigE, kGigEFlipped}) {
        forms.push_back({type, "digital", "digital header and camera record behind the pixels"});
        forms.push_back({type, "plain", "camera record behind the pixels"});
        forms.push_back({type, "digital-swapped", "as digital, pixels and record in the other byte order"});
        forms.push_back({type, "plain-swapped", "as plain, pixels and record in the other byte order"});
    }
    for (const GUID& type : {kUYVY, kYUY2, kBGR}) forms.push_back({type, "video", "a colour picture"});
    forms.push_back({kMJLS, "jpeg-ls", "a JPEG-LS stream, then the camera record"});
    return forms;
}

std::unique_ptr<ISynthesizer> Make(const SSynthOptions& options) {
    if (options.width == 0 || options.height == 0) throw UsageFault("a frame has at least one pixel");
    std::string offered;
    for (const SSynthForm& form : Forms()) {
        if (form.type != options.type) continue;
        if (options.form.empty() || form.form == options.form) {
            SSynthOptions chosen = options;
            chosen.form = form.form;
            return std::make_unique<CK410Synth>(chosen);
        }
        offered += (offered.empty() ? "" : ", ") + form.form;
    }
    throw UsageFault(fmt::format("the K410 family makes no \"{}\" of this pixel type; there is: {}", options.form,
                                 offered.empty() ? "nothing" : offered));
}

}  // namespace

SSynthFamily K410SynthFamily() { return {L"K410", Forms, Make}; }

}  // namespace ovix::app
