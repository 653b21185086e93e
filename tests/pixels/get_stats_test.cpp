#include "reduce/pixels/stats.h"

#include <functional>

#include "core/visit.h"
#include "support/forms.h"
#include "support/simd_targets.h"
#include "support/stats_fields.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// One pixel as a route visits it.
struct SVisit {
    SVisit(auto pixel, u8 flags, u32 at, u32 frameIndex, u32 width)
        : value(static_cast<double>(pixel)),
          status(flags),
          index(at),
          point{static_cast<i32>(frameIndex % width), static_cast<i32>(frameIndex / width)} {}

    double value;
    u8 status;
    u32 index;
    SPoint point;
};

enum class ERoute { Void, Boolean };

/// The figures of a walk, one after the other as they are described, over what the record held.
CStats Reference(CStats s, const std::vector<SVisit>& visits, bool hasStatus, ERoute route, u32 width) {
    const auto counts = [&](const SVisit& v) { return !hasStatus || !(v.status & 24); };
    const auto find = [&](bool all, const auto& before, double& value, u32& index, SPoint& point, u8& status) {
        bool any = false;
        for (const SVisit& v : visits) {
            if ((!all && !counts(v)) || (any && !before(v.value, value))) continue;
            value = v.value, index = v.index, point = v.point, status = hasStatus ? v.status : u8{0};
            any = true;
        }
    };
    if (route == ERoute::Boolean) s.allMinimumIndex = s.allMaximumIndex = 0xFFFFFFFF;
    s.minimumStatus = s.maximumStatus = 0;
    find(false, std::less(), s.minimum, s.minimumIndex, s.minimumPosition, s.minimumStatus);
    find(false, std::greater(), s.maximum, s.maximumIndex, s.maximumPosition, s.maximumStatus);
    double least = s.allMinimum, greatest = s.allMaximum;
    u8 unused = 0;
    find(true, std::less(), least, s.allMinimumIndex, s.allMinimumPosition, unused);
    find(true, std::greater(), greatest, s.allMaximumIndex, s.allMaximumPosition, unused);
    if (hasStatus || route == ERoute::Void) s.allMinimum = least, s.allMaximum = greatest;

    SPoint &low = s.boundsTopLeft, &high = s.boundsBottomRight;
    if (!visits.empty()) low = high = visits[0].point;
    double squares = 0;
    s.sum = 0, s.count = 0, s.statusUnion = 0;
    for (const SVisit& v : visits) {
        low = {std::min(low.x, v.point.x), std::min(low.y, v.point.y)};
        high = {std::max(high.x, v.point.x), std::max(high.y, v.point.y)};
        if (!counts(v)) continue;
        if (hasStatus) s.statusUnion = static_cast<u8>(s.statusUnion | v.status);
        s.sum += v.value;
        squares += v.value * v.value;
        ++s.count;
    }
    if (s.count) s.mean = s.sum / s.count;
    s.variance = s.count < 2 ? 0 : squares / s.count - s.mean * s.mean;
    s.standardDeviation = std::sqrt(s.variance);
    s.firstIndex = static_cast<u32>(low.y) * width + static_cast<u32>(low.x);
    s.lastIndex = static_cast<u32>(high.y) * width + static_cast<u32>(high.x);
    s.boundsWidth = s.count ? static_cast<u32>(high.x - low.x + 1) : 0;
    s.boundsHeight = s.count ? static_cast<u32>(high.y - low.y + 1) : 0;
    s.centerX = static_cast<float>(low.x + high.x) / 2;
    s.centerY = static_cast<float>(low.y + high.y) / 2;
    return s;
}

/// A frame with many ties among its extremes; far-off values for the types whose sums round. NaN is an extreme only
/// where it comes first.
template <class T>
std::vector<T> Frame(u32 count, u32 seed, bool withNaN) {
    std::mt19937_64 random(seed);
    std::vector<T> frame(count);
    for (T& pixel : frame) {
        if constexpr (std::is_floating_point_v<T>) {
            pixel = static_cast<T>(static_cast<double>(random() % 200) * 0.37 - 20);
        } else {
            pixel = static_cast<T>(random() % 3 ? random() : random() % 5);
        }
    }
    if (withNaN) frame[0] = frame[100] = std::numeric_limits<T>::quiet_NaN();
    return frame;
}

