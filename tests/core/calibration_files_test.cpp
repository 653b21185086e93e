#include "core/rcal_file.h"

#include <limits>

#include "core/file.h"
#include "core/norm_file.h"
#include "tests/support/byte_writer.h"
#include "tests/support/test_folder.h"

namespace ovix {
namespace {

using test::CByteWriter;
using test::CTestFolder;

void ExpectAllDamageRefused(const std::vector<u8>& good, const auto& refused) {
    for (std::size_t at = 0; at < good.size(); ++at) {
        std::vector<u8> flipped = good;
        flipped[at] ^= 0x10;
        EXPECT_TRUE(refused(flipped)) << "byte " << at;
        flipped.resize(at);
        EXPECT_TRUE(refused(flipped)) << "cut at " << at;
    }
}

/// The bytes with their right checksum behind them.
std::vector<u8> Sealed(CByteWriter writer) { return writer.U32(test::BitwiseCRC(writer.bytes)).bytes; }

CByteWriter Head(u32 version, u32 size, u32 type, u32 width, u32 height) {
    CByteWriter writer = CByteWriter().Text("OVIXNORM", 8).U32(version).U32(size);
    return writer.U32(type).U32(width).U32(height).U16(3).U16(0);
}

TEST(NormFile, HasTheDescribedBytes) {
    // The example of docs/formats/norm_file.md: an offset table of 2 by 1 for preset 3.
    const std::vector<u8> expected = Sealed(Head(0x10000, 20, 1, 2, 1).U16(0x10000 - 10).U16(300));
    const u8 crc[] = {0xC4, 0xB0, 0x55, 0x1D};
    EXPECT_TRUE(std::equal(std::begin(crc), std::end(crc), expected.end() - 4));
    const CTestFolder folder;
    const i16 offsets[] = {-10, 300};
    ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("a"), 2, 1, 3, offsets));
    EXPECT_EQ(folder.Get("a"), expected);
}

TEST(NormFile, ReadsBackEveryTable) {
    const CTestFolder folder;
    const float gains[] = {1.0f, 0.5f, -2.0f, 1e-30f, 3.0f, 4.0f};
    const i16 offsets[] = {0, -32768, 32767, 1, 2, 3};
    const u8 mask[] = {0, 1, 0, 255, 0, 0};
    const u32 map[] = {0, 0, 2, 5, 6, 0xFFFFFFFF};  // the last two point behind the table
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, folder.Path("g"), 3, 2, 7, gains));
    ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("o"), 2, 3, 0, offsets));
    ASSERT_TRUE(CNormFile::SaveBadPixelTable(FileSystem, folder.Path("b"), 6, 1, 255, mask, map));

    CNormFile file;
    EXPECT_EQ(file.GetGains(), nullptr);
    ASSERT_TRUE(file.Load(FileSystem, folder.Path("g")));
    EXPECT_TRUE(file.GetType() == GainTable && file.xPixels() == 3 && file.yPixels() == 2 && file.GetPreset() == 7);
    EXPECT_TRUE(std::memcmp(file.GetGains(), gains, sizeof gains) == 0 && !file.GetOffsets());
    const CNormFile kept(file);
    ASSERT_TRUE(file.Load(FileSystem, folder.Path("o")));
    EXPECT_TRUE(file.GetType() == OffsetTable && file.xPixels() == 2 && file.yPixels() == 3);
    EXPECT_TRUE(std::memcmp(file.GetOffsets(), offsets, sizeof offsets) == 0 && !file.GetGains());
    EXPECT_EQ(CNormFile(kept).GetGains()[5], 4.0f);

    ASSERT_TRUE(file.Load(FileSystem, folder.Path("b")));
    EXPECT_EQ(file.GetType(), BadPixelTable);
    EXPECT_EQ(std::memcmp(file.GetBadPixels().mask, mask, sizeof mask), 0);
    const u32 safe[] = {0, 0, 2, 5, 4, 5};
    EXPECT_EQ(std::memcmp(file.GetBadPixels().map, safe, sizeof safe), 0);
}

