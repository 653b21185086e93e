#include "apps/ovix/cli/source_arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/ovix/cli/choice.h"
#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/values.h"
#include "apps/ovix/input/pixel_type_names.h"
#include "apps/ovix/input/raw_dump_source.h"
#include "apps/ovix/recording/recording_source.h"

namespace ovix::app {

void CSourceArguments::Add(CLI::App& verb) {
    verb.add_option("FILE", file_, "a recording or a dump of raw frames; - is the standard input")
        ->required()
        ->type_name("");
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
        verb.add_option(name, value, help)->type_name(type)->group("Input");
    };
    add("--pixel-type", pixelType_, "NAME",
        "of a dump: pixel type of the frames, a name that \"ovix formats\" lists or a GUID");
    add("--size", size_, "WxH", "of a dump: size of the image in pixels");
    add("--frame-size", frameSize_, "BYTES",
        "of a dump: bytes of each frame with all that stands behind its pixels (else found)");
    add("--frames", frames_, "LIST", "frames, from 0, ends included, -1 the last: 0-99,200-400x10,-1 (else all)");
    add("--on-error", onError_, "stop|skip", "what to do at a frame that would not do (else stop)");
}

std::shared_ptr<const CInputFile> CSourceArguments::OpenFile() const { return std::make_shared<CInputFile>(file_); }

std::unique_ptr<IFrameSource> CSourceArguments::Open(std::shared_ptr<const CInputFile> file) const {
    const bool tellsNothing = pixelType_.empty() && size_.empty() && frameSize_.empty();
    if (CRecordingFile::Recognises(*file)) {
        if (!tellsNothing)
            throw UsageFault(file->Name() +
                             " is a recording, which says by itself what --pixel-type, --size and --frame-size say");
        auto source = std::make_unique<CRecordingSource>(CRecordingFile(std::move(file)));
        if (const u64 cut = source->File().CutBytes())
            Say(fmt::format("{}: frame {} is cut after {} of {} bytes and not read", source->Name(), source->Count(),
                            cut, source->File().FrameStep()));
        return source;
    }
    if (pixelType_.empty() || size_.empty())
        throw CFault({.exit = tellsNothing ? ExitFile : ExitUsage,
                      .file = file->Name(),
                      .problem = "is of no known format; a dump of raw frames needs --pixel-type and --size"});
    const auto [width, height] = ParseSize("--size", size_);
    u32 frameSize = 0;
    if (!frameSize_.empty()) {
        const auto bytes = ParseNumber<u32>(frameSize_);
        if (!bytes || !*bytes)
            throw UsageFault("--frame-size: expected a number of bytes, found \"" + frameSize_ + "\"");
        frameSize = *bytes;
    }
    return std::make_unique<CRawDumpSource>(std::move(file), FindFormat(pixelType_, width, height), frameSize);
}

CFrameLoop CSourceArguments::Frames(const IFrameSource& source) const {
    const auto onError =
        ParseChoice<EOnError>("--on-error", onError_, {{"stop", EOnError::Stop}, {"skip", EOnError::Skip}});
    const CFrameSelection selection = frames_.empty() ? CFrameSelection() : CFrameSelection(frames_);
    return {selection.Of(source.Count()), onError};
}

}  // namespace ovix::app
