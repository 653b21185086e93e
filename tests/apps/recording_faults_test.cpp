// Recordings that end in the middle, and recordings that were damaged: nothing is lost that was written, and nothing
// reads as good that is not.

#include <gtest/gtest.h>

#include <csignal>
#include <random>

#include "apps/ovix/fault.h"
#include "apps/ovix/recording/recording_check.h"
#include "apps/ovix/recording/recording_repair.h"
#include "apps/ovix/recording/recording_writer.h"
#include "support/faulty_file.h"
#include "support/k410_frames.h"
#include "tool_run.h"

namespace ovix::app {
namespace {

using test::CFaultyFile;
using Frame = std::vector<u8>;
using Frames = std::vector<Frame>;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr std::size_t kHeader = 77;

const SFrameFormat kFormat{.filter = "K410",
                           .pixelType = test::kK410F7M0,
                           .pixelTypeName = "K410 IR (F7M0)",
                           .width = kWidth,
                           .height = kHeight};

/// Frames that differ in pixels and counter.
Frames MakeFrames(u16 count) {
    Frames frames;
    for (u16 i = 0; i < count; ++i) {
        std::vector<u16> pixels(kWidth * kHeight, static_cast<u16>(1000 + i));
        test::SK410Container container;
        container.record.counter = i;
        frames.push_back(test::PlainFrame(pixels, container));
    }
    return frames;
}

/// Source info, and one object of every other class that persists.
void FillMetadata(reduce::CReduceObjectArray& objects) {
    const auto info = objects.GetSourceInfo(true);
    info->time.SetTimestamp(0);
    info->pixelType = kFormat.pixelType;
    info->width = info->frameWidth = info->packetWidth = kWidth;
    info->height = info->frameHeight = info->packetHeight = kHeight;
    for (u32 i = 0; i < reduce::reduceObjectFactory()->GetEntryCount(); ++i) {
        const auto& entry = reduce::reduceObjectFactory()->GetEntryAt(i);
        const auto object = objects.GetObjectOfType(entry.extra.typeID, -1, true);
        if (const auto tables = object.Cast<reduce::CCorrectionReduceObject>()) tables->Create(kWidth, kHeight, 255, 7);
        object->valid = true;
    }
}

void Record(const TSharedPtr<IFile>& file, const Frames& frames, bool unpacked = false) {
    reduce::CReduceObjectArray objects;
    FillMetadata(objects);
    CRecordingWriter writer(file, objects, kFormat, static_cast<u32>(frames[0].size()), unpacked);
    for (const Frame& frame : frames) writer.Add(frame);
    writer.Finish();
}

/// A recording on the disk that can be damaged.
class CDamageable {
  public:
    explicit CDamageable(const std::vector<u8>& bytes = {}) { Put(bytes); }

