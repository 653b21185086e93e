#include <algorithm>
#include <utility>

#include "measure/sources/array_file.h"
#include "measure/sources/guess_format.h"
#include "measure/sources/numbered_source.h"
#include "measure/sources/stream_source.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// Relatives of a camera write the same bytes: what they may be stands in the error, best first.
CError Ambiguous(const std::string& file, const std::vector<SGuess>& guesses) {
    constexpr std::size_t kMostNamed = 12;
    std::string names;
    for (std::size_t i = 0; i < std::min(guesses.size(), kMostNamed); ++i) {
        const SFrameFormat& format = guesses[i].format;
        names += Say(i ? ", \"" : ": \"", format.pixelTypeName, "\" ", format.width, "x", format.height);
    }
    if (guesses.size() > kMostNamed) names += " ...";
    return CError({.id = EError::UnknownFormat,
                   .file = file,
                   .expected = "bytes that speak for just one pixel type and size",
                   .found = Say(guesses.size(), " that they may be", names),
                   .advice = "say pixel type and size"});
}

/// What the bytes speak for, if that is just one thing.
SFrameFormat FormatGuessed(const std::string& file) {
    const std::vector<SGuess> guesses = GuessFormat(file);
    const auto full = [](const SGuess& guess) { return guess.Full(); };
    if (std::count_if(guesses.begin(), guesses.end(), full) == 1) return guesses.front().format;
    throw Ambiguous(file, guesses);
}

/// The same for what a stream begins with, as soon as it says so: a live one may bring no more for a while.
SFrameFormat FormatPeeked(CFeed& feed) {
    constexpr std::size_t kMostPeeked = std::size_t{64} << 20;
    std::size_t looked = 0;
    for (bool more = true;;) {
        more = more && feed.TakeWhatIsThere() && feed.Window().size() < kMostPeeked;
        const std::size_t seen = feed.Window().size();
        if (more && seen < looked + looked / 2 && feed.HasMore()) continue;  // a look at all types takes its time
        looked = seen;
        const std::vector<SGuess> guesses = GuessFormat(feed.Window());
        const auto speaks = [](const SGuess& guess) { return guess.mark && guess.sizeInHeader; };
        const auto found = std::find_if(guesses.begin(), guesses.end(), speaks);
        const auto count = std::count_if(guesses.begin(), guesses.end(), speaks);
        if (count == 1) return found->format;
        if (count > 1 || !more) throw Ambiguous(feed.File().Name(), guesses);
    }
}

/// Plain counts have no decoder; their name says in which order the bytes are.
SFrameFormat FormatAsked(const SOpenOptions& options, const std::string& file) {
    if (options.pixelType.empty())
        throw CError({.id = EError::UnknownFormat,
                      .file = file,
                      .problem = "is no recording",
                      .advice = "raw frames need a pixel type and a size"});
    if (options.pixelType == "auto") return FormatGuessed(file);
    if (!options.width || !options.height)
        throw CError({.id = EError::WrongArgument, .file = file, .problem = "raw frames need a size"});
    if (options.pixelType == "counts-be")
        return {.filter = {},
                .pixelType = rootIRType,
                .pixelTypeName = options.pixelType,
                .width = options.width,
                .height = options.height};
    return FindFormat(options.pixelType, options.width, options.height);
}

/// The caller has the frames: there is nothing to be read.
class CPushedSource final : public CSource::IBody {
  public:
    CPushedSource(std::string name, SFrameFormat format)
        : IBody(std::make_shared<CInputFile>(nullptr, std::move(name)), KindOf(format), format) {
        SetObjects({});
    }

    bool IsNumbered() const override { return false; }
    std::optional<u64> Count() const override { return {}; }
    u64 FrameSize() const override { return 0; }
    void Read(u64 number, SRawFrame&) const override { Find(number); }
    SExtent Find(u64) const override {
        throw CError({.id = EError::NotNumbered, .file = File().Name(), .problem = "its frames are the caller's"});
    }
    bool Next(SRawFrame&, const std::stop_token&) override { return false; }
};