TEST(NormFile, RefusesDamageAndStaysAsItWas) {
    const CTestFolder folder;
    const CString path = folder.Path("table");
    const float gains[] = {1.0f, 2.0f, 3.0f, 4.0f};
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, path, 2, 2, 0, gains));
    const std::vector<u8> good = folder.Get("table");
    CNormFile file;
    ASSERT_TRUE(file.Load(FileSystem, path));
    const auto refused = [&](const std::vector<u8>& bytes) {
        folder.Put("table", bytes);
        return !file.Load(FileSystem, path) && file.xPixels() == 2 && std::memcmp(file.GetGains(), gains, 16) == 0;
    };
    ExpectAllDamageRefused(good, refused);
    std::vector<u8> longer = good;
    longer.push_back(0);
    EXPECT_TRUE(refused(longer));

    // Wrong, but with a right checksum.
    EXPECT_TRUE(refused(Sealed(Head(0x20000, 20, 0, 1, 1).F32(1)))) << "another major version";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 20, 3, 1, 1).F32(1)))) << "no type";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 16, 0, 0, 1)))) << "no width";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 16, 0, 0x10000, 0x10000)))) << "a product that wraps";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 16, 0, 0xFFFF, 0xFFFF)))) << "more than the file holds";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 20, 2, 2, 1).U32(1)))) << "a mask without its map";
    EXPECT_FALSE(file.Load(FileSystem, folder.Path("none")));

    folder.Put("table", Sealed(Head(0x10001, 24, 0, 1, 1).F32(8).U32(9)));
    EXPECT_TRUE(file.Load(FileSystem, path)) << "a later minor version appends fields";
    EXPECT_EQ(file.GetGains()[0], 8.0f);
}

TEST(NormFile, ReportsWhatCouldNotBeSaved) {
    const CTestFolder folder;
    const i16 offset = 1;
    EXPECT_FALSE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("none/a"), 1, 1, 0, &offset));
    EXPECT_FALSE(CNormFile::SaveOffsetTable(FileSystem, L"/dev/full", 1, 1, 0, &offset));
    EXPECT_FALSE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("a"), 0, 5, 0, nullptr));
    EXPECT_FALSE(FileSystem->Open(folder.Path("a"), IFileSystem::OpenForReading));
}

using test::BitwiseCRC;
using Numbers = TArray<double>;

/// A record spelled from its description: preset 0 is given, the others are empty.
std::vector<u8> Record(double low, double high, const CByteWriter& preset0) {
    const CByteWriter content = CByteWriter().F64(low).F64(high).Append(preset0).Zeros(7 * 36);
    return Sealed(CByteWriter().Text("OVIXRCAL", 8).U32(0x10000).U32(content.bytes.size()).Append(content));
}

bool Load(CRCalFile& calibration, const std::vector<u8>& bytes, u64* left = nullptr) {
    std::vector<u8> content = bytes;
    CMemFile file;
    file.Attach(content.data(), static_cast<u32>(content.size()), false);
    const bool loaded = calibration.Load(BorrowShared<IFile>(file), 0);
    if (left) *left = file.GetRemaining();
    return loaded;
}

std::vector<u8> Save(const CRCalFile& calibration) {
    CMemFile file;
    EXPECT_TRUE(calibration.Save(BorrowShared<IFile>(file), 0));
    return {file.GetData(), file.GetData() + file.GetSize()};
}

CByteWriter FullPreset() {
    CByteWriter preset;
    preset.U32(2).U32(3).F64(1).F64(0.5).F64(0.25);        // order 2
    preset.U32(2).F64(10).F64(2);                          // temperature polynomial
    preset.U32(2).F64(1).F64(4);                           // radiances
    preset.U32(2).F64(20).F64(80);                         // temperatures
    preset.U32(3).F64(7.5).U32(1);                         // a background for each pixel; the value; one image
    return preset.U32(2).U32(1).U32(2).F64(100).F64(101);  // of 2 by 1
}

TEST(RCalFile, HasTheDescribedBytes) {
    // The example of docs/formats/rcal_file.md: a polynomial of order 1, no temperatures, one background of 2 by 1.
    CByteWriter preset;
    preset.U32(1).U32(2).F64(-0.5).F64(0.25).U32(0).U32(0).U32(0);
    preset.U32(3).F64(0).U32(1).U32(2).U32(1).U32(2).F64(1).F64(2);
    const std::vector<u8> expected = Record(3, 5, preset);
    const u8 crc[] = {0x00, 0xA4, 0x3D, 0xEA};
    EXPECT_TRUE(std::equal(std::begin(crc), std::end(crc), expected.end() - 4));

    CRCalFile calibration;
    EXPECT_TRUE(calibration.SetBandpass(3, 5) && calibration.SetPolynomial(0, 1, {-0.5, 0.25}) &&
                calibration.SetBackgroundFile(0, 2, 1, {1, 2}));
    EXPECT_EQ(Save(calibration), expected);
    EXPECT_TRUE(Load(calibration, expected));
}

