#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cstdlib>

#include "apps/ovix/cli/frame_selection.h"
#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/findings.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"
#include "measure/measure.h"

namespace ovix::app {

namespace {

/// What the pixels of a type are to the adjustment.
struct SKind {
    const char* word;  ///< stands for the base type itself
    GUID base;
    u32 sourceBytes;  ///< of a pixel
    u32 resultBytes;
};
constexpr SKind kKinds[] = {
    {"counts", rootIRType, 2, 2}, {"RGB24", reduce::rootRGB24Type, 3, 3}, {"YUV", reduce::rootYUVType, 2, 3}};

GUID TypeOf(const std::string& text) {
    for (const SKind& kind : kKinds) {
        if (CString(kind.word).EqualsNoCase(CString(text.c_str()))) return kind.base;
    }
    return measure::FindPixelType(text);
}

const SKind& KindOf(const std::string& text) {
    const GUID type = TypeOf(text);
    for (const SKind& kind : kKinds) {
        if (IsPixelBaseType(type, kind.base)) return kind;
    }
    throw UsageFault("--pixel-type: \"" + text +
                     "\" stands on neither counts nor RGB24 nor YUV: there is nothing to adjust");
}

/// A number in decimal, or in hexadecimal behind "0x".
template <class T>
T ParseInteger(const std::string& option, const std::string& text, T least, T most) {
    std::string_view digits = text;
    const bool hexadecimal = digits.starts_with("0x");
    if (hexadecimal) digits.remove_prefix(2);
    T value{};
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 10);
    if (error != std::errc{} || stop != end || value < least || value > most)
        throw UsageFault(fmt::format("{}: expected a number from {} to {}, found \"{}\"", option, least, most, text));
    return value;
}

class CAdjustCommand final : public ICommand {
  public:
    const char* Verb() const override { return "adjust"; }
    const char* Brief() const override {
        return "cut, shift, mirror, flip or deinterlace the frames of a dump as a grabber delivers them";
    }
    const char* Examples() const override {
        return "ovix adjust grabbed.raw --pixel-type counts --size 640x480 --margins 8,2,8,0 --shift 2 --mask 0x3FFC "
               "-o dump.raw\n"
               "ovix adjust fields.raw --pixel-type YUV --size 720x576 --deinterlace --mirror -o rgb.raw";
    }
    void AddOptions(CLI::App& verb) override {
        const auto add = [&](const char* name, std::string& value, const char* type, const char* help,
                             const char* group = "Input") {
            return verb.add_option(name, value, help)->type_name(type)->group(group);
        };
        verb.add_option("FILE", file_, "a dump of frames; - is the standard input")->required()->type_name("");
        add("--pixel-type", pixelType_, "NAME", "counts, RGB24 or YUV, or a pixel type that stands on one of them")
            ->required();
        add("--size", size_, "WxH", "size of the result in pixels")->required();
        add("--margins", margins_, "L,T,R,B",
            "of counts: columns and lines of a source frame around the wanted ones: left, top, right, bottom");
        add("--frame-size", frameSize_, "BYTES", "bytes of each source frame (else its pixels and margins)");
        add("--frames", frames_, "LIST", "frames, from 0, ends included, -1 the last: 0-99,200-400x10,-1 (else all)");
        add("--on-error", onError_, "stop|skip", "what to do at a frame that would not do (else stop)");
        const char* group = "Adjustment";
        add("--shift", shift_, "BITS", "of counts: to the left, whatever the sign (else 0)", group);
        add("--mask", mask_, "MASK", "of counts: bits that are kept after the shift (else 0xFFFF)", group);
        verb.add_flag("--deinterlace", deinterlace_,
                      "of pictures: the lines of two fields, one after the other, merged")
            ->group(group);
        verb.add_flag("--mirror", mirror_, "left becomes right")->group(group);
        verb.add_flag("--flip", flip_, "top becomes bottom")->group(group);
        output_.Add(verb, "the dump to write");
    }

