#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <map>
#include <mutex>

#include "apps/ovix/cli/data_arguments.h"
#include "apps/ovix/cli/many_inputs.h"
#include "apps/ovix/cli/measure_arguments.h"
#include "apps/ovix/cli/measure_run.h"
#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/cli/picture_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/error_json.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/facts/scene_json.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/file_kinds.h"
#include "apps/ovix/output/video_colours.h"
#include "apps/ovix/status_flags.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/number_text.h"
#include "apps/ovix/text/values.h"

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
               "ovix convert run.krt --merge-presets -o merged.png\n"
               "ovix convert run*.krt --unit temperature -o {stem}.tif\n"
               "ovix convert run.krt --frames 0 -o - --format npy > frame.npy";
    }
    bool ShowsStatus() const override { return true; }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb, EInputs::Many);
        measure_.Add(verb);
        CMeasureRun::AddOption(verb, mergePresets_);
        const char* group = "Output";
        output_.Add(verb,
                    "what to write, by extension: .png (one file a frame), .tif, .npy, .csv, .zarr or .nxs; of several "
                    "inputs a name with {stem} in it, which stands for that of the input");
        verb.add_option("--format", format_, "of -o -: png, tif, npy or csv")->type_name("KIND")->group(group);
        data_.Add(verb);
        picture_.Add(verb);
    }

    EExit Run() override {
        const bool printed = output_.File() == "-";
        if (printed == format_.empty())
            throw UsageFault(printed ? "-o -: --format says what goes there" : "--format: goes with -o -");
        const std::vector<CSourceArguments> inputs = source_.Each();
        const SWriteOptions options = Options();
        const bool several = inputs.size() > 1;
        if (several) RequireDistinctOutputs(inputs);
        Json documents = Json::array();
        const EExit worst = ForEachInput(
            inputs, [&](const CSourceArguments& input) { return One(input, options, documents); },
            [&](const CSourceArguments& input, const CFault& fault) {
                documents.push_back({{"file", input.File()}, {"complete", false}, {"error", ErrorJson(fault)}});
            });
        if (output_.SaysJson())
            PrintJson(several ? Json{{"schema", kSchemaVersion}, {"sources", documents}} : documents.front());
        return worst;
    }

  private:
    /// ".tif", of the file or as it is given for the standard output.
    std::string Extension() const {
        return format_.empty() ? std::filesystem::path(output_.File()).extension().string() : '.' + format_;
    }
    SWriteOptions Options() const {
        SWriteOptions options{.overwrite = output_.Overwrites(), .format = format_.empty() ? "" : Extension()};
        data_.Put(options, Extension());
        return options;
    }
    std::string OutputOf(const CSourceArguments& input) const {
        constexpr std::string_view kStem = "{stem}";
        const std::string stem =
            input.File() == "-" ? "standard-input" : std::filesystem::path(input.File()).stem().string();
        std::string name = output_.File();
        for (std::size_t at = 0; (at = name.find(kStem, at)) != std::string::npos; at += stem.size())
            name.replace(at, kStem.size(), stem);
        return name;
    }
    void RequireDistinctOutputs(const std::vector<CSourceArguments>& inputs) const {
        std::map<std::string, std::string> inputOf;
        for (const CSourceArguments& input : inputs) {
            const auto [entry, isNew] = inputOf.emplace(OutputOf(input), input.File());
            if (!isNew)
                throw UsageFault(
                    fmt::format("-o {}: {} and {} would both become {}; {{stem}} stands for the input's name",
                                output_.File(), entry->second, input.File(), entry->first));
        }
    }

    EExit One(const CSourceArguments& input, SWriteOptions options, Json& documents) const {
        const std::string output = OutputOf(input);
        const measure::SMeasureOptions measureOptions = measure_.Options();
        const measure::CSource source = input.Open();
        if (!IsPicture()) picture_.RefuseAll();
        const measure::SFrameFormat& format = source.Format();
        picture_.Put(options, format.width, format.height);
        const measure::CMeasurement measurement(source, measureOptions);
        measure_.RefuseIdle(measurement, input.Frames(source));
        CMeasureRun run(measurement, input, mergePresets_);
        SSeries series;
        series.width = format.width;
        series.height = format.height;
        series.frames = run.Results().value_or(kFramesOfAPipe);
        series.knowsFrames = source.IsNumbered() && input.OnError() == measure::EOnFault::Stop;
        series.title = source.Name() + ", " + format.pixelTypeName;
        if (IsPicture() && output == "-" && series.frames > 1)
            throw UsageFault("-o -: one picture goes there; --frames says which");

        // A target that would not do is refused before the frames are measured: a writer that is dropped leaves
        // nothing.
        MakeFrameWriter(output, series, options);
        const CVideoColours video = IsPicture() ? CVideoColours(measurement) : CVideoColours();
        if (video) picture_.RefuseOfVideo();
        if (IsPicture() && !options.range && !video && series.frames > 1) FindRange(run, source, options);
        CValueRange range;
        std::unique_ptr<IFrameWriter> writer;
        const auto begin = [&](const measure::CFrame& frame) {
            series.unit = UnitText(frame.unit, frame.scale);
            series.parameters = ParametersJson(measurement, frame);
            options.steps = data_.Steps(frame.unit, frame.scale);
            writer = MakeFrameWriter(output, series, options);
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
            return Encode(*writer, frame, video);
        };
        run.Run(encode, append);
        writer->Finish();
        const std::string written = Written(output, series);
        if (output_.SaysJson())
            documents.push_back(Document(run, source, written, series, range));
        else
            Say(Line(written, run, *measurement.Unit(), series, range));
        return run.Exit();
    }

    /// Of a pipe nobody knows how many frames it brings: several.
    static constexpr u64 kFramesOfAPipe = 1'000'000;

    /// What goes with a frame from the thread that encoded it to the one that writes it.
    struct SEncoded {
        SEncodedFrame bytes;
        CValueRange range;
    };
    /// When it was taken, and what the values rest on most.
    static std::string CaptionOf(const measure::CFrame& frame) {
        std::string caption = frame.time ? TimeText(*frame.time) : "";
        for (const measure::SParameter& parameter : frame.Parameters()) {
            if (parameter.key != "emissivity") continue;
            caption += fmt::format("{}emissivity {:.4g}", caption.empty() ? "" : "  ·  ", parameter.value);
        }
        return caption;
    }
    SPicture PictureOf(const measure::CFrame& frame) const {
        return {.frame = frame.number,
                .values = frame.values,
                .status = frame.status,
                .caption = IsPicture() ? CaptionOf(frame) : "",
                .time = frame.time};
    }
    SEncoded Encode(const IFrameWriter& writer, const measure::CFrame& frame, const CVideoColours& video) const {
        SPicture picture = PictureOf(frame);
        std::vector<u32> colours;
        if (video) colours = video.Of(frame);
        picture.colours = colours;
        return {writer.Encode(picture), CValueRange(frame)};
    }

    /// Between its ends a drawn picture shows the frame well, a plain one all of its values.
    static std::optional<SRange> RangeFor(const measure::CFrame& frame, const SWriteOptions& options) {
        if (options.plain) return Extremes(frame.values, frame.status, kStatusNoData);
        return SuitingRange(frame.values, frame.status, frame.width, options.percentiles);
    }

    static void FindRange(CMeasureRun& run, const measure::CSource& source, SWriteOptions& options) {
        if (!source.IsNumbered())
            throw UsageFault("--range: several pictures need one range; --spool finds it for " + source.Name());
        CCommonRange common;
        run.RunAhead([&](const measure::CFrame& frame) { return RangeFor(frame, options); },
                     [&](const std::optional<SRange>& frame) { common.Add(frame); });
        options.range = {common.Range().low, common.Range().high};
    }

    /// What was written: of several pictures the pattern of their names.
    std::string Written(const std::string& output, const SSeries& series) const {
        if (!IsPicture() || series.frames == 1) return output;
        std::filesystem::path path(output);
        return path.replace_filename(path.stem().string() + "-*" + path.extension().string()).string();
    }
    bool IsPicture() const { return CString(Extension().c_str()).EqualsNoCase(L".png"); }

    static Json Document(const CMeasureRun& run, const measure::CSource& source, const std::string& written,
                         const SSeries& series, const CValueRange& range) {
        const auto [low, high] = range.Ends().value_or(std::pair<float, float>{NAN, NAN});
        return {{"schema", kSchemaVersion},
                {"file", source.Name()},
                {"output", written},
                {"frames", run.Done()},
                {"skipped", run.Skipped()},
                {"complete", run.Exit() == ExitDone},
                {"findings", FindingsJson(source.Findings())},
                {"quantity", series.unit.quantity},
                {"unit", series.unit.symbol},
                {"lowest", ShortestDouble(low)},
                {"highest", ShortestDouble(high)},
                {"parameters", series.parameters}};
    }
    static std::string Line(const std::string& written, const CMeasureRun& run, EUnit unit, const SSeries& series,
                            const CValueRange& range) {
        const auto [low, high] = range.Ends().value_or(std::pair<float, float>{NAN, NAN});
        return fmt::format("{}: {} {}, {} to {} {}", written, run.Done(), run.Done() == 1 ? "frame" : "frames",
                           ShownValue(low, unit), ShownValue(high, unit), series.unit.symbol);
    }

    CSourceArguments source_;
    CMeasureArguments measure_;
    COutputArguments output_;
    CDataArguments data_;
    CPictureArguments picture_;
    std::string format_;
    bool mergePresets_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeConvertCommand() { return std::make_unique<CConvertCommand>(); }

}  // namespace ovix::app