TEST(RCalFile, ReadsBackEveryField) {
    const std::vector<u8> record = Record(3.0, 5.0, FullPreset());
    CRCalFile calibration;
    u64 left = 0;
    std::vector<u8> followed = record;
    followed.insert(followed.end(), 5, 0xEE);
    ASSERT_TRUE(Load(calibration, followed, &left));
    EXPECT_EQ(left, 5u);  // what follows the record is another's
    EXPECT_EQ(Save(calibration), record);

    int order = 0;
    u32 crc = 0;
    double low = 0, high = 0, value = 0;
    BACKGROUND_TYPE type{};
    Numbers coefficients, radiances, temperatures, background;
    EXPECT_TRUE(calibration.HasCoefficients());
    EXPECT_TRUE(calibration.GetPolyOrder(0, order) && order == 2);
    EXPECT_TRUE(calibration.GetCoefficients(0, coefficients) && coefficients.size() == 3 && coefficients[2] == 0.25);
    EXPECT_TRUE(calibration.GetTempPolyOrder(0, order) && order == 1);
    EXPECT_TRUE(calibration.GetTempCoefficients(0, coefficients) && coefficients[0] == 10);
    EXPECT_TRUE(calibration.GetLookup(0, radiances, temperatures) && radiances[1] == 4 && temperatures[1] == 80);
    EXPECT_TRUE(calibration.GetBackgroundType(0, type) && type == BackgroundFile);
    EXPECT_FALSE(calibration.GetBackgroundValue(0, value));
    EXPECT_TRUE(calibration.GetBackgroundFile(0, 2, 1, background) && background[1] == 101);
    EXPECT_TRUE(calibration.GetBackgroundFileCRC(0, 2, 1, crc));
    EXPECT_EQ(crc, BitwiseCRC(CByteWriter().F64(100).F64(101).bytes));
    EXPECT_FALSE(calibration.GetBackgroundFileCRC(0, 1, 2, crc));
    EXPECT_TRUE(calibration.GetBandpass(low, high) && low == 3 && high == 5);
}

TEST(RCalFile, RefusesDamageAndStaysAsItWas) {
    const std::vector<u8> good = Record(3.0, 5.0, FullPreset());
    CRCalFile calibration;
    ASSERT_TRUE(Load(calibration, good));
    const auto refused = [&](const std::vector<u8>& bytes) {
        return !Load(calibration, bytes) && Save(calibration) == good;
    };
    ExpectAllDamageRefused(good, refused);
    // Wrong, but with a right checksum.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const CByteWriter none = CByteWriter().Zeros(36);
    const CByteWriter noPolynomial = CByteWriter().Zeros(8);
    const CByteWriter noTables = CByteWriter().Zeros(20);
    const std::pair<const char*, std::vector<u8>> cases[] = {
        {"half a band", Record(0, 5, none)},
        {"a band turned around", Record(5, 3, none)},
        {"a band without an end", Record(3, std::numeric_limits<double>::infinity(), none)},
        {"too few coefficients", Record(3, 5, CByteWriter().U32(2).U32(2).F64(1).F64(1).Zeros(28))},
        {"no order code", Record(3, 5, CByteWriter().U32(0xFFFFFFFD).U32(2).F64(1).F64(1).Zeros(28))},
        {"an order that wraps", Record(3, 5, CByteWriter().U32(0x7FFFFFFF).U32(1).F64(1).Zeros(28))},
        {"coefficients beyond the record", Record(3, 5, CByteWriter().U32(2).U32(0xFFFFFFFF).Zeros(28))},
        {"a temperature polynomial of order 0", Record(3, 5, CByteWriter(noPolynomial).U32(1).F64(1).Zeros(24))},
        {"a table of two lengths", Record(3, 5, CByteWriter(noPolynomial).U32(0).U32(1).F64(1).U32(0).Zeros(16))},
        {"falling radiances",
         Record(3, 5, CByteWriter(noPolynomial).U32(0).U32(2).F64(2).F64(1).U32(2).F64(1).F64(2).Zeros(16))},
        {"a radiance that is no number",
         Record(3, 5, CByteWriter(noPolynomial).U32(0).U32(2).F64(2).F64(nan).U32(2).F64(1).F64(2).Zeros(16))},
        {"an unknown background", Record(3, 5, CByteWriter(noTables).U32(1).F64(0).U32(0))},
        {"images that are not there", Record(3, 5, CByteWriter(noTables).U32(3).F64(0).U32(0xFFFFFFFF))},
        {"an image of no size", Record(3, 5, CByteWriter(noTables).U32(3).F64(0).U32(1).U32(0).U32(0).U32(0))},
        {"an image of another size",
         Record(3, 5, CByteWriter(noTables).U32(3).F64(0).U32(1).U32(2).U32(2).U32(2).F64(1).F64(1))},
        {"an image whose size wraps",
         Record(3, 5, CByteWriter(noTables).U32(3).F64(0).U32(1).U32(0x80000001).U32(2).U32(2).F64(1).F64(1))}};
    for (const auto& [what, record] : cases) EXPECT_TRUE(refused(record)) << what;
    EXPECT_TRUE(Load(calibration, Record(0, 0, none))) << "nothing at all is a calibration";
}

