#include "measure/frame/frame_index.h"

#include <algorithm>

#include "measure/sources/source_body.h"

namespace ovix::measure {

namespace {

/// Pixels that no turning, masking or swapping leaves as they are: bit 15 of the products, too, goes up and down.
std::vector<u8> Pattern(u64 bytes) {
    std::vector<u8> pattern(bytes);
    u32 state = 1;
    for (u8& byte : pattern) {
        state = state * 1'664'525u + 1'013'904'223u;
        byte = static_cast<u8>(state >> 24);
    }
    return pattern;
}

bool SaysTheSame(const SFrameFacts& a, const SFrameFacts& b) {
    return a.preset == b.preset && a.namesPreset == b.namesPreset && a.time == b.time && a.counter == b.counter;
}

/// Where the decoder says that the pixels are; nothing when that is not all of them in the frame, row behind row.
std::optional<u64> StatedPlace(const SFrameFormat& format, std::span<u8> frame) {
    const auto filter = reduce::filterFactory()->Create(CString(format.filter.c_str()));
    void* pixels = nullptr;
    i32 stride = 0;
    if (!filter || !filter->GetPixels(frame.data(), format.pixelType, format.width, format.height,
                                      static_cast<u32>(frame.size()), &pixels, stride))
        return {};
    const u64 bytes = u64{2} * format.PixelCount();
    const auto from = reinterpret_cast<std::uintptr_t>(frame.data()), at = reinterpret_cast<std::uintptr_t>(pixels);
    const bool within = at >= from && at - from <= frame.size() && frame.size() - (at - from) >= bytes;
    return within && stride == 2 * format.width ? std::optional<u64>(at - from) : std::nullopt;
}

}  // namespace

/// What one frame showed.
struct CFrameIndex::STried {
    std::optional<SPixelPlace> place = {};
    bool apart = false;
};

CFrameIndex::CFrameIndex(CSource source) : source_(std::move(source)), reader_(source_) {
    if (!source_.IsNumbered()) source_.Find(0);  // throws
    if (source_.Body().IsPacked()) return;
    if (source_.Kind() == ESource::Counts) {
        place_ = SPixelPlace{0, IsBigEndian(source_.Format())};
        apart_ = true;
        return;
    }
    if (reader_.Form().element != UInt16 || reader_.Form().compressed) return;
    std::optional<STried> all;
    std::optional<CError> fault;
    for (const u64 last = *source_.Count() - 1; const u64 number : {u64{0}, last / 2, last}) {
        try {
            const STried tried = Try(number);
            if (!all) all = tried;
            if (all->place != tried.place) all->place.reset();
            all->apart = all->apart && tried.apart;
        } catch (const CError& error) {
            if (!fault) fault = error;
        }
    }
    if (!all) throw CError(*fault);
    place_ = all->place;
    apart_ = all->apart && place_;
}

CFrameIndex::STried CFrameIndex::Try(u64 number) const {
    SRawFrame raw;
    source_.Read(number, raw);
    reduce::CReduceObjectArray objects;
    SRawFrame tried = raw;  // a decoder may write to its frame
    const SFrameFacts facts = reader_.Read(raw, objects);
    const std::optional<u64> stated = StatedPlace(source_.Format(), tried.bytes);
    if (!stated) return {};
    std::vector<u8> pattern = Pattern(PixelBytes()), pixels(PixelBytes());
    std::ranges::copy(pattern, tried.bytes.begin() + static_cast<std::ptrdiff_t>(*stated));
    try {
        const bool same = SaysTheSame(reader_.Read(tried, objects, pixels), facts);
        if (pixels == pattern) return {SPixelPlace{*stated, false}, same};
        SwapBytes(pattern);
        if (pixels == pattern) return {SPixelPlace{*stated, true}, same};
    } catch (const CError&) {
        // The check looks at pixels: they are no plain numbers.
    }
    return {};
}

void CFrameIndex::ReadAround(u64 number, SRawFrame& raw) const {
    const SExtent frame = source_.Find(number);
    raw.number = number;
    raw.offset = frame.offset;
    raw.bytes.assign(frame.size, 0);
    const std::span<u8> bytes(raw.bytes);
    const u64 behind = place_->offset + PixelBytes();
    const CInputFile& file = source_.Body().File();
    file.ReadAllAt(frame.offset, bytes.first(place_->offset));
    file.ReadAllAt(frame.offset + behind, bytes.subspan(behind));
}

SFrameFacts CFrameIndex::Facts(u64 number) const {
    if (source_.Kind() == ESource::Counts && place_) return source_.Find(number), SFrameFacts{};
    SRawFrame raw;
    if (apart_)
        ReadAround(number, raw);
    else
        source_.Read(number, raw);
    reduce::CReduceObjectArray objects;
    return reader_.Read(raw, objects);
}

}  // namespace ovix::measure
