#include "bench/support/peers.h"

#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <algorithm>
#include <limits>

#ifdef OVIX_BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

#define OVIX_BY_HAND __attribute__((target("avx2,fma"), noinline))

namespace ovix::bench {

namespace {

bool HasAvx2() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }

struct SFigures {
    double minimum, maximum, sum, squares;
};

/// One pixel after the other; `mask` may be null.
template <class T>
SFigures Plain(const std::vector<T>& frame, const u8* mask) {
    SFigures f{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), 0, 0};
    for (std::size_t i = 0; i < frame.size(); ++i) {
        if (mask && !mask[i]) continue;
        const double v = frame[i];
        if (v < f.minimum) f.minimum = v;
        if (v > f.maximum) f.maximum = v;
        f.sum += v;
        f.squares += v * v;
    }
    return f;
}

OVIX_BY_HAND __m256 LoadFloats(const float* x) { return _mm256_loadu_ps(x); }
OVIX_BY_HAND __m256 LoadFloats(const u16* x) {
    return _mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x))));
}

double Sum(const double* lanes) { return lanes[0] + lanes[1] + lanes[2] + lanes[3]; }

/// Sums in any order, and no places of the extremes.
struct SLaneFigures {
    __m256 minimum, maximum;
    __m256d sum[2], squares[2];

    OVIX_BY_HAND SLaneFigures() {
        minimum = _mm256_set1_ps(std::numeric_limits<float>::infinity());
        maximum = _mm256_sub_ps(_mm256_setzero_ps(), minimum);
        for (int h = 0; h < 2; ++h) sum[h] = squares[h] = _mm256_setzero_pd();
    }
    /// `low` and `high` are the pixels as the extremes see them.
    __attribute__((target("avx2,fma"), always_inline)) void Add(__m256 v, __m256 low, __m256 high) {
        minimum = _mm256_min_ps(minimum, low);
        maximum = _mm256_max_ps(maximum, high);
        const __m256d halves[] = {_mm256_cvtps_pd(_mm256_castps256_ps128(v)),
                                  _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1))};
        for (int h = 0; h < 2; ++h) {
            sum[h] = _mm256_add_pd(sum[h], halves[h]);
            squares[h] = _mm256_fmadd_pd(halves[h], halves[h], squares[h]);
        }
    }
    OVIX_BY_HAND SFigures Figures() const {
        float least[8], greatest[8];
        double sums[4], squareSums[4];
        _mm256_storeu_ps(least, minimum);
        _mm256_storeu_ps(greatest, maximum);
        _mm256_storeu_pd(sums, _mm256_add_pd(sum[0], sum[1]));
        _mm256_storeu_pd(squareSums, _mm256_add_pd(squares[0], squares[1]));
        return {*std::min_element(least, least + 8), *std::max_element(greatest, greatest + 8), Sum(sums),
                Sum(squareSums)};
    }
};

/// Eight pixels at a time.
template <class T>
OVIX_BY_HAND SFigures ByHand(const std::vector<T>& frame, const u8* mask) {
    SLaneFigures figures;
    const __m256 highest = figures.minimum, lowest = figures.maximum;
    for (std::size_t i = 0; i + 8 <= frame.size(); i += 8) {
        __m256 v = LoadFloats(frame.data() + i);
        __m256 low = v, high = v;
        if (mask) {
            const __m256i bytes = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(mask + i)));
            const __m256 out = _mm256_castsi256_ps(_mm256_cmpeq_epi32(bytes, _mm256_setzero_si256()));
            low = _mm256_blendv_ps(v, highest, out);
            high = _mm256_blendv_ps(v, lowest, out);
            v = _mm256_andnot_ps(out, v);
        }
        figures.Add(v, low, high);
    }
    return figures.Figures();
}

