#include <charls/charls.h>
#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/record_camera.h"

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

constexpr int kBitsPerPixel = 14;
constexpr u32 kRecordBytes = 2428;
constexpr u32 kRecordOffset = 128;  ///< behind the container's index
constexpr u32 kDigitalHeaderBytes = 32;

bool IsVideo(const GUID& type) { return type == kUYVY || type == kYUY2 || type == kBGR; }

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
        if (type == kBGR) return BGRPicture(kelvin, options_.width, options_.height);
        if (IsVideo(type)) return YuvPicture(kelvin, type == kUYVY ? kUYVYPlaces : kYUY2Places);
        return type == kMJLS ? CompressedFrame(number, kelvin) : PlainFrame(number, kelvin);
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
        if (options_.type == kGigEFlipped) std::reverse(counts.begin(), counts.end());
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

}  // namespace

SSynthFamily K410SynthFamily() { return {L"K410", Forms, MakeSynth<CK410Synth, Forms>}; }

}  // namespace ovix::app