TEST(RCalFile, IsAnEmptyValueAtFirst) {
    const CRCalFile empty;
    int order = 42;
    u32 crc = 42;
    double low = 42, high = 42;
    BACKGROUND_TYPE type = BackgroundFile;
    Numbers numbers{42}, others{42};
    EXPECT_FALSE(empty.HasCoefficients() || empty.GetPolyOrder(0, order) || empty.GetCoefficients(0, numbers) ||
                 empty.GetTempCoefficients(0, numbers) || empty.GetBackgroundValue(0, low) ||
                 empty.GetBackgroundFile(0, 1, 1, numbers) || empty.GetBandpass(low, high));
    EXPECT_TRUE(order == 42 && low == 42 && high == 42 && numbers[0] == 42);
    for (const int preset : {-1, 8, INT32_MAX, 7}) {
        const bool there = preset == 7;
        EXPECT_EQ(empty.GetTempPolyOrder(preset, order), there);
        EXPECT_EQ(empty.GetBackgroundType(preset, type), there);
        EXPECT_EQ(empty.GetLookup(preset, numbers, others), there);
        EXPECT_FALSE(empty.GetBackgroundFileCRC(preset, 1, 1, crc));
    }
    EXPECT_TRUE(order == 0 && crc == 42 && type == NoBackground && numbers.size() == 0 && others.size() == 0);
}

TEST(RCalFile, TakesOnlyWhatIsACalibration) {
    CRCalFile calibration;
    EXPECT_TRUE(calibration.SetPolynomial(0, -2, {1, 2}) && calibration.SetPolynomial(1, 0, {1}));
    EXPECT_TRUE(calibration.SetBackgroundFile(0, 2, 1, {5, 6}) && calibration.SetBackgroundFile(0, 1, 1, {7}) &&
                calibration.SetBackgroundFile(0, 2, 2, {8, 8, 8, 8}) && calibration.SetBackgroundFile(0, 2, 1, {9, 9}));
    const CRCalFile before(calibration);
    EXPECT_FALSE(calibration.SetPolynomial(8, 0, {1}) || calibration.SetPolynomial(0, 1, {1}) ||
                 calibration.SetPolynomial(0, -3, {1, 2}) || calibration.SetTempPolynomial(0, 0, {1}) ||
                 calibration.SetTempPolynomial(0, -1, {1, 2}) || calibration.SetLookup(0, {1, 1}, {2, 3}) ||
                 calibration.SetLookup(0, {1}, {}) || calibration.SetBackgroundFile(0, 2, 2, {1, 2}) ||
                 calibration.SetBackgroundFile(0, 0, 0, {}) || calibration.SetBackgroundValue(-1, 1) ||
                 calibration.SetBandpass(0, 5) || calibration.SetBandpass(5, 5));
    EXPECT_EQ(Save(calibration), Save(before));

    Numbers background;
    EXPECT_TRUE(before.GetBackgroundFile(0, 2, 1, background) && background[0] == 9);
    EXPECT_TRUE(before.GetBackgroundFile(0, 1, 1, background) && background[0] == 7);
    EXPECT_TRUE(before.GetBackgroundFile(0, 2, 2, background) && background[0] == 8);
    double value = 0;
    EXPECT_TRUE(calibration.SetBackgroundValue(0, 4) && calibration.GetBackgroundValue(0, value) && value == 4);
    EXPECT_FALSE(calibration.GetBackgroundFile(0, 2, 1, background));
    EXPECT_TRUE(before.GetBackgroundFile(0, 2, 1, background)) << "copies are independent";
    EXPECT_TRUE(calibration.SetNoBackground(0) && !calibration.GetBackgroundValue(0, value));
    calibration.DefaultCal();
    EXPECT_EQ(Save(calibration), Save(CRCalFile()));
}

}  // namespace
}  // namespace ovix
