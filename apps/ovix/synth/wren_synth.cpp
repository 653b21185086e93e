#include "apps/ovix/synth/wren_synth.h"

#include "apps/ovix/synth/byte_fields.h"
#include "apps/ovix/synth/plain_response.h"
#include "apps/ovix/synth/synth_clock.h"
#include "apps/ovix/synth/tomz_trailer.h"

namespace ovix::app {
namespace {

constexpr GUID kWren = "{7E48B0A6-78A9-44BC-80E8-7888C83854F7}"_guid;
constexpr u16 kRecordBytes = 109;
constexpr u32 kSignatureBytes = 4;

void AppendNativeTrailer(std::vector<u8>& picture, u64 frame) {
    const std::size_t start = picture.size();
    picture.resize(start + kSignatureBytes + kRecordBytes);
    CFields(picture.data() + start, false).PutRow<u8>(0, {'P', 'R', 'U', 'V'});
    CFields record(picture.data() + start + kSignatureBytes, false);
    const SSynthTime time(frame);
    record.Put<u16>(0, kRecordBytes);
    record.Put<u32>(2, 1);  // basic data
    record.PutRow<u64>(6, {time.MicrosecondsSince1601(), frame});
    record.Put<u16>(22, 1);  // presets
    record.Put<float>(30, 77.0f);
    record.PutRow<float>(34, {297.4f, 304.65f, 301.15f, 299.0f});
    record.PutRow<float>(50, {40e6f, 1000, 1000.0f / SSynthTime::kMillisecondsPerFrame});
    record.Put<u8>(62, 1);  // filter position
    record.Put<u8>(69, 1);  // the time is that of the time code
    record.Put<u16>(70, time.DayOfYear());
    record.PutRow<u8>(72, {time.Hours(), time.Minutes(), time.Seconds()});
    record.Put<u32>(75, time.Microseconds());
    record.Put<u8>(79, SSynthTime::kYear - 2000);
}

class CWrenSynth final : public ISynthesizer {
  public:
    explicit CWrenSynth(const SSynthOptions& options) : options_(options), camera_(options) {}

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) override {
        // The preset would stand above the 14 bits of the first count: it is 0.
        std::vector<u8> bytes = CountBytes(camera_.Counts(kelvin, number), false);
        if (options_.form == "native") {
            AppendNativeTrailer(bytes, number);
        } else {
            AppendTomzTrailer(bytes, options_.width, number, ETomzVariant::OlderWren);
        }
        return bytes;
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override { return camera_.Correction(); }

  private:
    SSynthOptions options_;
    CPlainResponse camera_;
};

std::vector<SSynthForm> Forms() {
    return {{kWren, "native", "the trailer \"PRUV\" behind the pixels"},
            {kWren, "older", "lines with the trailer \"TOMZ\" behind the pixels"}};
}

}  // namespace

SSynthFamily WrenSynthFamily() { return {L"Wren", Forms, MakeSynth<CWrenSynth, Forms>}; }

}  // namespace ovix::app
