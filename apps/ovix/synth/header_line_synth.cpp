#include "apps/ovix/synth/header_line_synth.h"

#include <fmt/format.h>

#include "apps/ovix/fault.h"
#include "apps/ovix/synth/frame_fields.h"

namespace ovix::app {
namespace {

class CHeaderLineSynth final : public ISynthesizer {
  public:
    CHeaderLineSynth(const SSynthOptions& options, u32 headerBytes, WriteHeader write, CResponse::Formula response)
        : options_(options), headerBytes_(headerBytes), write_(write), camera_(options, std::move(response)) {}

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) const override {
        std::vector<u8> bytes(headerBytes_);
        write_(bytes.data(), options_, number);
        bytes.resize(2 * std::size_t{options_.width});  // cut or filled up with zeros
        AppendCounts(bytes, camera_.Counts(kelvin, number), false);
        return bytes;
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override { return camera_.Correction(); }

  private:
    SSynthOptions options_;
    u32 headerBytes_;
    WriteHeader write_;
    CPlainResponse camera_;
};

}  // namespace

std::unique_ptr<ISynthesizer> MakeHeaderLineSynth(const SSynthOptions& options, u32 headerBytes, WriteHeader write,
                                                  CResponse::Formula response) {
    const u64 bytes = 2u * u64{options.width} * (options.height + 1u);
    if (bytes < headerBytes)
        throw UsageFault(fmt::format("{} x {} pixels and a header line make {} bytes; the header alone has {}",
                                     options.width, options.height, bytes, headerBytes));
    return std::make_unique<CHeaderLineSynth>(options, headerBytes, write, std::move(response));
}

}  // namespace ovix::app