/// Status bytes for every mixture: none excluded, some, all.
std::vector<u8> Status(u32 count, int kind) {
    std::mt19937 random(17);
    std::vector<u8> status(count);
    for (u32 i = 0; i < count; ++i) {
        const u8 good = static_cast<u8>(random() % 8 + (random() % 4 ? 0 : 32));
        const bool excluded = kind == 2 || (kind == 1 && (i > 600 || i % 50 < 3));
        status[i] = static_cast<u8>(good | (excluded ? random() % 2 ? 8 : 16 : 0));
    }
    return status;
}

/// All routes, with a status of each kind, and last without one.
template <class T>
void CheckRoutes(u32 seed, bool withNaN = false) {
    const SForms forms;
    const u32 width = forms.width, height = forms.height, listed = static_cast<u32>(forms.indices.size());
    constexpr u32 kRow = 2048;
    std::vector<T> frame = Frame<T>(kRow, seed, withNaN);
    const STypedData data{frame.data(), DataTypeOf<T>()};
    std::vector<u8> mask = forms.mask;
    std::vector<u32> indices = forms.indices;
    for (int kind = 0; kind < 4; ++kind) {
        std::vector<u8> status = Status(kRow, kind);
        u8* flags = kind < 3 ? status.data() : nullptr;
        const auto check = [&](const std::string& what, ERoute route, const std::vector<SVisit>& visits,
                               const auto& getStats) {
            SCOPED_TRACE(what + ", status " + std::to_string(kind));
            CStats stats = Held();
            getStats(stats);
            CStats expected = Reference(Held(), visits, flags, route, what == "row" ? kRow : width);
            if (route == ERoute::Void && what != "list") {  // the centre has a test of its own
                expected.centerValue = stats.centerValue;
                expected.centerStatus = stats.centerStatus;
            }
            ExpectSame(stats, expected);
        };
        for (const EForm form : kForms) {
            std::vector<SVisit> visits;
            for (const u32 i : forms.Visited(form == EForm::M ? EForm::A : form)) {  // the mask does not count
                visits.emplace_back(frame[i], status[i], i, i, width);
            }
            check("form " + std::to_string(static_cast<int>(form)), ERoute::Boolean, visits, [&](CStats& stats) {
                const auto call = [&](auto... f) { return GetStats(stats, data, static_cast<const u8*>(flags), f...); };
                EXPECT_TRUE(forms.CallInFrame(form, call));
            });
        }
        if constexpr (std::is_same_v<T, u64>) continue;
        std::vector<SVisit> whole, masked, row, list;
        for (u32 i = 0; i < kRow; ++i) {
            row.emplace_back(frame[i], status[i], i, i, kRow);
            if (i >= forms.Count()) continue;
            whole.emplace_back(frame[i], status[i], i, i, width);
            if (mask[(height - 1 - i / width) * forms.stride + i % width]) masked.push_back(whole[i]);  // bottom-up
        }
        for (u32 n = 0; n < listed; ++n) list.emplace_back(frame[n], status[indices[n]], n, indices[n], width);
        const int w = forms.width, h = forms.height;
        const auto none = static_cast<u8*>(nullptr);
        check("whole", ERoute::Void, whole, [&](CStats& s) { GetStats(s, data, w, h, none, 0, flags); });
        check("mask", ERoute::Void, masked,
              [&](CStats& s) { GetStats(s, data, w, h, mask.data(), forms.stride, flags); });
        check("row", ERoute::Void, row, [&](CStats& s) { GetStats(s, data, flags, kRow); });
        check("list", ERoute::Void, list, [&](CStats& s) { GetStats(s, data, indices.data(), listed, w, h, flags); });
    }
}

