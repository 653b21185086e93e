#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "bench/support/data.h"
#include "core/file_system.h"
#include "reduce/files/acquisition_file.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/filters/frame_types.h"
#include "reduce/objects/source_info_reduce_object.h"

/// Recording and reading frames, beside writing and reading as many bytes through the same files.
namespace ovix::bench {

namespace {

constexpr GUID kType = reduce::frame_types::kK410GigE;
constexpr u32 kTail = 128 + 2428;
/// After so many frames a file begins anew, so that it stays in the system's cache.
constexpr u32 kFrames = 64;

/// Pixels, and behind them what the decoder asks for: a container with two entries and the camera's record.
std::vector<u8> MakeFrame(const SRun& run) {
    const std::vector<u16> counts = SceneCounts(run, 0);
    std::vector<u8> frame(2 * run.Pixels() + kTail);
    std::memcpy(frame.data(), counts.data(), 2 * run.Pixels());
    u8* tail = frame.data() + 2 * run.Pixels();
    StoreLittle(tail, u32{0x004D4B4D});
    StoreLittle(tail + 64, u16{32});
    StoreLittle(tail + 76, u32{128});
    StoreLittle(tail + 80, u32{2428});
    StoreLittle(tail + 96, u16{1});
    StoreLittle(tail + 128, u16{2});
    return frame;
}

/// A file of its own in the folder for temporary ones, gone from there as soon as it is open.
class CTemporary {
  public:
    CTemporary()
        : path_((std::filesystem::temp_directory_path() / ("ovix_bench_" + std::to_string(::getpid()))).string() +
                std::to_string(number_++)) {
        const CString name(path_.c_str());
        FileSystem->Open(name, IFileSystem::CreateForWriting);
        file = FileSystem->Open(name, IFileSystem::OpenForUpdate);
        std::filesystem::remove(path_);
    }

    TSharedPtr<IFile> file;

  private:
    std::string path_;
    static inline int number_ = 0;
};

struct SData {
    explicit SData(const SRun& run)
        : width(run.width), height(run.height), frame(MakeFrame(run)), stored(frame.size()) {
        reduce::CReduceObjectArray objects;
        const auto info = objects.GetSourceInfo(true);
        info->pixelType = kType;
        info->width = info->frameWidth = info->packetWidth = width;
        info->height = info->frameHeight = info->packetHeight = height;
        reduce::SPixelsHeader header;
        reduce::InitPixelsHeader(header, info, false);
        header.frameSize = header.frameSize2 = static_cast<u32>(frame.size());
        reduce::StartKRTFile(recording.file, objects, header);
        framesAt = recording.file->GetPosition();
    }

    u32 Size() const { return static_cast<u32>(frame.size()); }
    void GoOn(IFile& file, u64 start) {
        if (file.GetPosition() >= start + u64{kFrames} * frame.size())
            file.Seek(static_cast<i64>(start), IFile::FromStart);
    }
    void Record() {
        GoOn(*recording.file, framesAt);
        filter->StoreFrame(frame.data(), Size(), kType, width, height, 1, 0, stored.data(), Size());
        reduce::CheckFrame(L"K410", stored.data(), kType, width, height, Size());
        filter->CountPresets(stored.data(), Size(), kType, width, height, 0, counts);
        recording.file->WriteBytes(stored.data(), Size());
    }
    void Write() {
        GoOn(*plain.file, 0);
        plain.file->WriteBytes(frame.data(), Size());
    }
    void ReadFrame() {
        GoOn(*recording.file, framesAt);
        ReadNext();
    }
    void ReadNext() {
        recording.file->ReadBytes(stored.data(), Size());
        reduce::CheckFrame(L"K410", stored.data(), kType, width, height, Size());
        u8 preset = 0;
        CDateTime time;
        filter->ParseBasicInfo(stored.data(), kType, width, height, Size(), preset, counter, time);
    }
    void ReadPlain() {
        GoOn(*plain.file, 0);
        plain.file->ReadBytes(stored.data(), Size());
    }
    void FillBoth() {
        for (u32 i = 0; i < kFrames; ++i) {
            Record();
            Write();
        }
        recording.file->Seek(static_cast<i64>(framesAt), IFile::FromStart);
        plain.file->SeekToBegin();
    }

    u16 width, height;
    std::vector<u8> frame, stored;
    u32 counts[256] = {};
    u64 counter = 0;
    TSharedPtr<reduce::IFilter> filter = reduce::filterFactory()->CreateForPixelType(kType);
    CTemporary recording, plain;
    u64 framesAt = 0;
};

const CKernelEntry kRecord({
    .name = "Record a K410 frame (plain write)",
    .bytesPerPixel = 2,
    .wanted = 0.7,
    .make =
        [](const SRun& run) {
            const auto data = std::make_shared<SData>(run);
            SJob job;
            job.run = [=](u32) { data->Record(); };
            job.plain = [=](u32) { data->Write(); };
            job.prove = [=]() -> std::string {
                std::vector<u8> back(data->frame.size());
                data->recording.file->Seek(static_cast<i64>(data->framesAt), IFile::FromStart);
                if (!data->recording.file->ReadBytes(back.data(), data->Size())) return "the frame is not there";
                return data->counts[0] == 1 ? FirstDifference(back, data->frame) : "the frame was not counted";
            };
            return job;
        },
});

const CKernelEntry kRead({
    .name = "Read a K410 frame (plain read)",
    .bytesPerPixel = 2,
    .wanted = 0.7,
    .make =
        [](const SRun& run) {
            const auto data = std::make_shared<SData>(run);
            data->FillBoth();
            SJob job;
            job.run = [=](u32) { data->ReadFrame(); };
            job.plain = [=](u32) { data->ReadPlain(); };
            job.prove = [=] { return FirstDifference(data->stored, data->frame); };
            return job;
        },
});

/// Times and counters of a long recording of small frames: a scan reads each frame and asks for its basic info.
const CKernelEntry kScan({
    .name = "Scan 10,000 frames (plain read)",
    .bytesPerPixel = 2,
    .wanted = 0.7,
    .make =
        [](const SRun&) {
            constexpr u32 kScanned = 10'000;
            const auto data = std::make_shared<SData>(SRun{32, 24});
            for (u32 i = 0; i < kScanned; ++i) {
                data->recording.file->WriteBytes(data->frame.data(), data->Size());
                data->plain.file->WriteBytes(data->frame.data(), data->Size());
            }
            SJob job;
            job.run = [=](u32) {
                data->recording.file->Seek(static_cast<i64>(data->framesAt), IFile::FromStart);
                for (u32 i = 0; i < kScanned; ++i) data->ReadNext();
            };
            job.plain = [=](u32) {
                data->plain.file->SeekToBegin();
                for (u32 i = 0; i < kScanned; ++i) data->plain.file->ReadBytes(data->stored.data(), data->Size());
            };
            job.prove = [=] { return FirstDifference(data->stored, data->frame); };
            return job;
        },
    .times = 20,
});

}  // namespace

}  // namespace ovix::bench
