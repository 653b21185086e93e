#include "apps/ovix/recording/recording_source.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/input/pixel_type_names.h"
#include "apps/ovix/pipeline/guarded_decode.h"

namespace ovix::app {

using Parameters = reduce::CObjectParametersReduceObject;

namespace {

constexpr const char* kHint = "\"ovix verify\" tells more, \"ovix repair\" may bring it back";

constexpr float Parameters::*kSceneValues[] = {
    &Parameters::emissivity,      &Parameters::distance,         &Parameters::reflectedTemp,
    &Parameters::atmosphereTemp,  &Parameters::extOpticsTemp,    &Parameters::extOpticsTrans,
    &Parameters::atmosphereTrans, &Parameters::relativeHumidity,
};

SFrameFormat FormatOf(const CRecordingFile& file) {
    if (file.Break()) {
        SFault fault = *file.Break();
        fault.problem += (fault.problem.empty() ? "" : "; ") + std::string(kHint);
        throw CFault(std::move(fault));
    }
    if (!file.HasPixels()) throw CFault({.file = file.Name(), .problem = "holds no frames, only blocks"});
    const reduce::SPixelsHeader& pixels = file.Pixels();
    const CString decoder = reduce::filterFactory()->GetPixelTypeHandler(pixels.pixelType);
    if (decoder.IsEmpty())
        throw CFault(
            {.file = file.Name(), .problem = "no decoder takes frames of \"" + PixelTypeName(pixels.pixelType) + "\""});
    return {.filter = decoder.GetUTF8(),
            .pixelType = pixels.pixelType,
            .pixelTypeName = PixelTypeName(pixels.pixelType),
            .width = pixels.width,
            .height = pixels.height};
}

}  // namespace

CRecordingSource::CRecordingSource(CRecordingFile file) : file_(std::move(file)), format_(FormatOf(file_)) {
    if (!Count())
        throw CFault({.file = Name(),
                      .offset = file_.FramesAt(),
                      .expected = fmt::format("frames of {} bytes", file_.FrameStep()),
                      .found = fmt::format("{} bytes", file_.CutBytes())});
    reduce::LoadInfoFile(file_.Open(), objects_, 0);
    RequireGeometry();
    FindOverruled();
}

void CRecordingSource::RequireGeometry() {
    const u64 pixels = format_.PixelCount();
    const SPixelForm form = PixelFormOf(format_);
    const bool plain = form.pixels && !form.compressed;
    if (!pixels || !file_.Pixels().frameSize || (plain && 2 * pixels > file_.Pixels().frameSize))
        throw CFault({.file = Name(),
                      .offset = file_.PixelsBlock().dataOffset,
                      .expected = fmt::format("frames of {} x {} pixels", format_.width, format_.height),
                      .found = fmt::format("{} bytes for each frame", file_.Pixels().frameSize)});
    const auto source = objects_.GetSourceInfo(false);
    if (!source || (source->width == format_.width && source->height == format_.height)) return;
    throw CFault({.file = Name(),
                  .offset = file_.PixelsBlock().dataOffset,
                  .problem = kHint,
                  .expected = fmt::format("frames of {} x {} as the source info says", source->width, source->height),
                  .found = fmt::format("{} x {}", format_.width, format_.height)});
}

void CRecordingSource::FindOverruled() {
    constexpr u64 kMostTried = 16;
    const auto recorded = objects_.GetObjectParameters(false);
    if (!recorded) return;
    CGuardedDecode decode(format_);
    std::vector<u8> frame;
    for (u64 i = 0; i < std::min(kMostTried, file_.WholeFrames()); ++i) {
        reduce::CReduceObjectArray own;
        try {
            Read(i, frame);
            decode.DecodeMetadata(frame, own);
        } catch (const CFault&) {
            continue;  // whoever wants that frame will hear of it
        }
        const auto told = own.GetObjectParameters(false);
        if (!told || !told->fromSource) return;
        for (const SceneValue value : kSceneValues) {
            if ((*recorded).*value != (*told).*value) overruled_.push_back(value);
        }
        return;
    }
}

void CRecordingSource::Read(u64 index, std::vector<u8>& frame) {
    frame.resize(file_.Pixels().frameSize);
    if (file_.Input().ReadAt(file_.FrameAt(index), frame) < frame.size())
        throw CFault({.file = Name(), .frame = index, .problem = "the file has become shorter"});
}

void CRecordingSource::Describe(reduce::CReduceObjectArray& objects) const {
    objects_.Duplicate(objects);
    if (objects.GetSourceInfo(false)) return;
    const auto info = objects.GetSourceInfo(true);
    info->pixelType = format_.pixelType;
    info->width = info->frameWidth = info->packetWidth = format_.width;
    info->height = info->frameHeight = info->packetHeight = format_.height;
    info->baseUnit = PixelFormOf(format_).unit;
}

void CRecordingSource::Overrule(reduce::CReduceObjectArray& objects) const {
    if (overruled_.empty()) return;
    const auto recorded = objects_.GetObjectParameters(false);
    const auto scene = objects.GetObjectParameters(true);
    for (const SceneValue value : overruled_) (*scene).*value = (*recorded).*value;
}

}  // namespace ovix::app
