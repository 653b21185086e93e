#include <cmath>

#include "apps/ovix/synth/frame_fields.h"
#include "apps/ovix/synth/header_line_synth.h"

namespace ovix::app {
namespace {

constexpr u32 kHeaderBytes = 256;

/// A byte in the low half of each word.
class CLowBytes {
  public:
    explicit CLowBytes(u8* header) : header_(header) {}
    void Big(u32 word, u32 count, u32 value) {
        for (u32 i = 0; i < count; ++i) header_[2 * (word + i)] = static_cast<u8>(value >> (8 * (count - 1 - i)));
    }
    void Little(u32 word, u16 value) {
        header_[2 * word] = static_cast<u8>(value);
        header_[2 * word + 2] = static_cast<u8>(value >> 8);
    }

  private:
    u8* header_;
};

/// The sensors give 10 mV for each degree from 0.5 V on, of 2.44 V in 1023 steps.
u16 SensorCount(double celsius) { return static_cast<u16>(std::lround((celsius / 100 + 0.5) / 2.44 * 1023)); }
constexpr u32 TwoDigits(u32 value) { return value / 10 % 10 * 16 + value % 10; }

void Write(u8* bytes, const SSynthOptions&, u64 frame) {
    CLowBytes header(bytes);
    header.Big(2, 4, 12'800);  // 2 ms
    header.Big(6, 4, 0x0042A107);
    header.Big(16, 3, static_cast<u32>(frame));
    header.Big(19, 2, 16'000);
    const SSynthTime time(frame);
    const u32 milliseconds = time.Microseconds() / 1000;
    header.Big(25, 1, milliseconds % 10 * 16);
    header.Big(26, 1, TwoDigits(milliseconds / 10));
    header.Big(27, 1, TwoDigits(time.Seconds()));
    header.Big(28, 1, TwoDigits(time.Minutes()));
    header.Big(29, 1, TwoDigits(time.Hours()));
    header.Big(30, 1, TwoDigits(time.DayOfYear()));
    header.Big(31, 1, TwoDigits(time.DayOfYear() / 100u));
    header.Big(32, 1, 1);  // locked to a time source
    header.Big(33, 1, 40);
    header.Big(34, 1, 101);
    header.Little(35, 2'650);
    header.Little(43, SensorCount(27.5));
    header.Little(45, SensorCount(31));
    header.Little(47, SensorCount(29));
    header.Big(52, 2, 16'384);  // 1
    header.Big(58, 1, 14);
    header.Big(59, 2, 2'048);
    header.Little(61, 210);
    header.Little(63, 420);
    header.Little(65, 630);
    header.Big(67, 1, frame % 2);  // something turns on an input with every other frame
    header.Big(69, 4, 128'000);    // 50 Hz
    header.Big(73, 4, 100);
    header.Big(117, 1, 1);
    header.Big(118, 1, 2);
    header.Big(119, 1, 3);
    header.Big(120, 3, 1'042);
    header.Big(123, 1, 50);
}

std::vector<SSynthForm> Forms() {
    return {{frame_types::kMVFalcon, "header-line", "a header line ahead of the pixels"}};
}

}  // namespace

SSynthFamily MVFalconSynthFamily() {
    return {L"MVFalcon", Forms, [](const SSynthOptions& options) {
                return MakeHeaderLineSynth(WithForm(options, Forms()), kHeaderBytes, Write);
            }};
}

}  // namespace ovix::app
