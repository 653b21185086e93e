#include "source_files.h"

namespace ovix::measure {
namespace {

using namespace test;

struct SFound {
    u64 frameSize = 0;
    std::vector<u64> offsets = {};
    u64 damage = 0;  ///< findings of that weight

    bool operator==(const SFound&) const = default;
};

void PrintTo(const SFound& found, std::ostream* out) {
    *out << "size " << found.frameSize << ", damage " << found.damage << ", at";
    for (const u64 offset : found.offsets) *out << ' ' << offset;
}

SFound Look(const CSource& source, const Bytes& bytes) {
    SFound found{source.FrameSize(), {}, 0};
    SRawFrame frame;
    for (u64 i = 0; i < source.Count(); ++i) {
        source.Read(i, frame);
        EXPECT_EQ(frame.number, i);
        EXPECT_TRUE(std::equal(frame.bytes.begin(), frame.bytes.end(), bytes.begin() + static_cast<i64>(frame.offset)));
        found.offsets.push_back(frame.offset);
    }
    for (const SFinding& finding : source.Findings()) found.damage += finding.weight == EWeight::Damage;
    return found;
}

SFound Find(const char* type, const Bytes& bytes, u32 frameSize = 0) {
    const CTestFolder folder;
    return Look(Open(folder.Put("dump", bytes), AsDump(type, frameSize)), bytes);
}

Bytes Cut(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

TEST(NumberedSource, FindsTheFramesOfADumpWhateverStandsBehindThem) {
    const u64 m = NumberedFrame(0).size();
    const Bytes padded = Frames(3, 100);
    const std::tuple<const char*, Bytes, u32, SFound> cases[] = {
        {"one", Frames(1), 0, {m, {0}}},
        {"three", Frames(3), 0, {m, {0, m, 2 * m}}},
        {"padded", padded, 0, {m + 100, {0, m + 100, 2 * (m + 100)}}},
        {"padded and cut", Cut(padded, padded.size() - 150), 0, {m + 100, {0, m + 100}, 1}},
        {"a frame and some padding", Cut(Frames(2), m + 7), 0, {m + 7, {0}}},
        {"as told", padded, static_cast<u32>(m + 100), {m + 100, {0, m + 100, 2 * (m + 100)}}}};
    for (const auto& [what, bytes, given, found] : cases) EXPECT_EQ(Find(kGigE, bytes, given), found) << what;
    // Where nothing in the frame tells it from another, the pixels alone give the size.
    EXPECT_EQ(Find("K410 YUV (UYVY)", Bytes(700, 'v')), (SFound{256, {0, 256}, 1}));
}

TEST(NumberedSource, FollowsTheLengthsOfAStreamOverPaddingAndDamage) {
    const Bytes a = StreamFrame(50), b = StreamFrame(7000), c = StreamFrame(3);
    // The images are none, which is told of the first one.
    const u64 ab = a.size() + b.size();
    EXPECT_EQ(Find(kStream, a + b + c), (SFound{0, {0, a.size(), ab}, 1}));
    EXPECT_EQ(Find(kStream, a + Bytes(64, 0) + b + Bytes(20, 0)), (SFound{0, {0, a.size() + 64}, 1}));
    Bytes damaged = b;
    damaged[1] = 0x7F;  // a length far beyond the file
    EXPECT_EQ(Find(kStream, a + damaged + c), (SFound{0, {0, a.size(), ab}, 1}));
    EXPECT_EQ(Find(kStream, a + Cut(b, 1000)), (SFound{0, {0, a.size()}, 1}));
}

TEST(NumberedSource, GoesOnBehindBytesThatWereLostOrInserted) {
    const u64 m = NumberedFrame(0).size();
    for (const i64 lost : {1, 333, -1, -700}) {
        for (const u16 frame : {u16{3}, u16{10}}) {
            const SFound found = Find(kGigE, Torn(Frames(12), frame * m + 100, lost), static_cast<u32>(m));
            EXPECT_EQ(found.damage, 1u) << frame << " loses " << lost;
            // The torn frame is gone, or, where bytes were inserted, ends where it should.
            const u64 next = frame * m + (lost > 0 ? m - static_cast<u64>(lost) : static_cast<u64>(-lost));
            ASSERT_EQ(found.offsets.size(), lost > 0 ? 11u : 12u) << frame << " loses " << lost;
            EXPECT_EQ(found.offsets[frame - 1u], (frame - 1) * m);
            EXPECT_EQ(found.offsets[frame], next);
            EXPECT_EQ(found.offsets.back(), next + (found.offsets.size() - 1 - frame) * m);
        }
    }
    // A frame that is only damaged keeps its number.
    Bytes damaged = Frames(12);
    damaged[10 * m - 2428 - 128] ^= 1;
    EXPECT_EQ(Find(kGigE, damaged, static_cast<u32>(m)).offsets.size(), 12u);

    // Frames with a header behind their pixels look like those without one to who begins to read 32 bytes late.
    const Bytes digital = DigitalFrame(Ramp(kWidth * kHeight), {}, {});
    const u64 d = digital.size();
    Bytes last = digital + digital + digital + digital;
    last[3 * d + 2u * kWidth * kHeight + 32] ^= 1;
    EXPECT_EQ(Find(kGigE, last, static_cast<u32>(d)).offsets, (std::vector<u64>{0, d, 2 * d, 3 * d}));
    last = digital + Cut(digital, d - 50) + digital + digital;
    EXPECT_EQ(Find(kGigE, last, static_cast<u32>(d)).offsets.back(), 3 * d - 50);
}

TEST(NumberedSource, ReadsCountsOfBothByteOrders) {
    const CTestFolder folder;
    const Bytes bytes = PixelBytes(Ramp(2 * kWidth * kHeight));
    SRawFrame little, big;
    Open(folder.Put("le", bytes), AsDump("counts")).Read(1, little);
    const CSource swapped = Open(folder.Put("be", PixelBytes(Ramp(2 * kWidth * kHeight), true)), AsDump("counts-be"));
    swapped.Read(1, big);
    EXPECT_EQ(little.bytes, Bytes(bytes.begin() + 256, bytes.end()));
    EXPECT_TRUE(big.bytes == little.bytes && swapped.Kind() == ESource::Counts);
}

TEST(NumberedSource, SharesARecordingAndItsTablesAmongThreads) {
    const CTestFolder folder;
    const Bytes bytes = RecordingOf(40, [](reduce::CReduceObjectArray& objects) {
        objects.GetCorrection(0, true)->Create(kWidth, kHeight, 0, reduce::CorrectionGain);
        const auto scene = objects.GetObjectParameters(true);
        scene->fromSource = scene->valid = true;
        scene->emissivity = 0.5f;  // the frames say 32.25
    });
    const CSource source = Open(folder.Put("run.krt", bytes));
    ASSERT_TRUE(source.Count() == 40 && source.Kind() == ESource::Recording && source.Format().filter == "K410");
    std::vector<std::jthread> threads;
    for (u64 t = 0; t < 8; ++t) {
        threads.emplace_back([copy = source, t] {
            SRawFrame frame;
            reduce::CReduceObjectArray objects;
            for (u64 i = t; i < 1400; i += 7) {
                const u64 number = i % 40;
                copy.Read(number, frame);
                EXPECT_EQ(frame.bytes, NumberedFrame(static_cast<u16>(number)));
                copy.Describe(objects);
                copy.Overrule(objects);
                EXPECT_EQ(objects.GetObjectParameters(false)->emissivity, 0.5f);
            }
        });
    }
    threads.clear();
    reduce::CReduceObjectArray a, b;
    source.Describe(a);
    source.Describe(b);
    const auto ofA = a.GetCorrection(0, false), ofB = b.GetCorrection(0, false);
    EXPECT_TRUE(ofA.ptr() != ofB.ptr() && ofA->gain.get() == ofB->gain.get());
}

TEST(NumberedSource, AFileThatIsCutWhileItIsReadIsAnAnswer) {
    const CTestFolder folder;
    const u64 m = NumberedFrame(0).size();
    const auto path = folder.Put("dump", Frames(5));
    const CSource source = Open(path, AsDump());
    std::filesystem::resize_file(path, 3 * m + 10);
    SRawFrame frame;
    const SErrorFacts facts = FactsOf([&] { source.Read(3, frame); });
    EXPECT_TRUE(facts.id == EError::FileChanged && facts.frame == 3 && facts.offset == 10);
    source.Read(2, frame);
    EXPECT_EQ(frame.bytes, NumberedFrame(2));
    EXPECT_EQ(IdOf([&] { source.Read(5, frame); }), EError::NoSuchFrame);
    EXPECT_TRUE(source.IsFile(path) && !source.IsFile(folder.Put("other", Frames(5))));
}

TEST(NumberedSource, RefusesWhatHoldsNoFrame) {
    const CTestFolder folder;
    const auto idOf = [&](const Bytes& bytes, const SOpenOptions& options = AsDump()) {
        return IdOf([&] { Open(folder.Put("file", bytes), options); });
    };
    EXPECT_EQ(idOf({}), EError::NoFrames);
    for (const Bytes& bytes : {Bytes(100, 'x'), Bytes(5000, 'x'), Cut(NumberedFrame(0), 300)})
        EXPECT_EQ(idOf(bytes), EError::FrameRefused) << bytes.size();
    EXPECT_EQ(idOf(Frames(1), {}), EError::UnknownFormat);
    EXPECT_EQ(idOf(Frames(1), {.pixelType = kGigE}), EError::WrongArgument);
    const SErrorFacts unknown = FactsOf([&] { FindFormat("K410 IR (GigF)", 1, 1); });
    EXPECT_TRUE(unknown.id == EError::WrongArgument && unknown.advice.find(kGigE) != std::string::npos);
    EXPECT_EQ(IdOf([&] { FindFormat("rootIRType", 1, 1); }), EError::WrongArgument);
    EXPECT_EQ(IdOf([&] { Open(folder.At("none")); }), EError::FileMissing);
    EXPECT_EQ(IdOf([&] { Open(folder.At()); }), EError::FileUnreadable);

    const Bytes whole = RecordingOf(2);
    EXPECT_EQ(idOf(Cut(whole, whole.size() - 2 * NumberedFrame(0).size())), EError::NoFrames);
    EXPECT_EQ(idOf(Cut(whole, 77 + 77 + 2048)), EError::NoFrames);
    EXPECT_EQ(idOf(Cut(whole, 1000)), EError::BlocksBroken);
    Bytes wide = whole;
    wide[whole.size() - 2 * NumberedFrame(0).size() - 512 + 30] ^= 1;
    EXPECT_EQ(idOf(wide), EError::MetadataDamaged);
    EXPECT_EQ(idOf(wide, {.acceptDamage = true}), EError::WrongGeometry);
}

TEST(GuessFormat, TellsWhatSpeaksForATypeAndASize) {
    const CTestFolder folder;
    Bytes dump;
    for (u16 i = 0; i < 3; ++i)
        dump = dump + PlainFrame(Ramp(80 * 60), {.record = {.width = 80, .height = 60, .counter = i}});
    const auto path = folder.Put("dump", dump);
    const SGuess guess = GuessFormat(path).at(0);
    EXPECT_TRUE(guess.format.filter == "K410" && guess.format.width == 80 && guess.format.height == 60);
    EXPECT_TRUE(guess.frameSize == dump.size() / 3 && guess.Full());
    // Several types of the family have frames like these.
    EXPECT_EQ(IdOf([&] { Open(path, {.pixelType = "auto"}); }), EError::UnknownFormat);
    for (const SGuess& no : GuessFormat(folder.Put("noise", PixelBytes(Ramp(100'000))))) EXPECT_FALSE(no.Full());
}

TEST(FrameNumbers, AreFoundWithoutAList) {
    const CFrameNumbers numbers({{3, 5, 1}, {10, 30, 10}, {0, 0, 1}});
    std::vector<u64> all;
    for (u64 n = 0; n < numbers.Count(); ++n) all.push_back(numbers[n]);
    EXPECT_EQ(all, (std::vector<u64>{3, 4, 5, 10, 20, 30, 0}));
    EXPECT_EQ(IdOf([&] { static_cast<void>(numbers[7]); }), EError::NoSuchFrame);
    EXPECT_EQ(IdOf([&] { CFrameNumbers({{5, 3, 1}}); }), EError::WrongArgument);
    EXPECT_EQ(CFrameNumbers::All(0).Count(), 0u);
}

}  // namespace
}  // namespace ovix::measure
