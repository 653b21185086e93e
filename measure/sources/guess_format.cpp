#include "measure/sources/guess_format.h"

#include <algorithm>
#include <optional>

#include "measure/sources/frame_layout.h"
#include "measure/sources/input_file.h"

namespace ovix::measure {

namespace {

struct SSize {
    u16 width, height;
    bool operator==(const SSize&) const = default;
};

constexpr SSize kCommonSizes[] = {{80, 60},    {160, 120},   {160, 128},  {206, 156},   {240, 180},   {256, 192},
                                  {320, 240},  {320, 256},   {336, 256},  {384, 288},   {400, 300},   {464, 348},
                                  {512, 512},  {640, 480},   {640, 512},  {720, 576},   {768, 576},   {800, 600},
                                  {1024, 768}, {1024, 1024}, {1280, 720}, {1280, 1024}, {1920, 1080}, {2048, 2048}};

/// Looks at one file as frames of one format.
class CTrial {
  public:
    CTrial(const IBytes& bytes, const SFrameFormat& format) : bytes_(bytes), format_(format), probe_(format) {}

    std::optional<SGuess> Run() {
        const std::vector<u8> first = FirstFrame();
        if (first.empty() || !probe_.Passes(first)) return {};
        const reduce::SFrameEvidence evidence = probe_.Evidence(first);
        named_ = {evidence.width, evidence.height};
        SGuess guess{.format = format_, .mark = evidence.mark == reduce::EFrameMark::Present};
        guess.sizeInHeader = evidence.width == format_.width && (!evidence.height || evidence.height == format_.height);
        guess.noRemainder = true;
        const auto layout = FindLayout(bytes_, format_, 0, [&](const SFinding& finding) {
            const bool torn = finding.id == EFinding::FrameCut || finding.id == EFinding::BytesPassedOver;
            guess.noRemainder = guess.noRemainder && !torn;
        });
        guess.frameSize = static_cast<u32>(layout->FrameSize());
        guess.counterRises = CounterRises(*layout);
        if (!guess.mark && !guess.sizeInHeader && !probe_.TellsFrames(first.size())) return {};
        return guess;
    }
    /// The size that the frames name, whatever was tried.
    SSize Named() const { return named_; }

  private:
    std::vector<u8> FirstFrame() const {
        if (!FormOf(format_).ownLength) return bytes_.Get(0, probe_.MostBytes());
        u64 size = 4;
        for (u64 wanted = 0; size != wanted && size <= bytes_.Size() && size <= probe_.MostBytes();) {
            wanted = size;
            size = COwnLengthFrames::BytesToTell(bytes_.Get(0, wanted));
            if (size < wanted) return {};
        }
        return bytes_.Get(0, size);
    }
    bool CounterRises(const IFrameLayout& layout) const {
        std::optional<u64> counters[2];
        for (u64 i = 0; i < 2; ++i) {
            const auto place = layout.Find(i);
            if (!place || place->size > CUInt32::Max) return false;
            const std::vector<u8> frame = bytes_.Get(place->offset, place->size);
            if (!probe_.Passes(frame)) return false;
            counters[i] = probe_.Carried(frame).counter;
        }
        return counters[0] && counters[1] && *counters[1] == probe_.CounterAfter(*counters[0]);
    }

    const IBytes& bytes_;
    SFrameFormat format_;
    CFrameProbe probe_;
    SSize named_ = {0, 0};
};

void TryType(const IBytes& bytes, const SFrameFormat& type, std::vector<SGuess>& guesses) {
    std::vector<SSize> sizes(std::begin(kCommonSizes), std::end(kCommonSizes));
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        SFrameFormat format = type;
        format.width = sizes[i].width;
        format.height = sizes[i].height;
        CTrial trial(bytes, format);
        try {
            if (auto guess = trial.Run()) guesses.push_back(std::move(*guess));
        } catch (const CError& error) {
            if (error.Facts().systemError) throw;  // the others say that these are no such frames
        }
        const SSize named = trial.Named();
        if (named.width && named.height && std::find(sizes.begin(), sizes.end(), named) == sizes.end())
            sizes.push_back(named);
    }
}

std::vector<SGuess> GuessOf(const IBytes& bytes) {
    std::vector<SGuess> guesses;
    if (!bytes.Size()) return guesses;
    TArray<SPixelType> types;
    GetPixelTypes(types);
    for (const SPixelType& type : types) {
        if (!reduce::filterFactory()->IsPixelTypeHandled(type.id)) continue;
        const SFrameFormat format = FormatOf(type.id, 0, 0);
        reduce::SFrameForm form;
        if (reduce::GetFrameForm(CString(format.filter.c_str()), type.id, form) && form.HasPixels())
            TryType(bytes, format, guesses);
    }
    std::stable_sort(guesses.begin(), guesses.end(),
                     [](const SGuess& a, const SGuess& b) { return a.Weight() > b.Weight(); });
    return guesses;
}

}  // namespace

std::vector<SGuess> GuessFormat(const std::filesystem::path& path) { return GuessOf(CInputFile(path)); }

std::vector<SGuess> GuessFormat(std::span<const u8> start) {
    return GuessOf(CBytesInMemory("", {start.begin(), start.end()}));
}

}  // namespace ovix::measure
