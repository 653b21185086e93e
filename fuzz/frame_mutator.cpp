#include <iterator>
#include <random>

#include "fuzz/frame_input.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

/// Changes frames where it tells: in the fields that the family's description names, in the size that the caller says,
/// in what stands behind the pixels; else as libFuzzer does, with the type left alone, by which the family is known.
namespace ovix::reduce {
namespace {

using Random = std::minstd_rand;

void PutNumber(u8* field, u32 size, Random& random) {
    static constexpr u64 kTelling[] = {0,      1,      2,      7,      8,          127,        128,     255,
                                       0x7FFF, 0x8000, 0xFFFF, 0xFFFE, 0x7FFFFFFF, 0x80000000, ~u64{0}, 0x7F800000};
    const u64 number = random() % 4 ? kTelling[random() % std::size(kTelling)] : random();
    const bool turned = random() % 2;
    for (u32 i = 0; i < size && i < 8; ++i) field[turned ? size - 1 - i : i] = static_cast<u8>(number >> (8 * i));
}

bool ChangeField(u8* data, std::size_t size, Random& random) {
    SInput input;
    TArray<SFrameField> fields;
    if (!ReadInput(input, data, size)) return false;
    const CHeapBytes frame = input.Frame();
    if (!DescribeFrame(input.family, frame.Data(), input.type, input.width, input.height, frame.Size(), fields))
        return false;
    if (!fields.size()) return false;
    const SFrameField& field = fields[static_cast<u32>(random()) % fields.size()];
    PutNumber(data + kFrameAt + field.offset, field.size, random);
    return true;
}

}  // namespace
}  // namespace ovix::reduce

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    using namespace ovix::reduce;
    Random random(seed);
    if (size <= kFrameAt) return LLVMFuzzerMutate(data, size, most);
    switch (random() % 8) {
        case 0:
        case 1:
        case 2:
            if (ChangeField(data, size, random)) return size;
            break;
        case 3:  // the size that is asked for, and the packet
            data[16 + random() % 3] = static_cast<std::uint8_t>(random() % 20);
            return size;
        case 4:  // a number somewhere behind the pixels
            if (size > kFrameAt + 8) {
                const std::size_t back = 4 + random() % std::min<std::size_t>(size - kFrameAt - 4, 400);
                PutNumber(data + size - back, random() % 2 ? 2 : 4, random);
                return size;
            }
            break;
        default:
            break;
    }
    return kFrameAt + LLVMFuzzerMutate(data + kFrameAt, size - kFrameAt, most - kFrameAt);
}