template <class T>
std::vector<SPeer> AllStats(const std::vector<std::vector<T>>& frames, const u8* mask) {
    std::vector<SPeer> peers = {
        {"plain", [=, &frames](u32 lane) { benchmark::DoNotOptimize(Plain(frames[lane], mask)); }}};
    if (HasAvx2()) {
        peers.push_back({"by hand", [=, &frames](u32 lane) { benchmark::DoNotOptimize(ByHand(frames[lane], mask)); }});
    }
#ifdef OVIX_BENCH_OPENCV
    constexpr int kType = sizeof(T) == 2 ? CV_16UC1 : CV_32FC1;
    peers.push_back({"OpenCV", [=, &frames](u32 lane) {
                         const int count = static_cast<int>(frames[lane].size());
                         const cv::Mat pixels(1, count, kType, const_cast<T*>(frames[lane].data()));
                         const cv::Mat where = mask ? cv::Mat(1, count, CV_8UC1, const_cast<u8*>(mask)) : cv::Mat();
                         cv::Scalar mean, deviation;
                         double low = 0, high = 0;
                         int at[2];
                         cv::meanStdDev(pixels, mean, deviation, where);
                         cv::minMaxIdx(pixels, &low, &high, at, nullptr, where);
                         benchmark::DoNotOptimize(mean);
                     }});
#endif
    return peers;
}

OVIX_BY_HAND void GatherLut(const std::vector<u16>& in, std::vector<float>& out, const float* lut) {
    for (std::size_t i = 0; i + 8 <= in.size(); i += 8) {
        const __m128i counts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in.data() + i));
        _mm256_storeu_ps(out.data() + i, _mm256_i32gather_ps(lut, _mm256_cvtepu16_epi32(counts), 4));
    }
}

float Corrected(const std::vector<u16>& in, const STables& tables, u32 i) {
    const u32 j = tables.replace[i];
    return in[j] * tables.gain[j] + tables.offset[j];
}

/// Eight pixels; one by one where the map moves any of them.
__attribute__((target("avx2,fma"), always_inline)) inline __m256 CorrectedByHand(const std::vector<u16>& in,
                                                                                 const STables& tables, u32 i) {
    const __m256i map = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(tables.replace.data() + i));
    const __m256i places =
        _mm256_add_epi32(_mm256_set1_epi32(static_cast<int>(i)), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    const __m256i moved = _mm256_xor_si256(map, places);
    if (!_mm256_testz_si256(moved, moved)) [[unlikely]] {
        float values[8];
        for (u32 k = 0; k < 8; ++k) values[k] = Corrected(in, tables, i + k);
        return _mm256_loadu_ps(values);
    }
    const __m128i offsets = _mm_loadu_si128(reinterpret_cast<const __m128i*>(tables.offset.data() + i));
    const __m256 product = _mm256_mul_ps(LoadFloats(in.data() + i), _mm256_loadu_ps(tables.gain.data() + i));
    return _mm256_add_ps(product, _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(offsets)));
}

OVIX_BY_HAND void CorrectByHand(const std::vector<u16>& in, std::vector<float>& out, const STables& tables) {
    for (u32 i = 0; i + 8 <= in.size(); i += 8) {
        const __m256 low = _mm256_max_ps(CorrectedByHand(in, tables, i), _mm256_setzero_ps());
        _mm256_storeu_ps(out.data() + i, _mm256_min_ps(low, _mm256_set1_ps(16383)));
    }
}

OVIX_BY_HAND SFigures ChainByHand(const std::vector<u16>& in, std::vector<float>& out, std::vector<u8>& status,
                                  const STables& tables, const float* lut, const u8* statusLut) {
    SLaneFigures figures;
    for (u32 i = 0; i + 8 <= in.size(); i += 8) {
        const __m256i whole = _mm256_cvttps_epi32(CorrectedByHand(in, tables, i));
        const __m256i count =
            _mm256_min_epi32(_mm256_max_epi32(whole, _mm256_setzero_si256()), _mm256_set1_epi32(16383));
        const __m256 value = _mm256_i32gather_ps(lut, count, 4);
        _mm256_storeu_ps(out.data() + i, value);
        const __m256i flags = _mm256_i32gather_epi32(reinterpret_cast<const int*>(statusLut), count, 1);
        const __m256i bytes = _mm256_and_si256(flags, _mm256_set1_epi32(0xFF));
        const __m128i words = _mm_packus_epi32(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(status.data() + i), _mm_packus_epi16(words, words));
        figures.Add(value, value, value);
    }
    return figures.Figures();
}

OVIX_BY_HAND void TruncateByHand(const std::vector<float>& in, std::vector<u16>& out) {
    for (std::size_t i = 0; i + 16 <= in.size(); i += 16) {
        const __m256i low = _mm256_cvttps_epi32(_mm256_loadu_ps(in.data() + i));
        const __m256i high = _mm256_cvttps_epi32(_mm256_loadu_ps(in.data() + i + 8));
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi32(low, high), 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out.data() + i), packed);
    }
}

}  // namespace