    EExit Run() override {
        const SKind& kind = KindOf(pixelType_);
        RefuseIdleOptions(kind);
        const auto [width, height] = ParseSize("--size", size_);
        const RECT margins = Margins();
        const i32 shift = ParseInteger<i32>("--shift", shift_, -0x7FFFFFFF, 0x7FFFFFFF);
        const i32 mask = ParseInteger<i32>("--mask", mask_, 0, 0xFFFF);
        // The kernel shifts as the processor does: by the lower five bits of the number.
        if (IsCounts(kind) &&
            ((0xFFFFu << (static_cast<u32>(std::abs(shift)) & 31)) & 0xFFFFu & static_cast<u32>(mask)) == 0)
            throw UsageFault("--shift, --mask: not one bit of the counts is left");
        const u32 sourceSize = SourceSize(kind, width, height, margins);

        // What a frame holds is read by the adjustment alone: a source of so many bytes a frame will do.
        const auto requireDump = [this](bool isDump) {
            if (!isDump)
                throw UsageFault(file_ + " says by itself what it holds: only dumps of raw frames can be adjusted");
        };
        requireDump(!measure::SaysItsFormat(file_));
        const measure::CSource source =
            measure::Open(file_, {.pixelType = "counts", .width = width, .height = height, .frameSize = sourceSize});
        requireDump(source.Kind() != measure::ESource::Recording);  // which a pipe brought
        for (const measure::SFinding& finding : source.Findings()) Say(FindingLine(source.Name(), finding));
        const auto onError = ParseChoice<measure::EOnFault>(
            "--on-error", onError_, {{"stop", measure::EOnFault::Stop}, {"skip", measure::EOnFault::Skip}});
        SCounts counts;
        COutputFile output(output_.File(), output_.Overwrites());
        // Of an odd line of YUV the last pixel is never written: it stays black.
        std::vector<u8> result(std::size_t{width} * height * kind.resultBytes);
        ForEachFrame(source, [&](auto&& read) {
            try {
                measure::SRawFrame& raw = read();
                reduce::AdjustFrameData(result.data(), raw.bytes.data(), width, height, kind.base, margins, shift, mask,
                                        deinterlace_, mirror_, flip_);
            } catch (const measure::CError& error) {
                if (onError == measure::EOnFault::Stop) throw;
                Say(std::string(FaultOf(error).what()) + " (skipped)");
                ++counts.skipped;
                return;
            }
            output.Write(result.data(), result.size());
            ++counts.done;
        });
        if (!counts.done) throw CAppError(ExitBadData, "not one frame would do");
        output.Commit();
        Report(kind, counts, width, height, result.size());
        return CSourceArguments::Exit(source, counts.skipped);
    }

  private:
    struct SCounts {
        u64 done = 0;
        u64 skipped = 0;
    };

    /// Calls `work(read)` for each wanted frame; `read()` answers it or throws.
    template <class Work>
    void ForEachFrame(const measure::CSource& source, const Work& work) const {
        measure::SRawFrame raw;
        if (!source.IsNumbered()) {
            if (!frames_.empty()) throw UsageFault("--frames: the frames of " + source.Name() + " have no numbers");
            while (source.Next(raw)) work([&]() -> measure::SRawFrame& { return raw; });
            return;
        }
        const auto frames = frames_.empty() ? measure::CFrameNumbers::All(*source.Count())
                                            : CFrameSelection(frames_).Of(*source.Count());
        for (u64 n = 0; n < frames.Count(); ++n) {
            work([&]() -> measure::SRawFrame& {
                source.Read(frames[n], raw);
                return raw;
            });
        }
    }

    bool IsCounts(const SKind& kind) const { return kind.base == rootIRType; }

