#include "apps/ovix/synth/lapwing_synth.h"

#include "apps/ovix/fault.h"
#include "apps/ovix/synth/byte_fields.h"
#include "apps/ovix/synth/plain_response.h"
#include "apps/ovix/synth/tomz_trailer.h"

namespace ovix::app {
namespace {

constexpr GUID kLapwing = "{AD56BAF5-751A-4328-B058-72B124803183}"_guid;
constexpr u16 kLeastWidth = 48;

class CLapwingSynth final : public ISynthesizer {
  public:
    explicit CLapwingSynth(const SSynthOptions& options) : width_(options.width), camera_(options) {
        if (width_ < kLeastWidth) throw UsageFault("a Lapwing frame has at least 48 columns: its trailer takes a line");
    }

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) override {
        std::vector<u8> bytes = CountBytes(camera_.Counts(kelvin, number), false);
        AppendTomzTrailer(bytes, width_, number, ETomzVariant::Lapwing);
        return bytes;
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override { return camera_.Correction(); }

  private:
    u16 width_;
    CPlainResponse camera_;
};

std::vector<SSynthForm> Forms() {
    return {{kLapwing, "trailer", "a line with the trailer \"TOMZ\" behind the pixels"}};
}

}  // namespace

SSynthFamily LapwingSynthFamily() { return {L"Lapwing", Forms, MakeSynth<CLapwingSynth, Forms>}; }

}  // namespace ovix::app
