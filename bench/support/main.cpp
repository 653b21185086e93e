#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "bench/support/kernel.h"

/// Measures every kernel beside a plain copy of as many bytes. The two take turns within one run and both are given as
/// medians, so that what else happens on the machine strikes both alike.
namespace ovix::bench {

namespace {

/// Streaming means four times a last-level cache of 32 MiB, so that nothing is left of a frame when it comes again.
constexpr double kStreamedBytes = 4.0 * 32 * 1024 * 1024;

struct SRow {
    std::string kernel, frame, mode;
    u32 pixels;
    double nanoseconds, share, wanted;
    std::string beside;
    double mostBeside, mostNanoseconds;
    bool isTable;
    std::vector<std::pair<std::string, double>> peers;  ///< nanoseconds a frame
};

std::vector<SRow>& Rows() {
    static std::vector<SRow> rows;
    return rows;
}

u32 LanesFor(double bytesPerFrame) { return static_cast<u32>(kStreamedBytes / bytesPerFrame) + 1; }

/// The copy beside a kernel: reads half of the kernel's bytes and writes the other half.
class CCopy {
  public:
    CCopy(std::size_t bytesPerFrame, u32 lanes)
        : half_(bytesPerFrame / 2), lanes_(lanes), from_(half_ * lanes, 1), to_(half_ * lanes, 2) {}

    void operator()() {
        const std::size_t at = half_ * (next_++ % lanes_);
        std::memcpy(to_.data() + at, from_.data() + at, half_);
        benchmark::DoNotOptimize(to_.data());
        benchmark::ClobberMemory();
    }