TEST(GetStats, EveryRouteAndTypeFollowsTheWalk) {
    ForEachTarget([] {
        for (u32 type = Int8; type <= Flt64; ++type) {
            SCOPED_TRACE(type);
            Visit(static_cast<EDataType>(type), [&]<class T>(TElement<T>) {
                CheckRoutes<T>(type);
                if constexpr (std::is_floating_point_v<T>) CheckRoutes<T>(type, true);
            });
        }
    });
}

/// Rows of so many of the pixels, whole and through a mask.
template <class T>
void CheckRows(std::vector<T>& pixels, std::initializer_list<u32> counts) {
    std::mt19937 random(8);
    std::vector<u8> mask(pixels.size());
    for (u8& byte : mask) byte = random() % 3 ? 1 : 0;
    ForEachTarget([&] {
        for (const u32 count : counts) {
            SCOPED_TRACE(count);
            const u32 first = count % 3;
            std::vector<SVisit> visits, masked;
            for (u32 i = 0; i < count; ++i) {
                visits.emplace_back(pixels[first + i], u8{0}, i, i, count);
                if (mask[i]) masked.push_back(visits.back());
            }
            for (const bool isMasked : {false, true}) {
                CStats stats;
                GetStats(stats, {&pixels[first], DataTypeOf<T>()}, static_cast<int>(count), 1,
                         isMasked ? mask.data() : nullptr, count, nullptr);
                CStats expected = Reference(CStats(), isMasked ? masked : visits, false, ERoute::Void, count);
                expected.centerValue = stats.centerValue;
                ExpectSame(stats, expected);
            }
        }
    });
}

TEST(GetStats, CountsOfAnyLengthAndPlaceGiveTheSerialSums) {
    std::mt19937 random(8);
    // Beyond two million bright pixels the serial sum of squares rounds.
    std::vector<u16> pixels(2300000);
    for (u16& pixel : pixels) pixel = static_cast<u16>(65000 + random() % 536);
    pixels[70000] = 3;
    CheckRows(pixels, {1, 2, 7, 30, 31, 32, 33, 64, 65, 511, 16384, 16385, 16386, 100003, 2299990});
}

