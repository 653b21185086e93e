#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/record_camera.h"

namespace ovix::app {
namespace {

constexpr u32 kRecordBytes = 1148;

/// Counts, little-endian in both forms, and the first part of the record.
class CShortRecordSynth final : public ISynthesizer {
  public:
    explicit CShortRecordSynth(const SSynthOptions& options) : options_(options), camera_(options) {}

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) const override {
        if (IsVideo()) return YuvPicture(kelvin, kUYVYPlaces);
        std::vector<u8> bytes = CountBytes(camera_.Counts(kelvin, number), false);
        camera_.AppendRecord(bytes, kRecordBytes, number, options_.form == "big-endian");
        return bytes;
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override {
        return IsVideo() ? nullptr : camera_.Correction();
    }

  private:
    bool IsVideo() const { return options_.form == "video"; }

    SSynthOptions options_;
    CRecordCamera camera_;
};

std::vector<SSynthForm> Forms(const GUID& infrared, std::initializer_list<GUID> videos) {
    std::vector<SSynthForm> forms{{infrared, "big-endian", "camera record behind the pixels, as the camera sends it"},
                                  {infrared, "little-endian", "camera record behind the pixels, turned around"}};
    for (const GUID& type : videos) forms.push_back({type, "video", "a colour picture"});
    return forms;
}
std::vector<SSynthForm> MV310Forms() {
    return Forms(frame_types::kMV310, {frame_types::kMV310Screen, frame_types::kMV310YUV});
}
std::vector<SSynthForm> PloverForms() { return Forms(frame_types::kPlover, {frame_types::kPloverYUV}); }

}  // namespace

SSynthFamily MV310SynthFamily() { return {L"MV310", MV310Forms, MakeSynth<CShortRecordSynth, MV310Forms>}; }
SSynthFamily PloverSynthFamily() { return {L"Plover", PloverForms, MakeSynth<CShortRecordSynth, PloverForms>}; }

}  // namespace ovix::app
