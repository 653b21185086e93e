#include "source_files.h"

/// Counts in NumPy, TIFF and PNG files, which are written here byte by byte from the descriptions of the formats.
namespace ovix::measure {
namespace {

using namespace test;

constexpr u16 kColumns = 5, kRows = 3;
const std::vector<u16> kCounts = {0, 1, 255, 256, 65535, 7, 8, 9, 10, 11, 0x1234, 0x8000, 0x7FFF, 2, 3};

Bytes Text(std::string_view text) { return {text.begin(), text.end()}; }
Bytes Number(u64 number, int size, bool bigEndian) {
    Bytes bytes;
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<u8>(number >> 8 * (bigEndian ? size - 1 - i : i)));
    return bytes;
}
Bytes CountBytes(bool bigEndian) {
    Bytes bytes;
    for (const u16 count : kCounts) bytes = bytes + Number(count, 2, bigEndian);
    return bytes;
}

Bytes Numpy(const char* type, const char* shape, const Bytes& data) {
    std::string header = std::string("{'descr': '") + type + "', 'fortran_order': False, 'shape': " + shape + ", }";
    header.resize(117, ' ');
    header += '\n';
    return Bytes{0x93} + Text("NUMPY") + Bytes{1, 0, 118, 0} + Text(header) + data;
}

/// RFC 1950 and 1951, one stored block.
Bytes Stored(const Bytes& data) {
    u32 a = 1, b = 0;
    for (const u8 byte : data) a = (a + byte) % 65521, b = (b + a) % 65521;
    return Bytes{0x78, 0x01, 1} + Number(data.size(), 2, false) + Number(data.size() ^ 0xFFFF, 2, false) + data +
           Number(b << 16 | a, 4, true);
}
/// Codes of nine bits: clear, the bytes as they are, end.
Bytes Lzw(const Bytes& data) {
    std::vector<u32> codes{256};
    codes.insert(codes.end(), data.begin(), data.end());
    codes.push_back(257);
    Bytes packed((codes.size() * 9 + 7) / 8);
    for (std::size_t bit = 0; bit < codes.size() * 9; ++bit)
        packed[bit / 8] |= static_cast<u8>((codes[bit / 9] >> (8 - bit % 9) & 1) << (7 - bit % 8));
    return packed;
}
Bytes PackBits(const Bytes& data) { return Bytes{static_cast<u8>(data.size() - 1)} + data; }

struct STags {
    u32 compression = 1, bits = 16, samples = 1, tile = 0, width = kColumns, height = kRows;
};
/// Pages of one strip or tile each, the pixels ahead of their directory.
Bytes Tiff(bool bigEndian, const STags& tags, const Bytes& pixels, int pages = 1) {
    const auto n = [=](u64 number, int size) { return Number(number, size, bigEndian); };
    Bytes file = Bytes(2, bigEndian ? 'M' : 'I') + n(42, 2) + n(8 + pixels.size(), 4);
    for (int page = 0; page < pages; ++page) {
        const u64 at = file.size();
        file = file + pixels;
        const std::vector<std::pair<u32, u64>> entries =
            tags.tile
                ? std::vector<std::pair<u32, u64>>{{256, tags.width},       {257, tags.height}, {258, tags.bits},
                                                   {259, tags.compression}, {262, 1},           {277, tags.samples},
                                                   {322, tags.tile},        {323, tags.tile},   {324, at},
                                                   {325, pixels.size()}}
                : std::vector<std::pair<u32, u64>>{{256, tags.width},       {257, tags.height}, {258, tags.bits},
                                                   {259, tags.compression}, {262, 1},           {273, at},
                                                   {277, tags.samples},     {278, kRows},       {279, pixels.size()}};
        file = file + n(entries.size(), 2);
        for (const auto& [tag, value] : entries) file = file + n(tag, 2) + n(4, 2) + n(1, 4) + n(value, 4);
        file = file + n(page + 1 < pages ? file.size() + 4 + pixels.size() : 0, 4);
    }
    return file;
}

Bytes Chunk(const char* name, const Bytes& data) {
    const Bytes named = Text(name) + data;
    return Number(data.size(), 4, true) + named + Number(BitwiseCRC(named), 4, true);
}
Bytes Png(u32 width, u8 bits, u8 colour, const Bytes& pixels, u32 height = kRows) {
    Bytes rows;
    for (std::size_t y = 0; y < kRows; ++y) {
        const auto row = pixels.begin() + static_cast<i64>(y * pixels.size() / kRows);
        rows = rows + Bytes{0} + Bytes(row, row + static_cast<i64>(pixels.size() / kRows));
    }
    const Bytes head = Number(width, 4, true) + Number(height, 4, true) + Bytes{bits, colour, 0, 0, 0};
    return Bytes{0x89} + Text("PNG\r\n\x1A\n") + Chunk("IHDR", head) + Chunk("IDAT", Stored(rows)) + Chunk("IEND", {});
}

/// What stands in the only tile of 16 x 16 pixels.
Bytes Tile() {
    Bytes tile;
    for (std::size_t y = 0; y < 16; ++y)
        for (std::size_t x = 0; x < 16; ++x)
            tile = tile + Number(y < kRows && x < kColumns ? kCounts[y * kColumns + x] : 0xDEAD, 2, false);
    return tile;
}

struct SCase {
    const char* what;
    Bytes file;
    u64 frames = 1;
    bool inPlace = false;
};
std::vector<SCase> Files() {
    const Bytes little = CountBytes(false), big = CountBytes(true);
    return {{"NumPy", Numpy("<u2", "(2, 3, 5)", little + little), 2, true},
            {"NumPy, one frame, high byte first", Numpy(">u2", "(3, 5)", big), 1, true},
            {"TIFF", Tiff(false, {}, little, 3), 3, true},
            {"TIFF, high byte first", Tiff(true, {}, big, 2), 2, true},
            {"TIFF by LZW", Tiff(false, {.compression = 5}, Lzw(little), 2), 2},
            {"TIFF by Deflate, high byte first", Tiff(true, {.compression = 8}, Stored(big), 2), 2},
            {"TIFF by PackBits", Tiff(false, {.compression = 32773}, PackBits(little))},
            {"TIFF in tiles", Tiff(false, {.tile = 16}, Tile())},
            {"PNG", Png(kColumns, 16, 0, big)}};
}

TEST(ArrayFile, GivesItsCounts) {
    const CTestFolder folder;
    for (const SCase& c : Files()) {
        const CSource source = Open(folder.Put("file", c.file));
        EXPECT_TRUE(SaysItsFormat(folder.At("file"))) << c.what;
        EXPECT_EQ(source.Format().width * 100 + source.Format().height, kColumns * 100 + kRows) << c.what;
        EXPECT_EQ(source.Kind(), ESource::Counts) << c.what;
        ASSERT_EQ(source.Count(), c.frames) << c.what;
        EXPECT_TRUE(source.Findings().empty()) << c.what;
        const auto last = c.frames - 1;
        SRawFrame frame;
        source.Read(last, frame);
        EXPECT_EQ(frame.bytes, CountBytes(false)) << c.what;
        if (c.inPlace)
            EXPECT_EQ(source.Find(last).size, frame.bytes.size()) << c.what;
        else
            EXPECT_EQ(FactsOf([&] { source.Find(last); }).id, EError::WrongArgument) << c.what;
        EXPECT_EQ(CFrameIndex(source).Pixels().has_value(), c.inPlace) << c.what;
        EXPECT_EQ(FactsOf([&] { source.Read(c.frames, frame); }).id, EError::NoSuchFrame) << c.what;
    }
}

TEST(ArrayFile, RefusesOtherPixelsBeforeItTakesMemory) {
    const CTestFolder folder;
    const Bytes counts = CountBytes(true);
    const std::pair<Bytes, const char*> cases[] = {
        {Png(kColumns, 8, 0, Bytes(15)), "8 bits"},
        {Png(kColumns, 16, 2, Bytes(90)), "16 bits of colours"},
        {Png(10000, 16, 0, counts, 10000), "10000 x 10000"},
        {Tiff(false, {.bits = 8}, Bytes(15)), "8 bits"},
        {Tiff(false, {.samples = 3}, Bytes(90)), "3 samples"},
        {Tiff(false, {.compression = 7}, Bytes(90)), "compression 7"},
        {Tiff(false, {.compression = 8, .width = 10000, .height = 10000}, Bytes(8)), "10000 x 10000"},
        {Numpy("<f4", "(3, 5)", Bytes(60)), "<f4"},
        {Numpy("<u2", "(3, 5, 1, 1)", counts), "(3, 5, 1, 1)"}};
    for (const auto& [file, found] : cases) {
        const SErrorFacts facts = FactsOf([&, path = folder.Put("file", file)] { Open(path); });
        EXPECT_EQ(facts.id, EError::UnknownFormat) << found;
        EXPECT_NE(facts.found.find(found), std::string::npos) << facts.found;
    }
}

/// Each file cut at each length, and with each of its bytes changed in two ways: it gives frames of its size or an
/// error, and a cut one never as many frames as before without a word.
TEST(ArrayFile, AnswersRubbish) {
    const CTestFolder folder;
    const auto look = [&](const Bytes& file) {
        u64 read = 0;
        std::filesystem::remove(folder.At("file"));  // a file that is emptied has the system wait for the disk
        try {
            const CSource source = Open(folder.Put("file", file));
            SRawFrame frame;
            for (u64 i = 0; i < source.Count(); ++i) {
                source.Read(i, frame);
                EXPECT_EQ(frame.bytes.size(), u64{2} * source.Format().PixelCount());
                EXPECT_LE(frame.bytes.size(), 32768 * file.size());
                ++read;
            }
            if (source.Worst() == EWeight::Damage) return u64{0};
        } catch (const CError&) {
            return u64{0};
        }
        return read;
    };
    for (const SCase& c : Files()) {
        for (std::size_t size = 0; size < c.file.size(); ++size)
            EXPECT_EQ(look(Bytes(c.file.begin(), c.file.begin() + static_cast<i64>(size))), 0u)
                << c.what << ' ' << size;
        for (std::size_t at = 0; at < c.file.size(); ++at) {
            for (const u8 flip : {u8{1}, u8{0xFF}}) {
                Bytes changed = c.file;
                changed[at] ^= flip;
                look(changed);
            }
        }
    }
}

}  // namespace
}  // namespace ovix::measure
