#include "capi/guard.h"

using namespace ovix::capi;
using namespace ovix::measure;
using ovix::u32;
using ovix::u8;

/// A recording that begins with its first frame, whose metadata it takes.
struct ovix_recorder {
    CRecordingWriter Begin(const SRawFrame& first) const {
        SRawFrame own = first;  // reading may repair it where it stands
        ovix::reduce::CReduceObjectArray objects;
        CFrameReader(source).Read(own, objects);
        GatherMetadata(source, std::span(&first, 1), objects);
        AddToSource(objects, given, source.Format());
        return {path, objects, source.Format(), frameSize ? frameSize : static_cast<u32>(first.bytes.size()), how};
    }
    void RequireOpen() const {
        if (finished) throw WrongArgument("the recording is finished");
    }

    std::string path;
    CSource source;
    u32 frameSize = 0;
    SMeasureOptions given;
    SWriteOptions how;
    std::optional<CRecordingWriter> writer = {};
    bool finished = false;
};

int ovix_record(const char* path, const ovix_options* options, uint32_t flags, ovix_recorder** recorder) {
    return Guard([&]() -> int {
        Require(recorder, "recorder");
        constexpr std::uint32_t kFlags = OVIX_OVERWRITE | OVIX_KEEP_PART | OVIX_CHECKSUMS | OVIX_UNPACKED;
        if (flags & ~kFlags) throw WrongArgument("there is no such flag");
        SAsked asked(&Require(options, "options"));
        CSource source = PushedFrames("stream", asked.open);
        const SWriteOptions how{.unpacked = (flags & OVIX_UNPACKED) != 0,
                                .overwrite = (flags & OVIX_OVERWRITE) != 0,
                                .keepPart = (flags & OVIX_KEEP_PART) != 0,
                                .checksums = (flags & OVIX_CHECKSUMS) != 0};
        auto made = std::unique_ptr<ovix_recorder>(new ovix_recorder{.path = &Require(path, "path"),
                                                                     .source = std::move(source),
                                                                     .frameSize = asked.open.frameSize,
                                                                     .given = std::move(asked.measure),
                                                                     .how = how});
        *recorder = made.release();
        return OVIX_OK;
    });
}

int ovix_record_frame(ovix_recorder* recorder, const void* bytes, size_t size) {
    return Guard([&]() -> int {
        Require(recorder, "recorder").RequireOpen();
        const auto* first = &Require(static_cast<const u8*>(bytes), "bytes");
        if (!recorder->writer) recorder->writer.emplace(recorder->Begin({.bytes = {first, first + size}}));
        recorder->writer->Add({first, size});
        return OVIX_OK;
    });
}

int ovix_record_flush(ovix_recorder* recorder) {
    return Guard([&]() -> int {
        Require(recorder, "recorder").RequireOpen();
        if (recorder->writer) recorder->writer->Flush();
        return OVIX_OK;
    });
}

int ovix_record_finish(ovix_recorder* recorder) {
    return Guard([&]() -> int {
        Require(recorder, "recorder").RequireOpen();
        if (!recorder->writer || !recorder->writer->Count())
            throw CError({.id = EError::NoFrames, .file = recorder->path, .problem = "a recording without frames"});
        recorder->finished = true;
        recorder->writer->Finish();
        recorder->writer.reset();
        return OVIX_OK;
    });
}

void ovix_close_recorder(ovix_recorder* recorder) { delete recorder; }
