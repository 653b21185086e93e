#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/bytes.h"
#include "core/pixel_types.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"

/// Frames as the fuzzers of the families take them. The frame and every destination stand in heap buffers of exactly
/// their size, so that the address sanitizer sees each byte beyond.
///
/// An input is the pixel type (16 bytes; one that nobody handles stands for some type by its first byte), width and
/// height (a byte each), a byte for the packet (images in the low half, the wanted one in the high half), and the
/// frame.
namespace ovix::reduce {

inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "fuzz: %s\n", what);
    std::abort();
}

class CHeapBytes {
  public:
    explicit CHeapBytes(u64 size, u8 fill = 0) : size_(static_cast<u32>(size)), bytes_(new u8[size]) {
        std::fill_n(bytes_.get(), size, fill);
    }
    CHeapBytes(const u8* bytes, u64 size) : CHeapBytes(size) { std::copy_n(bytes, size, bytes_.get()); }

    u8* Data() const { return bytes_.get(); }
    u32 Size() const { return size_; }
    bool operator==(const CHeapBytes& other) const {
        return size_ == other.size_ && std::equal(Data(), Data() + size_, other.Data());
    }

  private:
    u32 size_;
    std::unique_ptr<u8[]> bytes_;
};

constexpr std::size_t kFrameAt = 19;

struct SInput {
    CString family;
    GUID type;
    u16 width = 0, height = 0, images = 0, image = 0;
    const u8* frame = nullptr;
    u32 size = 0;

    u64 Pixels() const { return u64{width} * height; }
    u8 LastByte() const { return size ? frame[size - 1] : u8{0}; }
    CHeapBytes Frame() const { return {frame, size}; }
    TSharedPtr<IFilter> NewFilter() const { return filterFactory()->Create(family); }
};

/// The type that the input names, and whose it is. The root type belongs to nobody, and families take it all the same.
inline void ChooseType(SInput& input, const GUID& named) {
    input.type = named;
    input.family = filterFactory()->GetPixelTypeHandler(named);
    if (!input.family.IsEmpty()) return;
    const auto& entry = filterFactory()->GetEntryAt(named.data1 % 256 % filterFactory()->GetEntryCount());
    const TArray<GUID>& types = entry.extra.pixelTypes;
    const u32 choice = (named.data1 >> 8) % (types.size() + 1);
    input.family = entry.name;
    input.type = choice < types.size() ? types[choice] : rootIRType;
}

inline bool ReadInput(SInput& input, const u8* data, std::size_t size) {
    CByteCursor cursor(data, size);
    const u8* head = cursor.Take(kFrameAt);
    if (!head) return false;
    ChooseType(input, LoadGuid(head));
    input.width = head[16];
    input.height = head[17];
    input.images = head[18] & 15;
    input.image = head[18] >> 4;
    input.frame = data + kFrameAt;
    input.size = static_cast<u32>(size - kFrameAt);
    return true;
}

/// What a fresh decoder makes of the frame.
struct SParsed {
    bool done = false;
    u8 preset = 9;
    CReduceObjectArray objects;
    CHeapBytes pixels{0};

    auto Info() { return objects.Get<CFrameInfoReduceObject>(preset, false); }
};

inline void Parse(SParsed& parsed, const SInput& input, EDataType type, u8 fill) {
    const u32 bytesPerPixel = type == Opaque ? 3 : 2;
    const CHeapBytes frame = input.Frame();
    STypedData dest{nullptr, type};
    if (type != NoPixels) {
        parsed.pixels = CHeapBytes(bytesPerPixel * input.Pixels(), fill);
        dest.data = parsed.pixels.Data();
    }
    parsed.done = input.NewFilter()->ParseFrame(frame.Data(), input.type, input.width, input.height, frame.Size(), dest,
                                                parsed.objects, parsed.preset);
}

/// One of the operations that give pixels or bytes of a frame, on one that may be any bytes.
void Decode(const SInput& input, u32 way);
/// The description, or the questions that scan a recording, which are to agree with the parsing.
void CheckAndDescribe(const SInput& input, u32 way);

}  // namespace ovix::reduce
