#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "bench/support/data.h"
#include "measure/measure.h"

/// Opening a recording of 10 GB, which is sparse but for its ends, beside opening a file and reading a page of it.
namespace ovix::bench {

namespace {

constexpr GUID kF7M0 = reduce::frame_types::kK410F7M0;

struct SLargeRecording {
    explicit SLargeRecording(const SRun& run) {
        constexpr u32 kContainer = 128, kRecord = 2428;
        std::vector<u8> frame(2 * run.Pixels() + kContainer + kRecord);
        u8* container = &frame[2 * run.Pixels()];
        StoreLittle<u32>(container, 0x004D4B4D);
        StoreLittle<u16>(container + 64, 32);
        StoreLittle<u16>(container + 64, 32);
        StoreLittle<u32>(container + 76, kContainer);
        StoreLittle<u32>(container + 80, kRecord);
        StoreLittle<u16>(container + 96, 1);
        StoreLittle<u16>(container + kContainer, 2);
        StoreLittle<u16>(container + kContainer + 2, run.width);
        StoreLittle<u16>(container + kContainer + 4, run.height);
        const u64 wanted = run.Pixels() < 10000 ? 100 : (u64{10} << 30) / frame.size();

        path = std::filesystem::temp_directory_path() / ("ovix_bench_open_" + std::to_string(::getpid()) + ".krt");
        reduce::CReduceObjectArray objects;
        const auto info = objects.GetSourceInfo(true);
        info->pixelType = kF7M0;
        info->width = info->frameWidth = run.width;
        info->height = info->frameHeight = run.height;
        measure::CRecordingWriter writer(path, objects, measure::FormatOf(kF7M0, run.width, run.height),
                                         static_cast<u32>(frame.size()), {.overwrite = true});
        writer.Add(frame);
        writer.Finish();
        // The rest is a hole; frames stand in the middle and at the end, where opening looks.
        const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        const u64 start = std::filesystem::file_size(path) - frame.size();
        for (const u64 number : {u64{1}, wanted / 2, wanted - 2, wanted - 1}) {
            if (::pwrite(file, frame.data(), frame.size(), static_cast<off_t>(start + number * frame.size())) < 0)
                break;
        }
        ::close(file);
        count = wanted;
    }
    ~SLargeRecording() { std::filesystem::remove(path); }

    void Open() { found = *measure::Open(path).Count(); }
    void OpenPlain() const {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        u8 page[4096];
        if (::pread(file, page, sizeof page, 0) != sizeof page) std::abort();
        ::close(file);
    }

    std::filesystem::path path;
    u64 count = 0;
    u64 found = 0;
};

const CKernelEntry kOpen({
    .name = "Open a recording of 10 GB (open and read a page)",
    .bytesPerPixel = 2,
    .make =
        [](const SRun& run) {
            const auto recording = std::make_shared<SLargeRecording>(run);
            SJob job;
            job.run = [=](u32) { recording->Open(); };
            job.plain = [=](u32) { recording->OpenPlain(); };
            job.prove = [=] { return recording->found == recording->count ? "" : std::string("other frames"); };
            return job;
        },
    .times = 15,
});

}  // namespace

}  // namespace ovix::bench
