#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <mutex>

#include "apps/ovix/cli/choice.h"
#include "apps/ovix/cli/console.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/number_text.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/cli/values.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

namespace {

/// The lowest and the highest value seen: of pixels without any flag, else of all that are numbers.
class CValueRange {
  public:
    CValueRange() = default;
    explicit CValueRange(const measure::CFrame& frame)
        : good_(Extremes(frame.values, frame.status, 0xFF)),
          any_(good_ ? std::nullopt : Extremes(frame.values, frame.status, 0)) {}

    void Add(const CValueRange& frame) {
        Widen(good_, frame.good_);
        if (!good_) Widen(any_, frame.any_);
    }
    std::optional<std::pair<float, float>> Ends() const {
        const std::optional<SRange>& range = good_ ? good_ : any_;
        return range ? std::optional(std::pair(range->low, range->high)) : std::nullopt;
    }

  private:
    static void Widen(std::optional<SRange>& ends, const std::optional<SRange>& by) {
        if (!by) return;
        ends = ends ? SRange{std::min(ends->low, by->low), std::max(ends->high, by->high)} : *by;
    }

    std::optional<SRange> good_;
    std::optional<SRange> any_;
};

class CConvertCommand final : public ICommand {
  public:
    const char* Verb() const override { return "convert"; }
    const char* Brief() const override { return "pixels to a unit, as pictures or files of numbers"; }
    const char* Examples() const override {
        return "ovix convert dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 -o out.png\n"
               "ovix convert dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --frames 0-9 --unit temperature "
               "--scale K --emissivity 0.95 --reflected-temp 20C -o run.npy\n"
               "ovix convert run.krt --merge-presets -o merged.png";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        measure_.Add(verb);
        CMeasureRun::AddOption(verb, mergePresets_);
        const char* group = "Output";
        verb.add_option("-o,--output", output_,
                        "what to write, by extension: .png (one file a frame), .tif, .npy, .csv, .zarr or .nxs")
            ->required()
            ->type_name("FILE")
            ->group(group);
        verb.add_option("--range", range_,
                        "values at the ends of the palette (else lowest and highest of all frames, which are then "
                        "read twice)")
            ->type_name("LO,HI")
            ->group(group);
        verb.add_option("--palette", palette_,
                        "colours of pictures: inferno (the default), magma, viridis, cividis, grey or grey-inverted")
            ->type_name("NAME")
            ->group(group);
        verb.add_option("--compression", options_.compression,
                        "of .tif, .png, .zarr and .nxs: 0 none, 1 quick (the default), up to 12 small")
            ->check(CLI::Range(0, 12))
            ->type_name("LEVEL")
            ->group(group);
        verb.add_option("--step", options_.step,
                        "of .zarr: store values as whole multiples of this, in their unit (else as floats)")
            ->check(CLI::PositiveNumber)
            ->type_name("STEP")
            ->group(group);
        verb.add_flag("--by-trace", options_.byTrace,
                      "of .zarr: chunks of 64 frames and 64 x 64 pixels, for who reads pixels over time")
            ->group(group);
        verb.add_option("--roi", regions_, "a region to be marked in pictures: x,y,w,h or name=x,y,w,h")
            ->type_name("REGION")
            ->allow_extra_args(false)
            ->group(group);
        verb.add_flag("--overwrite", options_.overwrite, "replace files that exist")->group(group);
        verb.add_flag("--json", json_, "say what was done as JSON")->group(group);
    }

