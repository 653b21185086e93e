// Recordings that are written, end in the middle or are damaged: nothing is lost that was written, and nothing reads as
// good that is not.

#include <sys/resource.h>

#include <csignal>

#include "source_files.h"

namespace ovix::measure {
namespace {

using namespace test;

constexpr std::size_t kBlockHeader = 77;
const SFrameFormat kFormat = FindFormat(kGigE, kWidth, kHeight);
const u32 kFrame = static_cast<u32>(NumberedFrame(0).size());

/// Source info, and one object of every other class that persists.
void FillMetadata(reduce::CReduceObjectArray& objects) {
    DescribeSource(objects);
    for (u32 i = 0; i < reduce::reduceObjectFactory()->GetEntryCount(); ++i) {
        const auto& entry = reduce::reduceObjectFactory()->GetEntryAt(i);
        const auto object = objects.GetObjectOfType(entry.extra.typeID, -1, true);
        if (const auto tables = object.Cast<reduce::CCorrectionReduceObject>()) tables->Create(kWidth, kHeight, 255, 7);
        object->valid = true;
    }
}

void Write(const std::filesystem::path& path, u16 frames, const SWriteOptions& options = {}) {
    reduce::CReduceObjectArray objects;
    FillMetadata(objects);
    CRecordingWriter writer(path, objects, kFormat, kFrame, options);
    for (u16 i = 0; i < frames; ++i) writer.Add(NumberedFrame(i));
    writer.Finish();
}

std::vector<SFinding> FindingsOf(const std::filesystem::path& path, bool* good = nullptr) {
    std::vector<SFinding> findings;
    const bool isGood = CheckRecording(path, [&](const SFinding& finding) { findings.push_back(finding); });
    if (good) *good = isGood;
    return findings;
}

Bytes FramesOf(const CSource& source) {
    std::vector<Bytes> all;
    SRawFrame frame;
    for (u64 i = 0; i < source.Count(); ++i) {
        source.Read(i, frame);
        all.push_back(frame.bytes);
    }
    return Joined(all);
}

/// Whether opening or reading fails, or leaves a finding of damage or doubt.
bool Tells(const std::filesystem::path& path) {
    try {
        const CSource source = Open(path);
        FramesOf(source);
        return source.Worst() >= EWeight::Doubt;
    } catch (const CError& error) {
        return !error.Facts().file.empty();
    }
}

/// The frames that a repair brings back; nothing when it refuses. What it makes must read as good.
Bytes Repaired(const std::filesystem::path& path) {
    const std::filesystem::path made = path.parent_path() / "good.krt";
    try {
        RepairRecording(path, made, {.overwrite = true}, [](const SFinding&) {});
    } catch (const CError&) {
        return {};
    }
    bool good = false;
    const auto findings = FindingsOf(made, &good);
    EXPECT_TRUE(good) << findings[0].what << " expected " << findings[0].expected << " found " << findings[0].found;
    const CSource source = Open(made);
    EXPECT_NE(source.Worst(), EWeight::Damage);
    return FramesOf(source);
}

TEST(Recording, ComesBackAsItWasWritten) {
    const CTestFolder folder;
    Write(folder.At("run.krt"), 5, {.checksums = true});
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"run.krt", "run.krt.crc"}));
    EXPECT_TRUE(FindingsOf(folder.At("run.krt")).empty());
    const Bytes bytes = folder.Get("run.krt");
    EXPECT_EQ(Bytes(bytes.end() - 5 * kFrame, bytes.end()), Frames(5));
    const CSource source = Open(folder.At("run.krt"));
    EXPECT_EQ(source.Count(), 5u);
    for (const SFinding& finding : source.Findings())
        ADD_FAILURE() << finding.what << ": " << finding.expected << ", " << finding.found;
    reduce::CReduceObjectArray objects;
    source.Describe(objects);
    EXPECT_EQ(objects.GetSourceInfo(false)->presets[0].frameCount, 5u);

    // The sums: magic, version, size, frame size, CRC of the metadata, number of frames, sums, CRC of it all.
    const Bytes sums = folder.Get("run.krt.crc");
    ASSERT_EQ(sums.size(), 16u + 12 + 5 * 4 + 4);
    EXPECT_TRUE(LoadLittle<u32>(&sums[16]) == kFrame && LoadLittle<u32>(&sums[24]) == 5);
    CCalcCRC32File sum;
    sum.Write(NumberedFrame(3).data(), kFrame);
    EXPECT_EQ(LoadLittle<u32>(&sums[28 + 3 * 4]), sum.GetCRC());
    MakeChecksums(folder.At("run.krt"), true);
    EXPECT_EQ(folder.Get("run.krt.crc"), sums);
}

