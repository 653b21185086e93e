#include "measure/recordings/frame_sums.h"

#include "measure/recordings/output_file.h"
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

void RequireSum(const SFrameSums& sums, u64 frame, std::span<const u8> bytes) {
    if (frame >= sums.sums.size()) return;
    const u32 wanted = sums.sums[static_cast<u32>(frame)];
    const u32 found = CrcOf(bytes);
    if (wanted == found) return;
    throw CError({.id = EError::SumDiffers,
                  .problem = "the frame is not what it was when it was recorded",
                  .expected = Say("CRC-32 0x", Hex(wanted, 8)),
                  .found = Say("0x", Hex(found, 8))});
}

}  // namespace ovix::measure
