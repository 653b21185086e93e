#include "measure/recordings/frame_sums.h"

#include "measure/recordings/output_file.h"
#include "measure/sources/input_file.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr SSealedKind kKind{"OVIXFCRC", 0x10000};

/// The content, for a writer as for a reader.
template <class Sealed>
bool Describe(Sealed& sealed, auto& sums) {
    return sealed.Field(sums.frameSize) && sealed.Field(sums.metadataCrc) && sealed.Field(sums.sums);
}

}  // namespace

bool SFrameSums::BelongTo(const CRecordingFile& file) const {
    return frameSize == file.Pixels().frameSize && metadataCrc == file.Bytes().CrcOf(0, file.FramesAt());
}

std::filesystem::path SumsPath(const std::filesystem::path& recording) { return recording.string() + ".crc"; }

std::optional<SFrameSums> LoadSums(const std::filesystem::path& path) {
    const CInputFile input(path);
    CBytesFile file(input);
    CSealedReader reader;
    SFrameSums sums;
    if (!reader.ReadFrom(file, kKind) || !Describe(reader, sums)) return {};
    return sums;
}

void SaveSums(const std::filesystem::path& path, SFrameSums& sums, bool overwrite) {
    COutputFile output(path, overwrite);
    COutputAsFile file(output);
    CSealedWriter writer(kKind);
    if (!Describe(writer, sums) || !writer.WriteTo(file))
        throw CError({.id = EError::FileUnwritable, .file = path.string(), .problem = "more frames than it can hold"});
    output.Commit();
}

void PutSums(const std::filesystem::path& recording, SFrameSums* sums) {
    const std::filesystem::path beside = SumsPath(recording);
    std::error_code ignored;
    if (sums) {
        SaveSums(beside, *sums, true);
    } else {
        std::filesystem::remove(beside, ignored);
    }
}

u64 CSumCheck::MissingAt(u64 number) const {
    u64 missing = 0;
    for (const SStretch& stretch : stretches_) {
        if (stretch.first <= number) missing = stretch.missing;
    }
    return missing;
}

bool CSumCheck::Locate(u64 first, u64 number, std::span<const u8> bytes) {
    const u32 found = CrcOf(bytes);
    for (u64 missing = MissingAt(number); number + missing < sums_.sums.size(); ++missing) {
        if (sums_.sums[static_cast<u32>(number + missing)] != found) continue;
        stretches_.push_back({first, missing});
        return true;
    }
    return false;
}

void CSumCheck::Locate(const IBytes& bytes, const CEqualFrames& layout) {
    constexpr u64 kMostTried = 16;
    for (const u64 first : layout.FirstsBehindTears()) {
        for (u64 number = first; number < first + kMostTried; ++number) {
            const auto place = layout.Find(number);
            if (!place || Locate(first, number, bytes.Get(place->offset, place->size))) break;
        }
    }
}

void CSumCheck::Require(u64 number, std::span<const u8> bytes) const {
    const u64 summed = number + MissingAt(number);
    if (summed >= sums_.sums.size()) return;
    const u32 wanted = sums_.sums[static_cast<u32>(summed)];
    const u32 found = CrcOf(bytes);
    if (wanted == found) return;
    throw CError({.id = EError::SumDiffers,
                  .problem = "the frame is not what it was when it was recorded",
                  .expected = Say("CRC-32 0x", Hex(wanted, 8)),
                  .found = Say("0x", Hex(found, 8))});
}

std::optional<CSumCheck> SumsBeside(const CRecordingFile& file, u64 count, const Report& report) {
    const std::filesystem::path beside = SumsPath(file.Name());
    if (!IdentityOf(beside)) return {};
    auto sums = LoadSums(beside);
    if (sums && sums->BelongTo(file) && sums->sums.size() >= count) return CSumCheck(std::move(*sums));
    report({.id = EFinding::SumsMissing,
            .weight = EWeight::Damage,
            .what = beside.filename().string(),
            .expected = Say("the sums of the ", count, " frames of this recording"),
            .found = sums ? Say(sums->sums.size(), " of another") : "a damaged file"});
    return {};
}

}  // namespace ovix::measure