    void Put(const std::vector<u8>& bytes) { test::WriteText(Path(), {bytes.begin(), bytes.end()}); }
    void Flip(std::size_t offset, u8 bits) const {
        std::fstream file(Path(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekg(static_cast<std::streamoff>(offset));
        const int byte = file.get();
        file.seekp(static_cast<std::streamoff>(offset));
        file.put(static_cast<char>(byte ^ bits));
    }
    void Cut(std::size_t size) const { std::filesystem::resize_file(Path(), size); }

    bool ReadsAsGood(std::vector<SFinding>* findings = nullptr) const {
        auto input = std::make_shared<CInputFile>(Path());
        if (!CRecordingFile::Recognises(*input)) return false;
        const CRecordingFile file(std::move(input));
        const CRecordingCheck::Report report = [&](const SFinding& finding) {
            if (findings) findings->push_back(finding);
        };
        return CRecordingCheck(file, report).Run();
    }
    /// The frames that a repair brings back; nothing when it refuses. What it makes must read as good.
    Frames Repaired(std::size_t frameSize) const {
        const std::filesystem::path made = folder_.Path("good.krt");
        auto input = std::make_shared<CInputFile>(Path());
        if (!CRecordingFile::Recognises(*input)) return {};
        CRecordingFile file(std::move(input));
        try {
            COutputFile output(made, true);
            RepairRecording(file, output, [](const std::string&) {});
            output.Commit();
        } catch (const CFault& fault) {
            EXPECT_FALSE(std::string(fault.what()).empty());
            return {};
        }
        const CDamageable good(Read(made));
        std::vector<SFinding> findings;
        EXPECT_TRUE(good.ReadsAsGood(&findings)) << (findings.empty() ? "" : findings[0].what + findings[0].found);
        return FramesAtEnd(Read(made), OpenRecording(made).WholeFrames(), frameSize);
    }

    /// What the last repair made.
    std::vector<u8> Made() const { return Read(folder_.Path("good.krt")); }

    static Frames FramesAtEnd(const std::vector<u8>& bytes, u64 count, std::size_t frameSize) {
        Frames frames;
        for (u64 i = count; i-- > 0;) {
            const auto end = bytes.end() - static_cast<std::ptrdiff_t>(i * frameSize);
            frames.emplace_back(end - static_cast<std::ptrdiff_t>(frameSize), end);
        }
        return frames;
    }

  private:
    static std::vector<u8> Read(const std::filesystem::path& path) {
        const std::string text = test::ReadText(path);
        return {text.begin(), text.end()};
    }
    std::string Path() const { return folder_.Path("run.krt"); }

    test::CToolFolder folder_;
};

std::vector<u8> WholeRecording(const Frames& frames) {
    CFaultyFile memory(CFaultyFile::None, 0);
    Record(BorrowShared<IFile>(memory), frames);
    return memory.bytes;
}

bool IsStartOf(const Frames& some, const Frames& all) {
    return some.size() <= all.size() && std::equal(some.begin(), some.end(), all.begin());
}

TEST(Recording, EveryFailedWriteIsToldOrHarmless) {
    const Frames frames = MakeFrames(3);
    CFaultyFile whole(CFaultyFile::None, 0);
    Record(BorrowShared<IFile>(whole), frames);
    ASSERT_GT(whole.Writes(), 100u);
    CDamageable disk;
    for (const auto fault : {CFaultyFile::OneFails, CFaultyFile::AllFail, CFaultyFile::PowerOff}) {
        u64 mostBack = 0;
        for (u64 n = 0; n <= whole.Writes(); ++n) {
            CFaultyFile file(fault, n);
            bool done = true;
            try {
                Record(BorrowShared<IFile>(file), frames);
            } catch (const CFault& told) {
                done = false;
                EXPECT_NE(std::string(told.what()), "");
            }
            disk.Put(file.bytes);
            EXPECT_EQ(disk.ReadsAsGood(), done) << "fault " << fault << " at write " << n;
            EXPECT_TRUE(!done || file.bytes == whole.bytes) << "fault " << fault << " at write " << n;
            const Frames back = disk.Repaired(frames[0].size());
            EXPECT_TRUE(IsStartOf(back, frames)) << "fault " << fault << " at write " << n;
            mostBack = std::max<u64>(mostBack, back.size());
        }
        EXPECT_EQ(mostBack, frames.size());
    }
}

TEST(Recording, NoTruncationReadsAsGoodAndEveryWholeFrameComesBack) {
    const Frames frames = MakeFrames(2);
    const std::vector<u8> bytes = WholeRecording(frames);
    const std::size_t framesAt = bytes.size() - frames.size() * frames[0].size();
    CDamageable disk(bytes);
    EXPECT_TRUE(disk.ReadsAsGood());
    for (std::size_t size = bytes.size(); size-- > 0;) {
        disk.Cut(size);
        EXPECT_FALSE(disk.ReadsAsGood()) << size;
        if (size % 97 != 0 && size > framesAt) continue;
        const std::size_t whole = size < framesAt ? 0 : (size - framesAt) / frames[0].size();
        const Frames back = disk.Repaired(frames[0].size());
        EXPECT_EQ(back.size(), whole) << size;
        EXPECT_TRUE(IsStartOf(back, frames)) << size;
    }
}

/// The parts of a block header that nothing else in the file tells: the version (a lower one may be right), the
/// preset, the frame, and whether the object is valid.
bool IsFreeChoice(std::size_t offset, u8 bits) { return (offset >= 48 && offset < 61) || (offset == 61 && bits == 1); }

TEST(Recording, EveryFlippedByteThatARuleCoversIsNamed) {
    const Frames frames = MakeFrames(2);
    const std::vector<u8> bytes = WholeRecording(frames);
    CDamageable disk(bytes);
    reduce::InfoFileDirectory blocks;
    CFaultyFile memory(CFaultyFile::None, 0);
    memory.bytes = bytes;
    ASSERT_TRUE(reduce::ScanInfoFile(BorrowShared<IFile>(memory), blocks, 0));
    ASSERT_GT(blocks.size(), 8u);

    std::size_t tried = 0;
    const auto expectNamed = [&](std::size_t offset, u8 bits, const std::string& where) {
        disk.Flip(offset, bits);
        std::vector<SFinding> findings;
        EXPECT_FALSE(disk.ReadsAsGood(&findings)) << where << ", offset " << offset << ", bits " << int{bits};
        if (tried % 11 == 0) disk.Repaired(frames[0].size());  // which must make a good one, if it makes one
        disk.Flip(offset, bits);
        ++tried;
    };
    for (std::size_t i = 0; i < kHeader; ++i) expectNamed(i, 0x04, "file header");
    for (const reduce::SInfoFileBlock& block : blocks) {
        const bool isPixels = block.size == reduce::SInfoFileBlock::ToEndOfFile;
        for (std::size_t i = 0; i < kHeader; ++i) {
            for (const u8 bits : {u8{0x01}, u8{0x80}}) {
                if (isPixels || !IsFreeChoice(i, bits)) expectNamed(block.headerOffset + i, bits, block.name);
            }
        }
        const std::size_t step = isPixels ? 1 : 3;
        for (std::size_t i = 0; i < (isPixels ? 512 : block.size); i += step) {
            const bool isRest = isPixels && i >= 128 && i < 384 && (i - 128) % 32 >= 20;
            if (!isRest) expectNamed(block.dataOffset + i, 0x10, block.name);
        }
    }
    EXPECT_GT(tried, 3000u);
    EXPECT_TRUE(disk.ReadsAsGood());
}

TEST(Recording, FindingsSayWhereAndWhat) {
    const Frames frames = MakeFrames(2);
    const std::vector<u8> bytes = WholeRecording(frames);
    const std::size_t second = bytes.size() - frames[0].size();
    const struct {
        std::size_t offset;
        u8 bits;
        u64 at;
        const char *what, *expected, *found;
    } kCases[] = {
        {48, 1, 48, "version in the file header", "0x00001000", "0x00001001"},
        {77 + 2, 0x20, 77, "name of block SoUrceInfo", "\"SourceInfo\"", "\"SoUrceInfo\""},
        {second + 2 * kWidth * kHeight, 1, second + 2 * kWidth * kHeight, "frame 1",
         "the container's signature, here or 32 bytes further on (0x004D4B4D)", "0x004D4B4C"},
    };
    for (const auto& c : kCases) {
        CDamageable disk(bytes);
        disk.Flip(c.offset, c.bits);
        std::vector<SFinding> findings;
        EXPECT_FALSE(disk.ReadsAsGood(&findings));
        ASSERT_EQ(findings.size(), 1u) << c.what;
        EXPECT_EQ(findings[0].offset, c.at);
        EXPECT_EQ(findings[0].what, c.what);
        EXPECT_EQ(findings[0].expected, c.expected);
        EXPECT_EQ(findings[0].found, c.found);
    }
}

TEST(Recording, RepairKeepsWhatIsWholeAndLeavesTheRestOut) {
    const Frames frames = MakeFrames(3);
    const std::vector<u8> bytes = WholeRecording(frames);
    const std::size_t size = frames[0].size();
    const std::size_t framesAt = bytes.size() - 3 * size;
    {
        CDamageable disk(bytes);  // the chain of blocks breaks
        disk.Flip(77 + 65 + 5, 0x40);
        EXPECT_EQ(disk.Repaired(size), frames);
    }
    {
        CDamageable disk(bytes);  // a frame that no decoder takes
        disk.Flip(framesAt + size + 2 * kWidth * kHeight, 0x40);
        EXPECT_EQ(disk.Repaired(size), (Frames{frames[0], frames[2]}));
    }
    const std::size_t pixelsAt = framesAt - sizeof(reduce::SPixelsHeader);
    for (const std::size_t told : {std::size_t{77 + 33}, std::size_t{77 + 55}, pixelsAt + 13, pixelsAt + 30}) {
        CDamageable disk(bytes);  // type id and frame of the source info, type and width of the pixels
        disk.Flip(told, 0x40);
        EXPECT_EQ(disk.Repaired(size), frames) << told;
        EXPECT_EQ(disk.Made(), bytes) << told;
    }
    {
        CDamageable disk(bytes);  // the source info lies
        disk.Flip(77 + 77 + 20, 0x40);
        EXPECT_EQ(disk.Repaired(size), frames);
    }
}

TEST(Recording, AHundredKillsLoseNoFrameThatWasWritten) {
    using Clock = std::chrono::steady_clock;
    constexpr u64 kFrames = 1200;
    const test::CToolFolder folder;
    folder.Do({"synth", "-o", "dump.raw", "--pixel-type", "K410 IR (GigE)", "--size", "64x48", "--count", "24"});
    std::string dump = test::ReadText(folder.Path("dump.raw"));
    const std::size_t frameSize = dump.size() / 24;
    const std::string once = dump;
    for (u64 i = 24; i < kFrames; i += 24) dump += once;
    test::WriteText(folder.Path("dump.raw"), dump);
    const std::vector<std::string> record = {"record", "dump.raw", "--pixel-type", "K410 IR (GigE)", "--size",
                                             "64x48",  "-o",       "run.krt",      "--keep-part",    "--overwrite"};
    const auto start = Clock::now();
    EXPECT_EQ(folder.Run(record).status, 0);
    const auto longest = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    const std::size_t framesAt = std::filesystem::file_size(folder.Path("run.krt")) - dump.size();

    std::mt19937 random(20);
    std::uniform_int_distribution<long> moment(0, longest.count());
    int early = 0, between = 0, done = 0;
    for (int i = 0; i < 100; ++i) {
        std::filesystem::remove(folder.Path("run.krt"));
        const pid_t tool = folder.Start(record);
        ::usleep(static_cast<useconds_t>(moment(random)));
        ::kill(tool, SIGKILL);
        ::waitpid(tool, nullptr, 0);
        if (std::filesystem::exists(folder.Path("run.krt"))) {
            EXPECT_EQ(folder.Run({"verify", "run.krt"}).status, 0);
            ++done;
            continue;
        }
        std::size_t whole = 0;
        if (std::filesystem::exists(folder.Path("run.krt.part"))) {
            const std::size_t size = std::filesystem::file_size(folder.Path("run.krt.part"));
            if (size > framesAt) whole = (size - framesAt) / frameSize;
            const test::SToolRun repair = folder.Run({"repair", "run.krt.part", "-o", "good.krt", "--overwrite"});
            EXPECT_EQ(repair.status == 0, whole > 0) << repair.error;
            std::filesystem::remove(folder.Path("run.krt.part"));
        }
        ++(whole ? between : early);
        if (!whole) continue;
        EXPECT_EQ(folder.Run({"verify", "good.krt"}).status, 0);
        const std::string good = test::ReadText(folder.Path("good.krt"));
        ASSERT_EQ(good.size(), framesAt + whole * frameSize);
        EXPECT_TRUE(good.compare(framesAt, std::string::npos, dump, 0, whole * frameSize) == 0) << "kill " << i;
    }
    std::printf("100 kills: %d before the first frame, %d while recording, %d after the end\n", early, between, done);
    EXPECT_GT(between, 0);
}

}  // namespace
}  // namespace ovix::app
