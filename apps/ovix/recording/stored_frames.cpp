#include "apps/ovix/recording/stored_frames.h"

#include "apps/ovix/fault.h"

namespace ovix::app {

CStoredFrames::CStoredFrames(const CRecordingFile& file, bool fixedPreset)
    : file_(file),
      format_{.filter = reduce::filterFactory()->GetPixelTypeHandler(file.Pixels().pixelType).GetUTF8(),
              .pixelType = file.Pixels().pixelType,
              .pixelTypeName = {},
              .width = file.Pixels().width,
              .height = file.Pixels().height},
      filter_(reduce::filterFactory()->CreateForPixelType(format_.pixelType)),
      counts_(fixedPreset) {}

std::span<const u8> CStoredFrames::Read(u64 frame) {
    bytes_.resize(file_.FrameStep());
    file_.Input().ReadAt(file_.FrameAt(frame), bytes_);
    const std::span<const u8> pixels(bytes_.data(), file_.Pixels().frameSize);
    if (!filter_) {
        counts_.AddUnseen();
        return bytes_;
    }
    Check(pixels);
    scratch_.assign(pixels.begin(), pixels.end());  // decoders may change what they read
    counts_.Add(*filter_, format_, scratch_);
    return bytes_;
}

void CStoredFrames::Check(std::span<const u8> pixels) const {
    reduce::SFrameFault fault;
    if (reduce::CheckFrame(CString(format_.filter.c_str()), pixels.data(), format_.pixelType, format_.width,
                           format_.height, static_cast<u32>(pixels.size()), &fault))
        return;
    throw CFault({.offset = fault.offset, .expected = fault.expected.GetUTF8(), .found = fault.found.GetUTF8()});
}

}  // namespace ovix::app
