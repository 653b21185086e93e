#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "bench/support/data.h"
#include "core/file_system.h"
#include "reduce/files/info_file.h"
#include "reduce/pixels/correction_objects.h"

/// Files with 256 MiB of correction tables (in a smoke run less than one): how much of them a scan reads, and loading
/// them beside reading their bytes into new memory.
namespace ovix::bench {

namespace {

/// Counts what is read of another file.
class CCountingFile final : public IFile {
  public:
    explicit CCountingFile(TSharedPtr<IFile> file) : file_(std::move(file)) {}
    u32 Write(const void*, u32) override { return 0; }
    u32 Read(void* data, u32 size) override {
        const u32 done = file_->Read(data, size);
        bytes += done;
        return done;
    }
    u64 GetPosition() override { return file_->GetPosition(); }
    bool Seek(i64 offset, int origin) override { return file_->Seek(offset, origin); }

    u64 bytes = 0;

  private:
    TSharedPtr<IFile> file_;
};

struct STablesFile {
    explicit STablesFile(const SRun& run) {
        const bool smoke = run.Pixels() < 10000;
        const u64 wanted = smoke ? 0 : u64{256} << 20;
        const STables tables(run);
        const auto object = MakeShared<reduce::CCorrectionReduceObject>();
        object->Create(run.width, run.height, 0, 7);
        std::copy(tables.gain.begin(), tables.gain.end(), object->gain.get());
        std::copy(tables.offset.begin(), tables.offset.end(), object->offset.get());
        std::copy(tables.replace.begin(), tables.replace.end(), object->map.get());
        object->valid = true;
        reduce::CReduceObjectArray array;
        do {
            array.Add(object);
            bytes += u64{11} * run.Pixels();
        } while (bytes < wanted);
        blocks = array.GetSize();

        const std::string path =
            (std::filesystem::temp_directory_path() / "ovix_bench_tables_").string() + std::to_string(::getpid());
        const CString name(path.c_str());
        reduce::SaveInfoFile(name, array, 0);
        file = FileSystem->Open(name, IFileSystem::OpenForReading);
        std::filesystem::remove(path);
        expected = tables;
    }

    void Load() {
        file->SeekToBegin();
        reduce::LoadInfoFile(file, loaded, 0);
    }
    void ReadPlain() {
        file->SeekToBegin();
        pieces.clear();  // as loading gives back what was loaded before
        for (u64 left = file->GetRemaining(); left;) {
            const u32 n = static_cast<u32>(std::min<u64>(left, bytes / blocks));
            pieces.emplace_back(new u8[n]);
            file->ReadBytes(pieces.back().get(), n);
            left -= n;
        }
    }
    u64 BytesOfAScan(u32& found) {
        const auto counting = MakeShared<CCountingFile>(file);
        file->SeekToBegin();
        reduce::InfoFileDirectory directory;
        reduce::ScanInfoFile(counting, directory, 0);
        found = directory.size();
        return counting->bytes;
    }

    TSharedPtr<IFile> file;
    u64 bytes = 0;
    u32 blocks = 0;
    std::vector<std::unique_ptr<u8[]>> pieces;  ///< as many pieces of memory as there are objects
    STables expected{SRun{}};
    reduce::CReduceObjectArray loaded;
};

std::string Differences(STablesFile& tables) {
    const auto last = tables.loaded.GetAt(tables.blocks - 1).Cast<reduce::CCorrectionReduceObject>();
    if (!last) return "an object is not there";
    const std::vector<float> gain(last->gain.get(), last->gain.get() + tables.expected.gain.size());
    const std::vector<u32> map(last->map.get(), last->map.get() + tables.expected.replace.size());
    const std::string difference = FirstDifference(gain, tables.expected.gain);
    return difference.empty() ? FirstDifference(map, tables.expected.replace) : difference;
}

const CKernelEntry kLoad({
    .name = "LoadInfoFile 256 MiB (plain read)",
    .bytesPerPixel = 2,
    .wanted = 0.5,
    .make =
        [](const SRun& run) {
            const auto tables = std::make_shared<STablesFile>(run);
            SJob job;
            job.run = [=](u32) { tables->Load(); };
            job.plain = [=](u32) { tables->ReadPlain(); };
            job.prove = [=] { return Differences(*tables); };
            return job;
        },
    .times = 15,
});

const CKernelEntry kScan({
    .name = "ScanInfoFile 256 MiB (plain read)",
    .bytesPerPixel = 2,
    .make =
        [](const SRun& run) {
            const auto tables = std::make_shared<STablesFile>(run);
            const auto found = std::make_shared<u32>();
            SJob job;
            job.run = [=](u32) { tables->BytesOfAScan(*found); };
            job.plain = [=](u32) { tables->ReadPlain(); };
            job.prove = [=]() -> std::string {
                const u64 read = tables->BytesOfAScan(*found);
                std::printf("ScanInfoFile: %u tables in %.1f MiB, %llu bytes read\n", *found,
                            static_cast<double>(tables->bytes) / (1 << 20), static_cast<unsigned long long>(read));
                const u64 headers = u64{tables->blocks + 1} * reduce::SInfoFileBlock::HeaderBytes;
                return *found == tables->blocks && read == headers ? "" : "more is read than the headers";
            };
            return job;
        },
    .times = 15,
});

}  // namespace

}  // namespace ovix::bench