std::vector<SPeer> StatsPeers(const std::vector<std::vector<u16>>& frames) { return AllStats(frames, nullptr); }
std::vector<SPeer> StatsPeers(const std::vector<std::vector<float>>& frames) { return AllStats(frames, nullptr); }
std::vector<SPeer> MaskPeers(const std::vector<std::vector<u16>>& frames, const std::vector<u8>& mask) {
    return AllStats(frames, mask.data());
}
std::vector<SPeer> MaskPeers(const std::vector<std::vector<float>>& frames, const std::vector<u8>& mask) {
    return AllStats(frames, mask.data());
}

std::vector<SPeer> LutPeers(const std::vector<std::vector<u16>>& in, std::vector<std::vector<float>>& out,
                            const std::vector<float>& lut) {
    std::vector<SPeer> peers = {{"plain", [&](u32 lane) {
                                     for (std::size_t i = 0; i < in[lane].size(); ++i) out[lane][i] = lut[in[lane][i]];
                                 }}};
    if (HasAvx2()) peers.push_back({"by hand", [&](u32 lane) { GatherLut(in[lane], out[lane], lut.data()); }});
    return peers;
}

std::vector<SPeer> NucPeers(const std::vector<std::vector<u16>>& in, std::vector<std::vector<float>>& out,
                            const STables& tables) {
    std::vector<SPeer> peers = {{"plain", [&](u32 lane) {
                                     for (u32 i = 0; i < in[lane].size(); ++i)
                                         out[lane][i] = std::clamp(Corrected(in[lane], tables, i), 0.0f, 16383.0f);
                                 }}};
    if (HasAvx2()) peers.push_back({"by hand", [&](u32 lane) { CorrectByHand(in[lane], out[lane], tables); }});
#ifdef OVIX_BENCH_OPENCV
    peers.push_back({"OpenCV", [&](u32 lane) {
                         const int count = static_cast<int>(tables.gain.size());
                         const cv::Mat counts(1, count, CV_16UC1, const_cast<u16*>(in[lane].data()));
                         const cv::Mat gains(1, count, CV_32FC1, const_cast<float*>(tables.gain.data()));
                         const cv::Mat offsets(1, count, CV_16SC1, const_cast<i16*>(tables.offset.data()));
                         cv::Mat to(1, count, CV_32FC1, out[lane].data());
                         cv::multiply(counts, gains, to, 1, CV_32F);
                         cv::add(to, offsets, to, cv::noArray(), CV_32F);
                         cv::min(to, 16383, to);
                         cv::max(to, 0, to);
                     }});
#endif
    return peers;
}

std::vector<SPeer> ChainPeers(const std::vector<std::vector<u16>>& in, std::vector<std::vector<float>>& out,
                              std::vector<std::vector<u8>>& status, const STables& tables,
                              const std::vector<float>& lut, const std::vector<u8>& statusLut) {
    if (!HasAvx2()) return {};
    return {{"by hand", [&](u32 lane) {
                 benchmark::DoNotOptimize(
                     ChainByHand(in[lane], out[lane], status[lane], tables, lut.data(), statusLut.data()));
             }}};
}

std::vector<SPeer> ConvertPeers(const std::vector<std::vector<float>>& in, std::vector<std::vector<u16>>& out) {
    std::vector<SPeer> peers = {{"plain", [&](u32 lane) {
                                     for (std::size_t i = 0; i < in[lane].size(); ++i) {
                                         out[lane][i] = static_cast<u16>(static_cast<i32>(in[lane][i]));
                                     }
                                 }}};
    if (HasAvx2()) peers.push_back({"by hand", [&](u32 lane) { TruncateByHand(in[lane], out[lane]); }});
#ifdef OVIX_BENCH_OPENCV
    peers.push_back({"OpenCV", [&](u32 lane) {
                         const int count = static_cast<int>(in[lane].size());
                         cv::Mat to(1, count, CV_16UC1, out[lane].data());
                         cv::Mat(1, count, CV_32FC1, const_cast<float*>(in[lane].data())).convertTo(to, CV_16U);
                     }});
#endif
    return peers;
}

}  // namespace ovix::bench