TEST(Recording, AFrameThatIsNotWhatItWasIsRefusedWhereSumsStandBesideIt) {
    const CTestFolder folder;
    Write(folder.At("run.krt"), 3, {.checksums = true});
    Bytes bytes = folder.Get("run.krt");
    bytes[bytes.size() - 2 * kFrame + 7] ^= 1;  // a pixel of frame 1
    folder.Put("run.krt", bytes);
    const CSource source = Open(folder.At("run.krt"));
    EXPECT_TRUE(source.Findings().empty());
    SRawFrame frame;
    source.Read(0, frame);
    EXPECT_EQ(FrameFaultOf([&] { source.Read(1, frame); }), std::pair(EError::SumDiffers, u64{1}));
    EXPECT_EQ(source.Worst(), EWeight::Damage);
    bool good = true;
    EXPECT_EQ(FindingsOf(folder.At("run.krt"), &good).size(), 1u);
    EXPECT_FALSE(good);

    // Sums that are damaged, or another recording's, are told of; a recording that replaces one takes its sums away.
    Bytes sums = folder.Get("run.krt.crc");
    sums[20] ^= 1;
    folder.Put("run.krt.crc", sums);
    EXPECT_EQ(Open(folder.At("run.krt")).Findings().at(0).id, EFinding::SumsMissing);
    Write(folder.At("run.krt"), 4, {.overwrite = true});
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"run.krt"});
}

TEST(Recording, FramesBehindATornPlaceAreHeldAgainstTheirOwnSums) {
    const CTestFolder folder;
    Write(folder.At("run.krt"), 8, {.checksums = true});
    Bytes bytes = folder.Get("run.krt");
    const auto frame = [&](i64 number) { return bytes.end() - (8 - number) * i64{kFrame}; };
    frame(3)[7] ^= 1;  // a pixel of the first one behind
    bytes.erase(frame(2) + 50, frame(2) + 150);
    folder.Put("run.krt", bytes);

    std::vector<Bytes> expected;
    for (const int number : {0, 1, 4, 5, 6, 7}) expected.push_back(NumberedFrame(static_cast<u16>(number)));
    std::vector<Bytes> good[2];
    std::vector<EError> bad[2];
    const CSource numbered = Open(folder.At("run.krt"));
    const CSource followed = Open(folder.At("run.krt"), {.follow = true, .patience = std::chrono::milliseconds(20)});
    SRawFrame raw;
    const auto take = [&](int way, const auto& read) {
        try {
            if (!read()) return false;
            good[way].push_back(raw.bytes);
        } catch (const CError& error) {
            bad[way].push_back(error.Id());
        }
        return true;
    };
    for (u64 i = 0; i < numbered.Count(); ++i) take(0, [&] { return numbered.Read(i, raw), true; });
    while (take(1, [&] { return followed.Next(raw); })) {
    }
    for (const auto& frames : good) EXPECT_EQ(frames, expected);
    EXPECT_EQ(bad[0], std::vector<EError>{EError::SumDiffers});
    EXPECT_EQ(bad[1], (std::vector<EError>{EError::FrameRefused, EError::SumDiffers}));
    u64 differ = 0;
    for (const SFinding& finding : FindingsOf(folder.At("run.krt"))) differ += finding.id == EFinding::SumDiffers;
    EXPECT_EQ(differ, 1u);
}

TEST(Recording, ACutIsToldAndRepairedToAllWholeFrames) {
    const CTestFolder folder;
    Write(folder.At("run.krt"), 3);
    const Bytes whole = folder.Get("run.krt");
    const std::size_t framesAt = whole.size() - 3 * kFrame;
    for (std::size_t size = 0; size < whole.size(); size += size < framesAt ? 97 : 311) {
        folder.Put("run.krt", Bytes(whole.begin(), whole.begin() + static_cast<i64>(size)));
        EXPECT_TRUE(Tells(folder.At("run.krt"))) << size;
        const u64 frames = size < framesAt ? 0 : (size - framesAt) / kFrame;
        if (size < 16) continue;
        EXPECT_EQ(Repaired(folder.At("run.krt")), Frames(static_cast<u16>(frames))) << size;
    }
}