  private:
    std::size_t half_;
    u32 lanes_;
    u32 next_ = 0;
    std::vector<u8> from_, to_;
};

template <class F>
double Seconds(F&& f) {
    const auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::string SizeOf(const SRun& run) { return std::to_string(run.width) + "x" + std::to_string(run.height); }

void Measure(benchmark::State& state, const SKernel& kernel, SRun run, bool streaming) {
    const u32 pixels = kernel.entries ? kernel.entries : run.Pixels();
    const double frameBytes = kernel.bytesPerPixel * pixels;
    const double streamedBytes =
        (kernel.streamedBytesPerPixel ? kernel.streamedBytesPerPixel : kernel.bytesPerPixel) * pixels;
    run.lanes = streaming ? LanesFor(streamedBytes) : 1;
    const SJob job = kernel.make(run);
    job.run(0);
    if (const std::string difference = job.prove(); !difference.empty()) {
        std::fprintf(stderr, "%s: wrong answer, %s\n", kernel.name.c_str(), difference.c_str());
        std::exit(1);
    }
    CCopy copy(job.plain ? 0 : static_cast<std::size_t>(frameBytes), streaming ? LanesFor(frameBytes) : 1);
    std::vector<double> kernelTimes, copyTimes;
    std::vector<std::vector<double>> peerTimes(job.peers.size());
    u32 lane = 0;
    for (auto _ : state) {
        const double seconds = Seconds([&] { job.run(lane); });
        state.SetIterationTime(seconds);
        kernelTimes.push_back(seconds);
        copyTimes.push_back(job.plain ? Seconds([&] { job.plain(lane); }) : Seconds(copy));
        for (std::size_t p = 0; p < job.peers.size(); ++p) {
            // Not the frame that the kernel has just brought into the cache.
            const u32 other = static_cast<u32>((lane + (p + 1) * run.lanes / (job.peers.size() + 1)) % run.lanes);
            peerTimes[p].push_back(Seconds([&] { job.peers[p].run(other); }));
        }
        lane = (lane + 1) % run.lanes;
    }
    const double time = Median(kernelTimes) / kernel.calls, share = Median(copyTimes) / time;
    state.counters["ns/pixel"] = time * 1e9 / pixels;
    state.counters["share"] = share;
    const std::string frame = kernel.entries ? std::to_string(pixels) + " entries" : SizeOf(run);
    std::vector<std::pair<std::string, double>> peers;
    for (std::size_t p = 0; p < job.peers.size(); ++p) {
        peers.emplace_back(job.peers[p].name, Median(peerTimes[p]) * 1e9);
    }
    Rows().push_back({kernel.name, frame, streaming ? "streaming" : "in cache", pixels, time * 1e9, share,
                      kernel.wanted, kernel.beside, kernel.mostBeside, kernel.mostNanoseconds, kernel.entries != 0,
                      peers});
}

void PrintTable() {
    std::printf("\n%-36s %-14s %-10s %9s %9s %14s %7s\n", "kernel", "frame", "mode", "ns/pixel", "frames/s",
                "share of copy", "wanted");
    for (const SRow& row : Rows()) {
        std::printf("%-36s %-14s %-10s %9.4f %9.0f %14.3f ", row.kernel.c_str(), row.frame.c_str(), row.mode.c_str(),
                    row.nanoseconds / row.pixels, 1e9 / row.nanoseconds, row.share);
        // The shares wanted hold for a frame of this size in cache.
        if (row.wanted > 0 && row.mode == "in cache" && row.frame.starts_with("640x")) {
            std::printf("%7.2f%s\n", row.wanted, row.share < row.wanted ? "  <" : "");
        } else {
            std::printf("%7s\n", "-");
        }
    }
}

/// The kernels beside other ways to the same, as multiples of the kernel's time.
void PrintPeers() {
    for (const SRow& row : Rows()) {
        if (row.peers.empty()) continue;
        std::printf("%-36s %-14s %-10s %9.4f ns/pixel; others take", row.kernel.c_str(), row.frame.c_str(),
                    row.mode.c_str(), row.nanoseconds / row.pixels);
        for (const auto& [name, nanoseconds] : row.peers) {
            std::printf("  %s %.2f", name.c_str(), nanoseconds / row.nanoseconds);
        }
        std::printf("\n");
    }
}

/// The kernels that are measured against another one, where both ran.
void PrintRatios() {
    for (const SRow& row : Rows()) {
        for (const SRow& other : Rows()) {
            if (other.kernel != row.beside || other.frame != row.frame || other.mode != row.mode) continue;
            const double times = row.nanoseconds / other.nanoseconds;
            std::printf("%-36s %-14s %-10s %9.3f times %s", row.kernel.c_str(), row.frame.c_str(), row.mode.c_str(),
                        times, other.kernel.c_str());
            if (row.isTable) std::printf(", %.1f million entries/s", 1e3 * row.pixels / row.nanoseconds);
            if (row.mostBeside > 0) std::printf(", wanted %.2f%s", row.mostBeside, times > row.mostBeside ? "  <" : "");
            std::printf("\n");
        }
    }
}

/// The calls that no pixel should slow down.
void PrintCalls() {
    for (const SRow& row : Rows()) {
        if (row.mostNanoseconds == 0 || row.mode != "in cache") continue;
        std::printf("%-36s %-10s %-10s %9.1f ns, wanted %.0f%s\n", row.kernel.c_str(), row.frame.c_str(),
                    row.mode.c_str(), row.nanoseconds, row.mostNanoseconds,
                    row.nanoseconds > row.mostNanoseconds ? "  <" : "");
    }
}

void Enter(bool smoke, bool allSizes) {
    std::vector<SRun> frames = {{640, 512}, {1280, 1024}};
    if (smoke) frames = {{67, 13}};
    if (allSizes) frames = {{320, 256}, {640, 512}, {1280, 1024}, {2048, 2048}, {4096, 4096}};
    for (const SKernel& kernel : Kernels()) {
        for (const SRun& frame : frames) {
            for (const bool streaming : {false, true}) {
                if (smoke && streaming) continue;
                if (kernel.entries && (streaming || &frame != &frames.front())) continue;
                std::string name = kernel.name;
                if (!kernel.entries) name.append("/").append(SizeOf(frame));
                name += streaming ? "/streaming" : "/in_cache";
                auto* entry = benchmark::RegisterBenchmark(
                    name.c_str(), [=](benchmark::State& state) { Measure(state, kernel, frame, streaming); });
                entry->UseManualTime()->Unit(benchmark::kMicrosecond);
                const u32 times = kernel.times ? kernel.times : streaming ? 400 : 2000;
                const u32 shrunk = allSizes ? std::max(25U, times * 81920 / (5 * frame.Pixels())) : times;
                entry->Iterations(smoke ? 1 : shrunk);
            }
        }
    }
}

}  // namespace

}  // namespace ovix::bench

/// `--smoke`, or OVIX_BENCH_SMOKE in the environment: everything once, on tiny frames. `--all-sizes`: from 320x256 to
/// 4096x4096, fewer times. All other arguments are those of Google Benchmark (`--benchmark_filter=ApplyLUT`).
int main(int argc, char** argv) {
    const auto takes = [&](const char* option) {
        const auto end = std::remove_if(argv + 1, argv + argc, [=](const char* a) { return !std::strcmp(a, option); });
        const bool taken = end != argv + argc;
        argc = static_cast<int>(end - argv);
        return taken;
    };
    const bool smoke = takes("--smoke") || std::getenv("OVIX_BENCH_SMOKE");
    const bool allSizes = takes("--all-sizes");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    ovix::bench::Enter(smoke, allSizes);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ovix::bench::PrintTable();
    ovix::bench::PrintPeers();
    ovix::bench::PrintRatios();
    ovix::bench::PrintCalls();
    return 0;
}
