#include "apps/ovix/fault.h"
#include "apps/ovix/synth/detector.h"
#include "apps/ovix/synth/frame_fields.h"

namespace ovix::app {
namespace {

constexpr u16 kLeastWidth = 48;  ///< of Lapwing, whose trailer takes a line

/// What the two variants of the trailer "TOMZ" do not share.
enum class ETomzVariant { Lapwing, OlderWren };

constexpr u32 kTrailerBytes = 96;
constexpr u32 kChecksumAt = 94;
constexpr u32 kClockMegahertz = 40;
constexpr u32 kIntegrationTicks = kClockMegahertz * 1000;
constexpr u32 kFrameTicks = kClockMegahertz * 1000 * SSynthTime::kMillisecondsPerFrame;

/// Degrees Celsius in sixteenths, of a value that is not below 0.
u16 SensorWord(double celsius) { return static_cast<u16>(celsius * 16); }

void PutLapwing(CFields& trailer) {
    trailer.Put<u16>(24, SensorWord(31.5));
    trailer.Put<u16>(28, SensorWord(24.25));
    trailer.Put<u32>(44, kClockMegahertz);
    trailer.Put<u8>(57, 1);  // filter position
}

void PutOlderWren(CFields& trailer) {
    trailer.PutRow<float>(24, {297.4f, 304.65f, 301.15f, 299.0f});
    trailer.Put<float>(44, kClockMegahertz * 1e6f);
    trailer.Put<u8>(56, 1);  // filter position
}

u16 Checksum(const u8* trailer) {
    u16 sum = 0;
    for (u32 at = 0; at < kChecksumAt; at += 2) sum = static_cast<u16>(sum + LoadLittle<u16>(trailer + at));
    return sum;
}

/// Appends the trailer to a picture, filled up with zeros to whole lines of `width` pixels. The camera's master clock
/// has 40 MHz, it integrates for 1 ms, and its only preset is 0.
void AppendTomzTrailer(std::vector<u8>& picture, u16 width, u64 frame, ETomzVariant variant) {
    const std::size_t start = picture.size();
    const std::size_t line = 2 * std::size_t{width};
    picture.resize(start + (kTrailerBytes + line - 1) / line * line);
    const SSynthTime time(frame);
    CFields trailer(picture.data() + start, false);
    trailer.PutRow<u8>(0, {'T', 'O', 'M', 'Z'});
    trailer.PutRow<u16>(4, {1, kTrailerBytes / 2});
    trailer.Put<u64>(8, time.MicrosecondsSince1601());
    trailer.Put<u32>(16, static_cast<u32>(frame));
    trailer.Put<u8>(21, 1);  // presets
    trailer.Put<float>(40, 77.0f);
    trailer.PutRow<u32>(48, {kIntegrationTicks - 1, kFrameTicks});
    trailer.Put<u16>(62, time.DayOfYear());
    trailer.PutRow<u8>(64, {time.Hours(), time.Minutes(), time.Seconds()});
    trailer.Put<u32>(67, time.Microseconds());
    trailer.Put<u8>(71, SSynthTime::kYear - 2000);
    variant == ETomzVariant::Lapwing ? PutLapwing(trailer) : PutOlderWren(trailer);
    trailer.Put<u16>(kChecksumAt, Checksum(picture.data() + start));
}

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

class CLapwingSynth final : public ISynthesizer {
  public:
    explicit CLapwingSynth(const SSynthOptions& options) : width_(options.width), camera_(options) {
        if (width_ < kLeastWidth) throw UsageFault("a Lapwing frame has at least 48 columns: its trailer takes a line");
    }

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) const override {
        std::vector<u8> bytes = CountBytes(camera_.Counts(kelvin, number), false);
        AppendTomzTrailer(bytes, width_, number, ETomzVariant::Lapwing);
        return bytes;
    }
    TSharedPtr<reduce::CCorrectionReduceObject> Correction() const override { return camera_.Correction(); }

  private:
    u16 width_;
    CPlainResponse camera_;
};

class CWrenSynth final : public ISynthesizer {
  public:
    explicit CWrenSynth(const SSynthOptions& options) : options_(options), camera_(options) {}

    std::vector<u8> Frame(u64 number, std::span<const float> kelvin) const override {
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

std::vector<SSynthForm> LapwingForms() {
    return {{frame_types::kLapwing, "trailer", "a line with the trailer \"TOMZ\" behind the pixels"}};
}
std::vector<SSynthForm> WrenForms() {
    return {{frame_types::kWren, "native", "the trailer \"PRUV\" behind the pixels"},
            {frame_types::kWren, "older", "lines with the trailer \"TOMZ\" behind the pixels"}};
}

}  // namespace

SSynthFamily LapwingSynthFamily() { return {L"Lapwing", LapwingForms, MakeSynth<CLapwingSynth, LapwingForms>}; }
SSynthFamily WrenSynthFamily() { return {L"Wren", WrenForms, MakeSynth<CWrenSynth, WrenForms>}; }

}  // namespace ovix::app
