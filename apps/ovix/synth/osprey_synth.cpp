#include <cmath>

#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/header_line_synth.h"

namespace ovix::app {
namespace {

constexpr u32 kHeaderBytes = 192;

double PlanckResponse(double kelvin) { return 500 + 3e8 / std::expm1(3597 / kelvin); }

void Write(u8* header, const SSynthOptions& options, u64 frame) {
    const SSynthTime time(frame);
    reduce::COspreyFilter::SHeader values;
    values.preset = 0;
    values.integrationTime = 24'907;  // shown as 2 ms
    values.frameCounter = static_cast<u16>(frame);
    values.saturation = 12;
    values.fpaControlWord = 0x0042A107;
    values.fpaWindowWord = u32{options.width} << 16 | options.height;
    values.resolution = 14;
    values.day = time.DayOfYear();
    values.hours = time.Hours();
    values.minutes = time.Minutes();
    values.seconds = time.Seconds();
    values.milliseconds = static_cast<i32>(time.Microseconds() / 1000);
    values.frontPanelTemp = 27.5f;
    values.airGapTemp = 31.0f;
    values.dewarTemp = 29.0f;
    reduce::COspreyFilter::EncodeHeader(values, header, options.width);
}

std::vector<SSynthForm> Forms() { return {{frame_types::kOsprey, "header-line", "a header line ahead of the pixels"}}; }

}  // namespace

SSynthFamily OspreySynthFamily() {
    return {L"Osprey", Forms, [](const SSynthOptions& options) {
                return MakeHeaderLineSynth(WithForm(options, Forms()), kHeaderBytes, Write, PlanckResponse);
            }};
}

}  // namespace ovix::app
