#include "apps/ovix/pipeline/guarded_decode.h"

#include <cstring>

#include "apps/ovix/fault.h"
#include "apps/ovix/pipeline/decoder_child.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace {

constexpr STypedData kMetadataOnly{nullptr, NoPixels};

CFault RefusedFrame() { return CFault({.problem = "the decoder does not take the frame"}); }

/// A decoder answers true even when a compressed stream ended early, so the last pixels get values beforehand that no
/// image holds in this order: finding them again says that nobody wrote there.
class CLastPixelsMark {
  public:
    CLastPixelsMark(u16* pixels, u32 count) : at_(pixels + count - Length(count)), length_(Length(count)) {
        for (u32 i = 0; i < length_; ++i) at_[i] = Value(i);
    }
    bool IsUntouched() const {
        u32 same = 0;
        while (same < length_ && at_[same] == Value(same)) ++same;
        return length_ >= kFewest && same == length_;
    }

  private:
    static constexpr u32 kFewest = 8;  // fewer could be met by chance
    static u32 Length(u32 count) { return count < 64 ? count : 64; }
    static u16 Value(u32 i) { return static_cast<u16>((i + 1) * 0x9E3779B9u >> 13); }

    u16* at_;
    u32 length_;
};

}  // namespace

CGuardedDecode::CGuardedDecode(const SFrameFormat& format)
    : format_(format),
      form_(PixelFormOf(format)),
      filterName_(format.filter.c_str()),
      filter_(reduce::filterFactory()->Create(filterName_)) {
    const std::size_t bytes = std::size_t{format.PixelCount()} * form_.BytesPerPixel();
    if (form_.compressed) {
        child_ = std::make_unique<CDecoderChild>(bytes, [this](std::span<u8> frame, void* pixels) {
            reduce::CReduceObjectArray unused;
            u8 preset = 0;
            return Parse(frame, {pixels, form_.type}, unused, preset);
        });
    } else {
        pixels_ = std::make_unique<u8[]>(bytes);
    }
}

CGuardedDecode::~CGuardedDecode() = default;

STypedData CGuardedDecode::Pixels() const {
    return {child_ ? child_->Pixels() : static_cast<void*>(pixels_.get()), form_.type};
}

void CGuardedDecode::Check(std::span<const u8> frame) const {
    reduce::SFrameFault fault;
    if (reduce::CheckFrame(filterName_, frame.data(), format_.pixelType, format_.width, format_.height,
                           static_cast<u32>(frame.size()), &fault))
        return;
    throw CFault({.offset = fault.offset, .expected = fault.expected.GetUTF8(), .found = fault.found.GetUTF8()});
}

bool CGuardedDecode::Parse(std::span<u8> frame, STypedData dest, reduce::CReduceObjectArray& objects, u8& preset) {
    return filter_->ParseFrame(frame.data(), format_.pixelType, format_.width, format_.height,
                               static_cast<u32>(frame.size()), dest, objects, preset);
}

u8 CGuardedDecode::DecodeMetadata(std::span<u8> frame, reduce::CReduceObjectArray& objects) {
    Check(frame);
    u8 preset = 0;
    if (!Parse(frame, kMetadataOnly, objects, preset)) throw RefusedFrame();
    return preset;
}

u8 CGuardedDecode::Decode(std::span<u8> frame, reduce::CReduceObjectArray& objects) {
    if (!form_.pixels) throw CFault({.problem = "frames of this pixel type are headers without pixels"});
    Check(frame);
    u8 preset = 0;
    if (!Parse(frame, child_ ? kMetadataOnly : Pixels(), objects, preset)) throw RefusedFrame();
    if (!child_) return preset;

    const CLastPixelsMark mark(static_cast<u16*>(child_->Pixels()), format_.PixelCount());
    if (!child_->Run(frame)) throw RefusedFrame();
    if (mark.IsUntouched()) throw CFault({.problem = "the compressed pixels are damaged: the image is not whole"});
    return preset;
}

}  // namespace ovix::app
