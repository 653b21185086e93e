#include "reduce/filters/k410_frame.h"

#include <charls/charls.h>

#include <algorithm>
#include <cstring>

namespace ovix::reduce {

namespace {

enum EMarker : u8 {
    kStartOfImage = 0xD8,
    kEndOfImage = 0xD9,
    kStartOfScan = 0xDA,
    kRestartInterval = 0xDD,
    kApplication0 = 0xE0,
    kApplication8 = 0xE8,
    kApplication15 = 0xEF,
    kStartOfFrame = 0xF7,
    kCodingParameters = 0xF8,
    kComment = 0xFE,
};

/// The default thresholds of the standard for lossless samples of 8 bits and more.
struct SCodingParameters {
    u16 maxValue, t1, t2, t3, reset;

    static constexpr SCodingParameters DefaultFor(u8 bits) {
        const u32 maxValue = (u32{1} << bits) - 1;
        const u32 factor = (std::min(maxValue, u32{4095}) + 128) / 256;
        return {static_cast<u16>(maxValue), static_cast<u16>(factor + 2), static_cast<u16>(factor * 4 + 3),
                static_cast<u16>(factor * 17 + 4), 64};
    }
};

/// One segment with its place in the frame. Reads stay inside it.
struct SSegment {
    u64 offset;
    CByteCursor content;
};

/// Walks the segments ahead of the scan.
class CStreamCheck {
  public:
    CStreamCheck(const CFrameProbe& probe, u64 offset, u64 size, u16 width, u16 height)
        : probe_(probe), end_(offset + size), rest_(probe.At(offset), size), width_(width), height_(height) {}

    bool Run() {
        u8 marker = 0;
        if (!ReadMarker(marker)) return false;
        if (marker != kStartOfImage) return Refuse(Here() - 2, L"the start of a JPEG-LS stream", Marker(marker));
        while (ReadMarker(marker)) {
            SSegment segment{Here(), {nullptr, 0}};
            if (!ReadSegment(segment)) return false;
            if (marker == kStartOfScan) return CheckScan(segment) && CheckEnd();
            if (!CheckSegment(marker, segment)) return false;
        }
        return false;
    }

  private:
    u64 Here() const { return end_ - rest_.Remaining(); }
    bool Refuse(u64 offset, const CString& expected, const CString& found) const {
        return probe_.Refuse(offset, expected, found);
    }
    bool RefuseEnd() const { return Refuse(end_, L"more of the JPEG-LS stream's header", L"the end of the stream"); }
    bool RefuseSize(const SSegment& segment) const {
        return Refuse(segment.offset, L"a JPEG-LS segment of the size that its kind has", L"another size");
    }
    static CString Marker(u8 marker) { return CString::FromFormat(L"marker 0x%02X", int{marker}); }
    static CString Number(int value) { return CString::FromFormat(L"%d", value); }

    bool ReadMarker(u8& marker) {
        u8 prefix = 0;
        if (!rest_.Read(prefix)) return RefuseEnd();
        if (prefix != 0xFF) return Refuse(Here() - 1, L"a JPEG-LS marker", CString::FromFormat(L"0x%02X", int{prefix}));
        do {  // any number of 0xFF may stand ahead of a marker
            if (!rest_.Read(marker)) return RefuseEnd();
        } while (marker == 0xFF);
        return true;
    }

    bool ReadSegment(SSegment& segment) {
        u16 size = 0;
        if (!rest_.ReadBig(size)) return RefuseEnd();
        if (size < 2) return Refuse(segment.offset, L"a segment of 2 bytes or more", Number(size));
        const u8* content = rest_.Take(size - 2u);
        if (!content) return RefuseEnd();
        segment.content = {content, size - 2u};
        return true;
    }

    bool CheckSegment(u8 marker, SSegment& segment) {
        if (marker == kStartOfFrame) return CheckFrameSegment(segment);
        if (marker == kCodingParameters) return CheckParameters(segment);
        if (marker == kRestartInterval) {
            const u64 size = segment.content.Remaining();
            return (size >= 2 && size <= 4) || RefuseSize(segment);
        }
        if (marker == kComment) return true;
        if (marker >= kApplication0 && marker <= kApplication15 && marker != kApplication8) return true;
        // The eighth application segment is where colour transforms stand.
        return Refuse(segment.offset - 2, L"a segment of a lossless picture with one component", Marker(marker));
    }