    EExit Run() override {
        const measure::SMeasureOptions measureOptions = measure_.Options();
        if (!range_.empty() && !IsPicture()) throw UsageFault("--range: has an effect on pictures (.png) alone");
        if (!range_.empty()) options_.range = ParseRange("--range", range_);
        if (!palette_.empty()) options_.palette = PaletteOf("--palette", palette_);
        if ((options_.step > 0 || options_.byTrace) && !CString(output_.c_str()).EndsWithNoCase(L".zarr"))
            throw UsageFault("--step and --by-trace: have an effect on .zarr alone");
        const measure::CSource source = source_.Open();
        const measure::SFrameFormat& format = source.Format();
        options_.marks = ParseRegions(regions_, format.width, format.height);
        if (source.IsFile(output_)) throw UsageFault(output_ + " is the input");
        const measure::CMeasurement measurement(source, measureOptions);
        CMeasureRun run(measurement, source_, mergePresets_);
        SSeries series;
        series.width = format.width;
        series.height = format.height;
        series.frames = run.Results().value_or(kFramesOfAPipe);
        series.title = source.Name() + ", " + format.pixelTypeName;

        // A target that would not do is told before the frames are measured: a writer that is dropped leaves nothing.
        MakeFrameWriter(output_, series, options_);
        if (IsPicture() && !options_.range && series.frames > 1) FindRange(run, source);
        CValueRange range;
        std::unique_ptr<IFrameWriter> writer;
        const auto begin = [&](const measure::CFrame& frame) {
            series.unit = UnitText(frame.unit, frame.scale);
            series.parameters = ParametersJson(measurement, frame);
            writer = MakeFrameWriter(output_, series, options_);
        };
        const auto append = [&](const SEncoded& encoded, const measure::CFrame& frame) {
            range.Add(encoded.range);
            writer->Append(PictureOf(frame), encoded.bytes);
        };
        // What holds for all frames shows in the first one, which of a pipe is there only when it comes.
        std::once_flag begun;
        if (source.IsNumbered()) std::call_once(begun, [&] { begin(run.First()); });
        const auto encode = [&](const measure::CFrame& frame) {
            std::call_once(begun, begin, frame);
            return Encode(*writer, frame);
        };
        run.Run(encode, append);
        writer->Finish();
        Report(run, source, *measurement.Unit(), series, range);
        return run.Exit();
    }

  private:
    static const SPalette* PaletteOf(const char* option, const std::string& name) {
        std::vector<std::pair<std::string, const SPalette*>> words;
        for (const SPalette& palette : Palettes()) words.emplace_back(palette.name, &palette);
        return ParseChoice<const SPalette*>(option, name, words);
    }
    /// Of a pipe nobody knows how many frames it brings: several.
    static constexpr u64 kFramesOfAPipe = 1'000'000;

    /// What goes with a frame from the thread that encoded it to the one that writes it.
    struct SEncoded {
        SEncodedFrame bytes;
        CValueRange range;
    };
    static SPicture PictureOf(const measure::CFrame& frame) {
        return {.frame = frame.number,
                .values = frame.values,
                .status = frame.status,
                .caption = frame.time ? TimeText(*frame.time) : "",
                .time = frame.time};
    }
    static SEncoded Encode(const IFrameWriter& writer, const measure::CFrame& frame) {
        return {writer.Encode(PictureOf(frame)), CValueRange(frame)};
    }

    void FindRange(CMeasureRun& run, const measure::CSource& source) {
        if (!source.IsNumbered())
            throw UsageFault("--range: several pictures need one range; --spool finds it for " + source.Name());
        CValueRange range;
        run.RunAhead([](const measure::CFrame& frame) { return CValueRange(frame); },
                     [&](const CValueRange& frame) { range.Add(frame); });
        options_.range = range.Ends().value_or(std::pair{0.0f, 1.0f});
    }

    /// What was written: of several pictures the pattern of their names.
    std::string Written(const SSeries& series) const {
        if (!IsPicture() || series.frames == 1) return output_;
        std::filesystem::path path(output_);
        return path.replace_filename(path.stem().string() + "-*" + path.extension().string()).string();
    }
    bool IsPicture() const { return CString(output_.c_str()).EndsWithNoCase(L".png"); }

    void Report(const CMeasureRun& run, const measure::CSource& source, EUnit unit, const SSeries& series,
                const CValueRange& range) const {
        const u64 done = run.Done();
        const auto [low, high] = range.Ends().value_or(std::pair<float, float>{NAN, NAN});
        if (!json_) {
            Say(fmt::format("{}: {} {}, {} to {} {}", Written(series), done, done == 1 ? "frame" : "frames",
                            ShownValue(low, unit), ShownValue(high, unit), series.unit.symbol));
            return;
        }
        PrintJson({{"schema", kSchemaVersion},
                   {"output", Written(series)},
                   {"frames", done},
                   {"skipped", run.Skipped()},
                   {"complete", run.Exit() == ExitDone},
                   {"findings", FindingsJson(source.Findings())},
                   {"quantity", series.unit.quantity},
                   {"unit", series.unit.symbol},
                   {"lowest", ShortestDouble(low)},
                   {"highest", ShortestDouble(high)},
                   {"parameters", series.parameters}});
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    std::string output_;
    std::string range_;
    std::string palette_;
    std::vector<std::string> regions_;
    SWriteOptions options_;
    bool mergePresets_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeConvertCommand() { return std::make_unique<CConvertCommand>(); }

}  // namespace ovix::app