    /// What would be passed over in silence.
    void RefuseIdleOptions(const SKind& kind) const {
        const struct {
            const char* option;
            bool given;
            bool ofCounts;
        } options[] = {{"--margins", margins_ != kNoMargins, true},
                       {"--shift", shift_ != "0", true},
                       {"--mask", mask_ != kWholeMask, true},
                       {"--deinterlace", deinterlace_, false}};
        for (const auto& one : options) {
            if (one.given && one.ofCounts != IsCounts(kind))
                throw UsageFault(fmt::format("{}: has no effect on {}", one.option, kind.word));
        }
    }

    RECT Margins() const {
        const auto parts = SplitText(margins_, ',');
        RECT margins;
        const std::array<i32*, 4> fields{&margins.left, &margins.top, &margins.right, &margins.bottom};
        bool good = parts.size() == fields.size();
        for (std::size_t i = 0; good && i < fields.size(); ++i) {
            const auto value = ParseNumber<u16>(parts[i]);
            good = value.has_value();
            *fields[i] = value.value_or(u16{0});
        }
        if (!good)
            throw UsageFault("--margins: expected LEFT,TOP,RIGHT,BOTTOM, each from 0 to 65535, found \"" + margins_ +
                             "\"");
        return margins;
    }

    /// The bytes of a source frame, in which all stands that the adjustment will read.
    u32 SourceSize(const SKind& kind, u16 width, u16 height, const RECT& margins) const {
        const u64 columns = u64{width} + static_cast<u64>(margins.left) + static_cast<u64>(margins.right);
        const u64 lines = u64{height} + static_cast<u64>(margins.top) + static_cast<u64>(margins.bottom);
        const u64 whole = columns * lines * kind.sourceBytes;
        if (whole > CUInt32::Max) throw UsageFault("--margins: expected a frame of at most 4 GiB");
        const u32 size = frameSize_.empty() ? static_cast<u32>(whole)
                                            : ParseInteger<u32>("--frame-size", frameSize_, 1, CUInt32::Max);
        u64 end = u64{width} * height * kind.sourceBytes;
        if (IsCounts(kind)) {
            const auto words = reduce::AdjustedWords(width, height, margins, mirror_, flip_);
            if (words.first < 0)
                throw UsageFault(
                    fmt::format("--margins: with --mirror or --flip, lines have no margins and {} words ahead "
                                "of the frame would be read",
                                -words.first));
            end = static_cast<u64>(words.end) * kind.sourceBytes;
        }
        if (end > size)
            throw UsageFault(
                fmt::format("--frame-size: expected at least the {} bytes that are read, found {}", end, size));
        return size;
    }

    void Report(const SKind& kind, const SCounts& frames, u16 width, u16 height, std::size_t frameBytes) const {
        const char* pixels = kind.resultBytes == 2 ? "16-bit counts" : "24-bit pixels";
        if (!output_.SaysJson()) {
            Say(fmt::format("{}: {} {} of {} x {} {}, {} bytes each", output_.File(), frames.done,
                            frames.done == 1 ? "frame" : "frames", width, height, pixels, frameBytes));
            return;
        }
        PrintJson({{"schema", kSchemaVersion},
                   {"output", output_.File()},
                   {"frames", frames.done},
                   {"skipped", frames.skipped},
                   {"width", width},
                   {"height", height},
                   {"pixels", pixels},
                   {"frameBytes", frameBytes}});
    }

    static constexpr const char* kNoMargins = "0,0,0,0";
    static constexpr const char* kWholeMask = "0xFFFF";

    std::string file_;
    std::string pixelType_;
    std::string size_;
    std::string margins_ = kNoMargins;
    std::string frameSize_;
    std::string frames_;
    std::string onError_ = "stop";
    std::string shift_ = "0";
    std::string mask_ = kWholeMask;
    COutputArguments output_;
    bool deinterlace_ = false;
    bool mirror_ = false;
    bool flip_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeAdjustCommand() { return std::make_unique<CAdjustCommand>(); }

}  // namespace ovix::app