TEST(GetStats, FloatsOfAnyDistributionGiveTheSerialSums) {
    std::mt19937_64 random(9);
    const auto unit = [&] { return static_cast<double>(random() >> 11) * 0x1p-53; };
    const auto odd = [&] { return static_cast<double>(2 * (random() % 32768) + 1); };
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<const char*, std::function<double(u32)>> distributions[] = {
        {"a scene", [&](u32 i) { return 290 + 10 * std::sin(i * 1e-3) + unit(); }},
        {"values about 0", [&](u32) { return unit() * 70 - 20; }},
        {"many magnitudes", [&](u32) { return (unit() - 0.5) * std::ldexp(1, static_cast<int>(random() % 60)); }},
        {"sums that come back to 0", [&](u32 i) { return i % 5 ? i % 2 ? 1.1 : -1.1 : unit() * 1e-10; }},
        {"sums below 0", [&](u32) { return -1 / (unit() + 1e-9); }},
        {"squares half-way between two doubles", [&](u32) { return 1e6 + odd() / 1024; }},
        {"values half-way", [&](u32 i) { return i < 2 ? 0x1p54 : odd(); }},
        {"values half-way, below 0", [&](u32 i) { return i < 2 ? -0x1p53 : -odd() / 2; }},
        {"0, of either sign", [&](u32 i) { return i % 97 ? i % 2 ? 0.0 : -0.0 : unit(); }},
        {"infinities", [&](u32 i) { return i % 1500 ? unit() : inf; }},
        {"opposite ones, then NaN", [&](u32 i) { return i > 3000    ? nan
                                                        : i == 1500 ? -inf
                                                        : i == 70   ? inf
                                                                    : 1; }},
    };
    for (const auto& [name, pixelAt] : distributions) {
        SCOPED_TRACE(name);
        std::vector<float> pixels(20013);
        for (u32 i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<float>(pixelAt(i));
        CheckRows(pixels, {1, 63, 64, 65, 200, 1023, 1025, 20011});
    }
}

TEST(GetStats, NothingSelectedKeepsWhatTheRecordHeld) {
    u16 pixel = 7;
    u8 mask[] = {0};
    const STypedData data{&pixel, UInt16};
    CStats area = Held(), lines = Held(), stats = Held();
    ASSERT_TRUE(GetStats(area, data, nullptr, 1, 1, SArea{1, 0, 0, 0}));
    ASSERT_TRUE(GetStats(lines, data, &mask[0], 1, 1, TArray<SScanLine>()));
    ExpectSame(area, Reference(Held(), {}, false, ERoute::Boolean, 1));
    ExpectSame(lines, Reference(Held(), {}, true, ERoute::Boolean, 1));
    for (const auto& [width, height] : {std::pair{1, 1}, {0, 1}, {-1, 1}, {1, 0}, {1, -1}}) {
        stats.count = 9;
        GetStats(stats, data, width, height, width + height == 2 ? mask : nullptr, 1, nullptr);
        EXPECT_TRUE(stats.allMinimumIndex == 103 && stats.count == 0 && stats.boundsBottomRight == (SPoint{4, 2}));
    }
    GetStats(stats, data, nullptr, 0, 0, 0, nullptr);

    stats = Held();
    EXPECT_FALSE(GetStats(stats, data, nullptr, 0, 1) || GetStats(stats, data, nullptr, 1, 0));
    for (const EDataType type : {Opaque, NoPixels, UInt64}) {
        GetStats(stats, {&pixel, type}, nullptr, 1);
        EXPECT_FALSE(type != UInt64 && GetStats(stats, {&pixel, type}, nullptr, 1, 1));
        EXPECT_FALSE(type != UInt64 && GetStats(stats, {&pixel, type}, nullptr, 1, 1, SArea{}));
    }
    ExpectSame(stats, Held());
}

/// The pixels have the status 1, 2, 4 and so on.
template <class T>
void ExpectCenter(double value, int flags, std::vector<T> pixels, int width, int height, u8* mask = nullptr) {
    u8 status[12] = {1, 2, 4, 8, 16, 32};
    for (u8* given : {status, static_cast<u8*>(nullptr)}) {
        CStats stats;
        GetStats(stats, {pixels.data(), DataTypeOf<T>()}, width, height, mask, static_cast<u32>(width), given);
        EXPECT_TRUE(stats.centerValue == value && stats.centerStatus == (given ? flags : 0)) << stats.centerValue;
    }
}

TEST(GetStats, CentreIsThePixelOrTheMeanOfItsNeighbours) {
    ExpectCenter<u16>(50, 16, {1, 2, 3, 4, 50, 6, 7, 8, 9}, 3, 3);
    ExpectCenter<u16>(14, 32, {1, 2, 3, 4, 10, 21, 7, 8, 9, 9, 9, 9}, 4, 3);  // 21 and 7
    ExpectCenter<u16>(4.5, 15, {1, 2, 5, 10}, 2, 2);
    ExpectCenter<float>(2, 2, {1.5f, 2, 4}, 1, 3);
    ExpectCenter<float>(1.75, 3, {1.5f, 2}, 1, 2);
    ExpectCenter<float>(3.875, 15, {1.5f, 2, 4, 8}, 2, 2);
    // Integer sums have 32 bits; a pixel is whole.
    ExpectCenter<u32>(3705032704.0 / 2, 3, {4000000000U, 4000000000U}, 1, 2);
    ExpectCenter<i32>(-294967296.0 / 2, 3, {2000000000, 2000000000}, 1, 2);
    ExpectCenter<i64>(1.5, 3, {3, i64{1} << 40}, 1, 2);
    ExpectCenter<i64>(std::ldexp(1, 40), 2, {0, i64{1} << 40, 0}, 3, 1);
    ExpectCenter<i8>(-128, 3, {-128, -128}, 2, 1);
    // The box of a mask, whose last row belongs to the first row of the frame: columns 1 to 2 of row 0.
    u8 mask[] = {0, 0, 0, 0, 1, 1};
    ExpectCenter<u16>(25, 6, {1, 20, 30, 4, 5, 6}, 3, 2, mask);
}

}  // namespace
}  // namespace ovix::reduce