    bool CheckFrameSegment(SSegment& segment) {
        u8 bits = 0, components = 0, id = 0, sampling = 0, table = 0;
        u16 height = 0, width = 0;
        CByteCursor& content = segment.content;
        if (bits_) return Refuse(segment.offset - 2, L"one frame header in the JPEG-LS stream", L"a second one");
        if (!content.Read(bits) || !content.ReadBig(height) || !content.ReadBig(width) || !content.Read(components)) {
            return RefuseSize(segment);
        }
        if (bits < 9 || bits > 16) return Refuse(segment.offset + 2, L"9 to 16 bits per pixel", Number(bits));
        if (height != height_ || width != width_ || !width || !height) {
            return Refuse(segment.offset + 3, Picture(width_, height_), Picture(width, height));
        }
        if (components != 1) return Refuse(segment.offset + 7, L"one component", Number(components));
        if (!content.Read(id) || !content.Read(sampling) || !content.Read(table) || content.Remaining()) {
            return RefuseSize(segment);
        }
        if (sampling != 0x11) {
            return Refuse(segment.offset + 9, L"a component without subsampling (17)", Number(sampling));
        }
        bits_ = bits;
        return true;
    }
    static CString Picture(u16 width, u16 height) {
        return CString::FromFormat(L"a picture of %d x %d", int{width}, int{height});
    }

    bool CheckParameters(SSegment& segment) {
        u8 kind = 0;
        SCodingParameters& p = parameters_;
        if (!segment.content.Read(kind)) return RefuseSize(segment);
        if (kind != 1) return Refuse(segment.offset + 2, L"coding parameters (1)", Number(kind));
        if (parametersOffset_) return Refuse(segment.offset, L"coding parameters once", L"a second time");
        parametersOffset_ = segment.offset;
        const bool whole = segment.content.ReadBig(p.maxValue) && segment.content.ReadBig(p.t1) &&
                           segment.content.ReadBig(p.t2) && segment.content.ReadBig(p.t3) &&
                           segment.content.ReadBig(p.reset) && !segment.content.Remaining();
        return whole || RefuseSize(segment);
    }

    /// Zeros stand for the defaults.
    bool HasDefaultParameters() const {
        const auto fits = [](u16 value, u16 standard) { return value == 0 || value == standard; };
        const SCodingParameters standard = SCodingParameters::DefaultFor(bits_);
        return fits(parameters_.maxValue, standard.maxValue) && fits(parameters_.t1, standard.t1) &&
               fits(parameters_.t2, standard.t2) && fits(parameters_.t3, standard.t3) &&
               fits(parameters_.reset, standard.reset);
    }

    bool CheckScan(SSegment& segment) {
        if (!bits_) return Refuse(segment.offset - 2, L"a JPEG-LS frame header", L"the start of the scan");
        if (!HasDefaultParameters()) {
            return Refuse(parametersOffset_ + 3, L"the default coding parameters",
                          CString::FromFormat(L"%d, %d, %d, %d, %d", int{parameters_.maxValue}, int{parameters_.t1},
                                              int{parameters_.t2}, int{parameters_.t3}, int{parameters_.reset}));
        }
        constexpr u64 kSize = 6;
        if (segment.content.Remaining() != kSize) return RefuseSize(segment);
        const u8* scan = segment.content.Take(kSize);
        if (scan[0] != 1) return Refuse(segment.offset + 2, L"one component in the scan", Number(scan[0]));
        if (scan[2] != 0) return Refuse(segment.offset + 4, L"no mapping table (0)", Number(scan[2]));
        if (scan[3] != 0) return Refuse(segment.offset + 5, L"lossless coding (0)", Number(scan[3]));
        if (scan[4] != 0) return Refuse(segment.offset + 6, L"no interleaving (0)", Number(scan[4]));
        if (scan[5] != 0) return Refuse(segment.offset + 7, L"no point transform (0)", Number(scan[5]));
        return true;
    }

    /// A scan that is cut off may keep the decoder busy for seconds, so its last two bytes tell whether it is whole.
    bool CheckEnd() const {
        const u16 mark = rest_.Remaining() < 2 ? u16{0} : LoadBig<u16>(probe_.At(end_ - 2));
        if (mark == (0xFF00 | kEndOfImage)) return true;
        const u64 at = rest_.Remaining() < 2 ? end_ : end_ - 2;
        return Refuse(at, L"the end mark of the JPEG-LS stream (0xFFD9)",
                      at == end_ ? CString(L"the end of the stream") : CString::FromFormat(L"0x%04X", u32{mark}));
    }

    const CFrameProbe& probe_;
    u64 end_;
    CByteCursor rest_;
    u16 width_, height_;
    u8 bits_ = 0;  ///< 0 until the frame header was seen
    SCodingParameters parameters_{};
    u64 parametersOffset_ = 0;  ///< 0 until they were seen
};

}  // namespace

bool CheckJpegLsStream(const CFrameProbe& probe, u64 offset, u64 size, u16 width, u16 height) {
    return CStreamCheck(probe, offset, size, width, height).Run();
}

void DecodeJpegLs(void* dest, u64 destSize, const void* stream, u64 size) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    static_cast<void>(JpegLsDecode(dest, destSize, stream, size, nullptr, nullptr));
#pragma GCC diagnostic pop
}

}  // namespace ovix::reduce
