#include <cmath>

#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/header_line_synth.h"

namespace ovix::app {
namespace {

constexpr u32 kHeaderBytes = 96;
constexpr u32 kBytesWithLens = 120;

u16 CentiKelvin(double celsius) { return static_cast<u16>(std::lround((celsius + 273.15) * 100)); }

void PutTime(CFields& header, const SSynthTime& time) {
    const u32 locked = 0x8000;
    const u32 microseconds = time.Microseconds();
    const u32 dayAndHours = locked | u32{time.DayOfYear()} << 2 | time.Hours() >> 4;
    const u32 rest = u32{time.Hours()} << 12 | u32{time.Minutes()} << 6 | time.Seconds();
    header.PutRow<u16>(2, {static_cast<u16>(dayAndHours), static_cast<u16>(rest), static_cast<u16>(microseconds >> 16),
                           static_cast<u16>(microseconds)});
}

/// What both models have; temperatures that only one shows are there in both.
void Write(u8* bytes, const SSynthOptions&, u64 frame) {
    CFields header(bytes, false);
    header.Put<u16>(0, 0x4C52);
    PutTime(header, SSynthTime(frame));
    header.Put<u16>(10, frame % 10 == 0 ? 0xC000 : 0);  // trigger and start of a recording, with every tenth frame
    header.PutRow<u16>(12, {CentiKelvin(31.5), CentiKelvin(30.25), CentiKelvin(33), 7'712});
    header.Put<u32>(20, static_cast<u32>(frame));
    header.Put<u32>(24, 12'500);  // 2 ms
    header.Put<u16>(30, 1);
    header.PutRow<u16>(34, {0x0042, 0xA107, 0x0000, 0x10FF, 0x0003});
    header.Put<u16>(44, 16'000);
    header.Put<u32>(46, 0);
    header.Put<u32>(50, 125'000);  // 50 Hz
    header.Put<u16>(54, 16'383);   // 1
    header.PutRow<u8>(58, {1, 2, 1, 0});
    header.Put<u16>(62, 1'250);
    header.PutRow<u16>(64, {CentiKelvin(38), CentiKelvin(41.5), CentiKelvin(36), CentiKelvin(28)});
    header.PutRow<u16>(72, {500, 1'000, 1'500});
    header.PutRow<u32>(78, {static_cast<u32>(frame % 5), 5});
    header.PutRow<u8>(88, {static_cast<u8>(frame % 10 == 0), 0});
    header.PutRow<u16>(90, {14, 1'042, 50});
}

void WriteSB(u8* bytes, const SSynthOptions& options, u64 frame) {
    Write(bytes, options, frame);
    if (options.form != "lens") return;
    CFields lens(bytes + kHeaderBytes, false);
    lens.Put<u16>(0, 1);    // the block is there
    lens.Put<u32>(2, 500);  // 50 mm
    lens.PutRow<i32>(6, {12'345, -678});
    lens.PutRow<u16>(14, {285, 290, 270, 271, 272});
}

std::vector<SSynthForm> FormsRA() {
    return {{frame_types::kLORRA, "header-line", "a header line ahead of the pixels"}};
}
std::vector<SSynthForm> FormsSB() {
    return {{frame_types::kLORSB, "lens", "a header line ahead of the pixels, with the lens block"},
            {frame_types::kLORSB, "no-lens", "a header line ahead of the pixels"}};
}

}  // namespace

SSynthFamily LORRASynthFamily() {
    return {L"LOR-RA", FormsRA, [](const SSynthOptions& options) {
                return MakeHeaderLineSynth(WithForm(options, FormsRA()), kHeaderBytes, Write);
            }};
}
SSynthFamily LORSBSynthFamily() {
    return {L"LOR-SB", FormsSB, [](const SSynthOptions& options) {
                return MakeHeaderLineSynth(WithForm(options, FormsSB()), kBytesWithLens, WriteSB);
            }};
}

}  // namespace ovix::app
