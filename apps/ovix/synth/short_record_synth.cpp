#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/record_camera.h"

namespace ovix::app {
namespace {

constexpr GUID kMV310 = "{07C06B52-E505-45EA-85F5-73C9E5F0519C}"_guid;
constexpr GUID kMV310Screen = "{B9A7A170-5FEF-4CBC-96E4-E6B84B9F56D7}"_guid;
constexpr GUID kMV310Yuv = "{4C264D2A-288C-4A7B-A9A4-A9E18695CDFE}"_guid;
constexpr GUID kPlover = "{FD728B9B-9B9B-4098-81E4-73EC59D2505C}"_guid;
constexpr GUID kPloverYuv = "{0612D7F1-A3F5-423B-8A16-F77199066239}"_guid;

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
std::vector<SSynthForm> MV310Forms() { return Forms(kMV310, {kMV310Screen, kMV310Yuv}); }
std::vector<SSynthForm> PloverForms() { return Forms(kPlover, {kPloverYuv}); }

}  // namespace

SSynthFamily MV310SynthFamily() { return {L"MV310", MV310Forms, MakeSynth<CShortRecordSynth, MV310Forms>}; }
SSynthFamily PloverSynthFamily() { return {L"Plover", PloverForms, MakeSynth<CShortRecordSynth, PloverForms>}; }

}  // namespace ovix::app
