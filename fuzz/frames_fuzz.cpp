#include "fuzz/frame_input.h"

/// One family and one of the two parts, which the build says, of what every decoder must bear: what `CheckFrame`
/// passes, all operations take. Each input takes one of a part's ways, which its last byte chooses, so that many inputs
/// pass in a second. Where no family is said, all families and all ways.
namespace {

#ifdef FUZZ_FAMILY
void Run(const ovix::reduce::SInput& input) { ovix::reduce::FUZZ_PART(input, input.LastByte()); }
bool IsOurs(const ovix::reduce::SInput& input) { return input.family == FUZZ_FAMILY; }
#else
void Run(const ovix::reduce::SInput& input) {
    for (unsigned way = 0; way < 8; ++way) {
        Decode(input, way);
        CheckAndDescribe(input, way);
    }
}
bool IsOurs(const ovix::reduce::SInput&) { return true; }
#endif

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ovix::reduce::SInput input;
    if (!ovix::reduce::ReadInput(input, data, size) || !IsOurs(input)) return -1;
    Run(input);
    return 0;
}
