#include <charls/charls.h>
#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/record_camera.h"

namespace ovix::app {
namespace {

constexpr int kBitsPerPixel = 14;
constexpr u32 kRecordBytes = 2428;
constexpr u32 kRecordOffset = 128;  ///< behind the container's index
constexpr u32 kDigitalHeaderBytes = 32;

bool IsVideo(const GUID& type) {
    return type == frame_types::kK410UYVY || type == frame_types::kK410YUY2 || type == frame_types::kK410BGR;
}

/// The index, of two entries of 32 bytes, and the record. Its own fields are little-endian in every form.
void AppendContainer(std::vector<u8>& bytes, const CRecordCamera& camera, u64 frame, bool swapped) {
    const std::size_t start = bytes.size();
    bytes.resize(start + kRecordOffset);
    CFields container(bytes.data() + start, false);
    container.Put<u32>(0, 0x4D4B4D);
    container.Put<u16>(64, 32);  // the camera record
    container.Put<u32>(76, kRecordOffset);
    container.Put<u32>(80, kRecordBytes);
    container.Put<u16>(96, 1);  // the pixels
    container.Put<u16>(98, swapped ? 1 : 0);
    camera.AppendRecord(bytes, kRecordBytes, frame, swapped);
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

class CK410Synth final : public ISynthesizer {
  public:
    explicit CK410Synth(const SSynthOptions& options) : options_(options), camera_(options) {}

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) const override {
        const GUID& type = options_.type;
        if (type == frame_types::kK410BGR) return BGRPicture(kelvin, options_.width, options_.height);
        if (IsVideo(type)) return YuvPicture(kelvin, type == frame_types::kK410UYVY ? kUYVYPlaces : kYUY2Places);
        return type == frame_types::kK410MJLS ? CompressedFrame(number, kelvin) : PlainFrame(number, kelvin);
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override {
        return IsVideo(options_.type) ? nullptr : camera_.Correction();
    }

  private:
    std::vector<u8> CompressedFrame(u64 number, std::span<const float> kelvin) const {
        std::vector<u8> bytes = CompressedImage(options_, camera_.Counts(kelvin, number));
        AppendContainer(bytes, camera_, number, false);
        return bytes;
    }
    std::vector<u8> PlainFrame(u64 number, std::span<const float> kelvin) const {
        const bool swapped = options_.form.ends_with("-swapped");
        std::vector<u16> counts = camera_.Counts(kelvin, number);
        if (options_.type == frame_types::kK410GigEFlipped) std::reverse(counts.begin(), counts.end());
        std::vector<u8> bytes = CountBytes(counts, swapped);
        if (options_.form.starts_with("digital")) AppendDigitalHeader(bytes, number);
        AppendContainer(bytes, camera_, number, swapped);
        return bytes;
    }

    SSynthOptions options_;
    CRecordCamera camera_;
};

std::vector<SSynthForm> Forms() {
    std::vector<SSynthForm> forms;
    for (const GUID& type :
         {frame_types::kK410F7M0, frame_types::kK410FNM0, frame_types::kK410GigE, frame_types::kK410GigEFlipped}) {
        forms.push_back({type, "digital", "digital header and camera record behind the pixels"});
        forms.push_back({type, "plain", "camera record behind the pixels"});
        forms.push_back({type, "digital-swapped", "as digital, pixels and record in the other byte order"});
        forms.push_back({type, "plain-swapped", "as plain, pixels and record in the other byte order"});
    }
    for (const GUID& type : {frame_types::kK410UYVY, frame_types::kK410YUY2, frame_types::kK410BGR})
        forms.push_back({type, "video", "a colour picture"});
    forms.push_back({frame_types::kK410MJLS, "jpeg-ls", "a JPEG-LS stream, then the camera record"});
    return forms;
}

}  // namespace

SSynthFamily K410SynthFamily() { return {L"K410", Forms, MakeSynth<CK410Synth, Forms>}; }

}  // namespace ovix::app