TEST(Recording, RepairMendsHeadersAndLeavesOutWhatIsDamaged) {
    const CTestFolder folder;
    Write(folder.At("run.krt"), 3);
    const Bytes whole = folder.Get("run.krt");
    const std::size_t framesAt = whole.size() - 3 * kFrame;
    const Bytes all = Frames(3);
    // In the first block's header and its record, in the second's, in the pixels' header and record, in frame 1.
    for (const std::size_t at : {kBlockHeader + 3, kBlockHeader + 50, 2 * kBlockHeader + 300,
                                 3 * kBlockHeader + 2048 + 20, framesAt - 560, framesAt - 480}) {
        Bytes bytes = whole;
        bytes[at] ^= 4;
        folder.Put("bad.krt", bytes);
        bool good = true;
        EXPECT_TRUE(!FindingsOf(folder.At("bad.krt"), &good).empty() && !good) << at;
        EXPECT_EQ(Repaired(folder.At("bad.krt")), all) << at;
    }
    Bytes bytes = whole;
    bytes[framesAt + kFrame + 2u * kWidth * kHeight] ^= 1;  // a mark
    folder.Put("bad.krt", bytes);
    EXPECT_EQ(Repaired(folder.At("bad.krt")), NumberedFrame(0) + NumberedFrame(2));
    // A block of the metadata is refused, unless the caller takes it.
    bytes = whole;
    bytes[2 * kBlockHeader + 300] ^= 4;
    folder.Put("bad.krt", bytes);
    EXPECT_EQ(IdOf([&] { Open(folder.At("bad.krt")); }), EError::MetadataDamaged);
    EXPECT_EQ(Open(folder.At("bad.krt"), {.acceptDamage = true}).Worst(), EWeight::Damage);
}

TEST(RecordingWriter, LeavesAPartOnlyWhenAskedAndReplacesNothingUnasked) {
    const CTestFolder folder;
    reduce::CReduceObjectArray objects;
    FillMetadata(objects);
    const auto start = [&](const SWriteOptions& options) {
        CRecordingWriter writer(folder.At("run.krt"), objects, kFormat, kFrame, options);
        writer.Add(NumberedFrame(0));
        Bytes bad = NumberedFrame(1);
        bad[2u * kWidth * kHeight] ^= 1;
        for (const Bytes& refused : {bad, Bytes(kFrame + 1)})
            EXPECT_EQ(IdOf([&] { writer.Add(refused); }), EError::FrameRefused);
        writer.Add(NumberedFrame(2));
        EXPECT_EQ(writer.Count(), 2u);
    };
    start({});
    EXPECT_TRUE(folder.Names().empty());
    start({.keepPart = true});
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"run.krt.part"});
    EXPECT_EQ(IdOf([&] { start({.overwrite = true}); }), EError::FileExists);
    RepairRecording(folder.At("run.krt.part"), folder.At("run.krt"), {}, [](const SFinding&) {});
    EXPECT_EQ(Open(folder.At("run.krt")).Count(), 2u);
    EXPECT_EQ(IdOf([&] { start({}); }), EError::FileExists);

    std::filesystem::create_hard_link(folder.At("run.krt"), folder.At("same.krt"));
    const SWriteOptions overInput{.overwrite = true, .input = Open(folder.At("run.krt"))};
    const auto repair = [&] { RepairRecording(folder.At("run.krt"), folder.At("same.krt"), overInput, {}); };
    EXPECT_EQ(IdOf([&] { Write(folder.At("same.krt"), 1, overInput); }), EError::FileIsInput);
    EXPECT_EQ(IdOf(repair), EError::FileIsInput);
    EXPECT_EQ(IdOf([&] { Write(folder.At("none") / "run.krt", 1); }), EError::FileUnwritable);
}

TEST(RecordingWriter, AWriteThatFailsAnywhereIsToldAndLeavesNothing) {
    const CTestFolder folder;
    Write(folder.At("run.krt"), 3);
    const std::size_t size = std::filesystem::file_size(folder.At("run.krt"));
    std::filesystem::remove(folder.At("run.krt"));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    for (std::size_t limit = 0; limit < size; limit += 173) {
        const rlimit room{limit, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &room);
        EXPECT_EQ(IdOf([&] { Write(folder.At("run.krt"), 3); }), EError::FileUnwritable) << limit;
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_TRUE(folder.Names().empty()) << limit;
    }
}

TEST(Metadata, OfFirstFramesGoesIntoTheRecordingWithTheTimeThatTheyCarry) {
    const CTestFolder folder;
    const CSource source = Open(folder.Put("dump", Frames(3)), AsDump());
    reduce::CReduceObjectArray objects;
    GatherMetadata(source, CFrameNumbers::All(3), objects);
    EXPECT_EQ(objects.GetSourceInfo(false)->time.GetTimestamp(), UnixTimestamp(1'700'000'000, 0));
    EXPECT_EQ(objects.GetObjectParameters(false)->emissivity, 32.25f);
    EXPECT_TRUE(objects.GetSourceInfo(false)->cameraName.Equals(L"K410"));
}

}  // namespace
}  // namespace ovix::measure