/// A picture or an array that comes through a pipe: it is read at any place, so all of it is kept.
CSource OpenArrayOf(CFeed& feed, const SOpenOptions& options) {
    constexpr u64 kMost = u64{256} << 20;
    const std::string& name = feed.File().Name();
    if (!options.pixelType.empty() || options.width || options.height || options.frameSize)
        throw CError({.id = EError::WrongArgument,
                      .file = name,
                      .problem = "is an array or a picture, which says by itself what it holds"});
    if (feed.Fill(kMost + 1))
        throw CError({.id = EError::NotNumbered,
                      .file = name,
                      .problem = "an array or a picture is read at any place, not as it comes through a pipe",
                      .expected = Say("at most ", kMost, " bytes, which memory keeps"),
                      .found = "more"});
    auto file = std::make_shared<CInputFile>(feed.Window(), name);
    SArrayFile array = *FindArray(*file);
    return CSource(CNumberedSource::OfArray(std::move(file), std::move(array)));
}

CSource OpenStream(std::shared_ptr<const CInputFile> file, const SOpenOptions& options) {
    const std::string name = file->Name();
    CFeed feed(file, file->IsRegular() ? std::optional(options.patience) : std::nullopt);
    feed.StopOn(options.stop);
    feed.Fill(CRecordingFile::MagicBytes);
    if (CRecordingFile::Recognises(feed.Window())) return CSource(CStreamSource::OfRecording(std::move(feed), options));
    if (!file->IsRegular()) {
        const std::span<const u8> start = feed.Window();
        if (IsArrayFile(CBytesInMemory(name, {start.begin(), start.end()}))) return OpenArrayOf(feed, options);
    }
    SFrameFormat format = options.pixelType == "auto" ? FormatPeeked(feed) : FormatAsked(options, name);
    return CSource(CStreamSource::OfDump(std::move(feed), std::move(format), options));
}

CSource OpenFile(std::shared_ptr<const CInputFile> file, const SOpenOptions& options) {
    if (!file->IsRegular() || options.follow) return OpenStream(std::move(file), options);
    if (CRecordingFile::Recognises(file->Get(0, CRecordingFile::MagicBytes)))
        return CSource(CNumberedSource::OfRecording(std::move(file), options));
    if (options.pixelType.empty()) {
        if (auto array = FindArray(*file)) return CSource(CNumberedSource::OfArray(std::move(file), std::move(*array)));
    }
    SFrameFormat format = FormatAsked(options, file->Name());
    return CSource(CNumberedSource::OfDump(std::move(file), std::move(format), options));
}

}  // namespace

CSource Open(const std::filesystem::path& path, const SOpenOptions& options) {
    return OpenFile(std::make_shared<CInputFile>(path, !options.stop.stop_possible()), options);
}

bool SaysItsFormat(const std::filesystem::path& path) {
    try {
        if (!std::filesystem::is_regular_file(path)) return false;  // a named pipe would be waited for
        const CInputFile file(path);
        return CRecordingFile::Recognises(file.Get(0, CRecordingFile::MagicBytes)) || IsArrayFile(file);
    } catch (const std::exception&) {
        return false;  // whoever opens it will hear of it
    }
}

CSource OpenDescriptor(int descriptor, std::string name, const SOpenOptions& options) {
    return OpenFile(std::make_shared<CInputFile>(descriptor, std::move(name)), options);
}

CSource PushedFrames(std::string name, const SOpenOptions& options) {
    if (options.pixelType.empty() || options.pixelType == "auto")
        throw CError({.id = EError::WrongArgument, .file = name, .problem = "frames in memory need a pixel type"});
    SFrameFormat format = FormatAsked(options, name);
    return CSource(std::make_shared<CPushedSource>(std::move(name), std::move(format)));
}

}  // namespace ovix::measure
