#include "fuzz/frame_input.h"

namespace ovix::reduce {
namespace {

void RequireSameMetadata(SParsed& a, SParsed& b) {
    Require(a.done == b.done && a.preset == b.preset, "metadata depends on the destination");
    const auto left = a.Info(), right = b.Info();
    Require(!left == !right, "frame information depends on the destination");
    if (!left || !a.done) return;
    // All but the time, which may be the present one.
    Require(left->frameNumber == right->frameNumber && left->preset == right->preset &&
                left->extra.size() == right->extra.size(),
            "frame information depends on the destination");
    for (u32 i = 0; i < left->extra.size(); ++i) {
        const auto &one = left->extra.data()[i], &other = right->extra.data()[i];
        Require(one.name == other.name && one.value == other.value, "a frame value depends on the destination");
    }
}

/// Two destinations of a frame, which agree on its metadata.
void ParseTo(EDataType other, const SInput& input) {
    SParsed counts, second;
    Parse(counts, input, UInt16, 0x00);
    Parse(second, input, other, 0);
    if (counts.done && second.done) RequireSameMetadata(counts, second);
}

void RequireAllPixels(const SInput& input) {
    SParsed counts, again;
    Parse(counts, input, UInt16, 0x00);
    again.objects = counts.objects;  // as from one frame to the next of a recording
    Parse(again, input, UInt16, 0xFF);
    Require(counts.done == again.done, "the result changes from one decoder to the next");
    // A header may come without pixels, and a damaged compressed image leaves some of them.
    if (counts.done && input.NewFilter()->HasPixels(input.type))
        Require(counts.pixels == again.pixels, "some pixels were not written");
}

void ReadHeaderAndPixels(const SInput& input) {
    const TSharedPtr<IFilter> filter = input.NewFilter();
    const CHeapBytes frame = input.Frame();
    void* pixels = nullptr;
    i32 stride = 0;
    if (filter->HasPixels(input.type) &&
        filter->GetPixels(frame.Data(), input.type, input.width, input.height, frame.Size(), &pixels, stride)) {
        const u64 end =
            static_cast<u64>(static_cast<u8*>(pixels) - frame.Data()) + static_cast<u64>(stride) * input.height;
        Require(end <= frame.Size(), "the pixels reach beyond the frame");
    }
    GUID headerType;
    u32 headerSize = 0;
    filter->GetHeaderInfo(input.type, input.width, input.height, frame.Size(), headerType, headerSize);
    for (const u32 size : {0u, headerSize / 2, headerSize, headerSize + 9}) {
        const CHeapBytes header(size);
        filter->ExtractHeader(frame.Data(), input.type, input.width, input.height, frame.Size(), header.Data(), size);
    }
    for (u8 field = 0; field < 8; ++field) {
        bool triggered = false;
        u16 index = 0;
        filter->CheckForTrigger(frame.Data(), frame.Size(), input.type, input.width, input.height,
                                field < 4 ? 1 : input.images, field % 4, triggered, index);
    }
}

/// Needs no check ahead: the operation is told both sizes.
void Store(const SInput& input) {
    const TSharedPtr<IFilter> filter = input.NewFilter();
    const CHeapBytes source = input.Frame();
    // The room that one image of 16-bit pixels and what stands behind all images need, when there are so many.
    const u64 image = 2 * input.Pixels(), images = input.images * image;
    const u32 exact = images <= input.size ? static_cast<u32>(input.size - images + image) : 0;
    for (const u32 size : {input.size / 2, exact, input.size, input.size + 200}) {
        const CHeapBytes dest(size);
        filter->StoreFrame(source.Data(), source.Size(), input.type, input.width, input.height, input.images,
                           input.image, dest.Data(), dest.Size());
    }
}

}  // namespace

/// Two of eight ways make texts of all that a frame tells, which takes as long as all others together.
void Decode(const SInput& input, u32 way) {
    way %= 8;
    if (way < 2) return Store(input);
    const CHeapBytes frame = input.Frame();
    if (!CheckFrame(input.family, frame.Data(), input.type, input.width, input.height, frame.Size())) return;
    if (way < 4) return ReadHeaderAndPixels(input);
    if (way < 6) return RequireAllPixels(input);
    ParseTo(way == 6 ? Opaque : NoPixels, input);
}

}  // namespace ovix::reduce
