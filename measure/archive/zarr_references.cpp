#include "measure/archive/zarr_references.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <limits>
#include <mutex>
#include <thread>

#include "measure/archive/reference_text.h"
#include "measure/frame/frame_index.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr i64 kNoTime = std::numeric_limits<i64>::min();

/// What one file says.
struct SFileFacts {
    std::string path;
    SFrameFormat format;
    SPixelPlace pixels;
    std::vector<u64> offsets;
    std::vector<i64> ticks;
    std::vector<i16> presets;
    std::vector<SFinding> findings;
    u64 end = 0;  ///< behind the last frame

    bool Timed() const { return std::ranges::find(ticks, kNoTime) == ticks.end(); }
};

CError Misfit(const std::string& file, std::string expected, std::string found) {
    return CError(
        {.id = EError::WrongGeometry, .file = file, .expected = std::move(expected), .found = std::move(found)});
}

SFileFacts LookAt(const std::filesystem::path& path, const SOpenOptions& options) {
    const CSource source = Open(path, options);
    const CFrameIndex index(source);
    SFileFacts facts;
    facts.path = path.string();
    facts.format = source.Format();
    if (!index.Pixels())
        throw CError({.id = EError::FrameRefused,
                      .file = facts.path,
                      .problem = "pixels of " + facts.format.pixelTypeName +
                                 " are compressed, turned, packed, masked or colours",
                      .expected = "plain counts"});
    facts.pixels = *index.Pixels();
    for (u64 number = 0; number < source.Count(); ++number) {
        const SExtent frame = index.Frame(number);
        const SFrameFacts said = index.Facts(number);
        facts.offsets.push_back(frame.offset);
        facts.ticks.push_back(said.time ? said.time->time_since_epoch().count() : kNoTime);
        facts.presets.push_back(said.namesPreset ? said.preset : i16{-1});
        facts.end = frame.offset + frame.size;
    }
    facts.findings = source.Findings();
    return facts;
}

/// Looks at all files side by side; the error of the first that would not do comes out.
class CFilesInParallel {
  public:
    CFilesInParallel(std::span<const std::filesystem::path> files, const SOpenOptions& options)
        : files_(files), options_(options), found_(files.size()) {}

    std::vector<SFileFacts> Run(const SReferenceOptions& how) {
        const unsigned wanted = how.threads ? how.threads : std::max(1u, std::thread::hardware_concurrency());
        {
            std::vector<std::jthread> workers;
            for (u64 i = 0; i < std::min<u64>(wanted, files_.size()); ++i) workers.emplace_back([this] { Work(); });
            try {
                Watch(how);
            } catch (...) {
                next_ = files_.size();
                throw;
            }
        }
        if (error_) std::rethrow_exception(error_);
        return std::move(found_);
    }

  private:
    void Work() {
        for (u64 i = next_++; i < files_.size(); i = next_++) {
            try {
                found_[i] = LookAt(files_[i], options_);
            } catch (...) {
                next_ = files_.size();
                const std::lock_guard lock(mutex_);
                if (i < failed_) error_ = std::current_exception();
                failed_ = std::min(failed_, i);
            }
            const std::lock_guard lock(mutex_);
            ++done_;
            changed_.notify_one();
        }
    }
    void Watch(const SReferenceOptions& how) {
        std::unique_lock lock(mutex_);
        while (done_ < files_.size() && !error_) {
            changed_.wait_for(lock, std::chrono::milliseconds(20));
            const u64 done = done_;
            lock.unlock();
            if (how.stop.stop_requested())
                throw CError({.id = EError::Interrupted, .problem = "the indexing was ended on request"});
            if (how.progress) how.progress(done, files_.size());
            lock.lock();
        }
    }

    std::span<const std::filesystem::path> files_;
    const SOpenOptions& options_;
    std::vector<SFileFacts> found_;
    std::atomic<u64> next_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    u64 done_ = 0;
    u64 failed_ = std::numeric_limits<u64>::max();
    std::exception_ptr error_;
};

void RequireAlike(const std::vector<SFileFacts>& files) {
    const SFileFacts& first = files.front();
    const auto words = [](const SFileFacts& file) {
        return Say(file.format.width, " x ", file.format.height, " pixels of ", file.format.pixelTypeName, ", ",
                   file.pixels.offset, " bytes into the frame");
    };
    for (const SFileFacts& file : files) {
        const bool alike = file.format.width == first.format.width && file.format.height == first.format.height &&
                           file.format.pixelType == first.format.pixelType && file.pixels == first.pixels;
        if (!alike) throw Misfit(file.path, words(first) + ", as in " + first.path, words(file));
    }
}

/// Bytes from one frame to the next, which must be the same everywhere, also behind the last frame of each file.
u64 StepOf(const std::vector<SFileFacts>& files, u64 together) {
    const SFileFacts& first = files.front();
    const u64 step = first.offsets.size() > 1 ? first.offsets[1] - first.offsets[0] : first.end - first.offsets[0];
    for (const SFileFacts& file : files) {
        if (file.offsets.size() % together)
            throw Misfit(file.path, Say("a multiple of ", together, " frames"), Say(file.offsets.size()));
        for (std::size_t i = 0; i < file.offsets.size(); ++i) {
            const u64 next = i + 1 < file.offsets.size() ? file.offsets[i + 1] : file.end;
            if (next - file.offsets[i] != step)
                throw Misfit(file.path, Say("a frame every ", step, " bytes"),
                             Say(next - file.offsets[i], " at frame ", i));
        }
    }
    return step;
}

void AddPixels(CReferenceText& text, const std::vector<SFileFacts>& files, const SReferenceOptions& how) {
    const SFileFacts& first = files.front();
    const u64 together = how.framesPerReference;
    const u64 bytes = u64{2} * first.format.PixelCount();
    const bool structured = together > 1;
    const u64 step = structured ? StepOf(files, together) : 0;
    u64 total = 0;
    for (const SFileFacts& file : files) total += file.offsets.size();
    if (structured)
        text.AddFrames(total, together, first.format, first.pixels, step);
    else
        text.AddCounts(total, first.format, first.pixels);
    u64 number = 0;
    for (const SFileFacts& file : files) {
        const std::string url = how.baseUrl.empty()
                                    ? std::filesystem::absolute(file.path).lexically_normal().string()
                                    : how.baseUrl + '/' + std::filesystem::path(file.path).filename().string();
        for (std::size_t i = 0; i < file.offsets.size(); i += together, ++number) {
            if (structured)
                text.AddReference(Say("frames/", number), url, file.offsets[i], together * step);
            else
                text.AddReference(Say("counts/", number, ".0.0"), url, file.offsets[i] + first.pixels.offset, bytes);
        }
    }
}

void AddCoordinates(CReferenceText& text, const std::vector<SFileFacts>& files, bool timed) {
    constexpr i64 kNanoseconds = 100;
    std::vector<i64> numbers, times;
    std::vector<i16> presets;
    for (const SFileFacts& file : files) {
        for (const i64 ticks : file.ticks) {
            numbers.push_back(static_cast<i64>(numbers.size()));
            times.push_back(timed ? ticks * kNanoseconds : numbers.back());
        }
        presets.insert(presets.end(), file.presets.begin(), file.presets.end());
    }
    text.AddTime(times, timed);
    text.AddColumn<i64>("frame", numbers, "number of the frame");
    text.AddColumn<i16>("preset", presets, "preset of the camera; -1 where the frame names none");
}

}  // namespace

std::string ZarrReferences(std::span<const std::filesystem::path> files, const SOpenOptions& options,
                           const SReferenceOptions& how) {
    if (files.empty() || !how.framesPerReference)
        throw CError({.id = EError::WrongArgument, .expected = "a file at least, and a frame a reference"});
    std::vector<SFileFacts> found = CFilesInParallel(files, options).Run(how);
    RequireAlike(found);
    for (const SFileFacts& file : found) {
        for (const SFinding& finding : file.findings) {
            if (how.report) how.report(file.path, finding);
        }
    }
    constexpr i64 kMostTicks = std::numeric_limits<i64>::max() / 100;  // that are nanoseconds, too
    const bool timed = std::ranges::all_of(found, [](const SFileFacts& file) {
        return file.Timed() && std::ranges::all_of(file.ticks, [](i64 ticks) { return std::abs(ticks) < kMostTicks; });
    });
    if (timed) std::ranges::stable_sort(found, {}, [](const SFileFacts& file) { return file.ticks.front(); });
    CReferenceText text;
    AddPixels(text, found, how);
    AddCoordinates(text, found, timed);
    return std::move(text).Finish();
}

}  // namespace ovix::measure
