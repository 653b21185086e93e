#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/frame_writer.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/scene.h"
#include "apps/ovix/synth/synth.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/values.h"
#include "core/core.h"

namespace ovix::app {

namespace {

/// One output as the library opens it by a path; which path does not matter.
class COneFile final : public IFileSystem {
  public:
    explicit COneFile(COutputFile& output) : output_(output) {}
    TSharedPtr<IFile> Open(const CString&, u32) override { return MakeShared<measure::COutputAsFile>(output_.File()); }
    CDirectoryListing List(const CString&, const CString&) override { return {}; }

  private:
    COutputFile& output_;
};

/// The tables of a correction as files of one stem: STEM.mvg, .mvo and .mvb, those that there are.
class CTableFiles {
  public:
    /// Writes them beside their places. Throws `CFault`, and leaves nothing, when one cannot be written.
    CTableFiles(const reduce::CCorrectionReduceObject& tables, const std::string& stem, bool overwrite) {
        const auto add = [&](const char* extension, auto save, auto... table) {
            COutputFile& file = *files_.emplace_back(std::make_unique<COutputFile>(stem + extension, overwrite));
            COneFile place(file);
            if (!save(&place, L"", static_cast<u16>(tables.width), static_cast<u16>(tables.height), u16{0}, table...))
                throw CFault({.exit = ExitFile, .file = stem + extension, .problem = "cannot write"});
        };
        if (tables.gain) add(".mvg", CNormFile::SaveGainTable, tables.gain);
        if (tables.offset) add(".mvo", CNormFile::SaveOffsetTable, tables.offset);
        if (tables.map) add(".mvb", CNormFile::SaveBadPixelTable, tables.mask, tables.map);
    }

    /// Puts all of them into their places.
    void Commit() {
        for (const auto& file : files_) file->Commit();
    }

  private:
    std::vector<std::unique_ptr<COutputFile>> files_;
};

class CSynthCommand final : public ICommand {
  public:
    const char* Verb() const override { return "synth"; }
    const char* Brief() const override { return "write frames as a camera sends them, with a known scene behind them"; }
    const char* Examples() const override {
        return "ovix synth -o dump.raw\n"
               "ovix synth --family Plover -o dump.raw\n"
               "ovix synth --pixel-type \"K410 IR (GigE)\" --form digital --size 640x512 --count 100 --truth truth.npy "
               "--tables nuc -o dump.raw";
    }
    void AddOptions(CLI::App& verb) override {
        output_.Add(verb, "the dump to write");
        const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
            verb.add_option(name, value, help)->type_name(type);
        };
        add("--family", family_, "NAME",
            "decoder of the frames, as \"ovix formats\" lists them (else that of the type)");
        add("--pixel-type", pixelType_, "NAME",
            "pixel type: \"ovix formats\" lists those that can be made (else the family's first, or K410 IR (GigE))");
        add("--form", form_, "FORM", "one of the forms of that type (else the first that \"ovix formats\" lists)");
        add("--size", size_, "WxH", "size of the image in pixels (else 640x480)");
        add("--count,--frames", count_, "N", "how many frames (else 1)");
        add("--seed", seed_, "N", "of noise and fixed pattern; the same seed gives the same bytes (else 1)");
        verb.add_flag("--clean", clean_, "no noise, no fixed pattern, no bad pixels");
        add("--truth", truth_, "FILE", "also write the scene's temperatures in K (.npy, .tif, .csv or .png)");
        add("--tables", tables_, "STEM", "also write the correction tables STEM.mvg, .mvo and .mvb");
    }

    EExit Run() override {
        SSynthOptions options;
        std::tie(options.width, options.height) = ParseSize("--size", size_);
        const measure::SFrameFormat format = measure::FindFormat(PixelType(), options.width, options.height);
        const SSynthFamily& family = Family(format);
        options.type = format.pixelType;
        options.form = CheckedForm(family, format.pixelType);
        options.seed = Number<u32>("--seed", seed_);
        options.noise = options.fixedPattern = options.badPixels = !clean_;
        const u64 count = Number<u64>("--count", count_);
        if (!count) throw UsageFault("--count: expected at least 1");

        const auto camera = family.make(options);
        COutputFile dump(output_.File(), output_.Overwrites());
        const auto tables = Tables(*camera);
        const auto truth = TruthWriter(options, count);
        const u64 bytes = WriteFrames(*camera, options, count, dump, truth.get());
        if (tables) tables->Commit();
        if (truth) truth->Finish();
        dump.Commit();
        Report(format, options.form, count, bytes);
        return ExitDone;
    }

  private:
    template <class T>
    static T Number(const char* option, const std::string& text) {
        const auto value = ParseNumber<T>(text);
        if (!value) throw UsageFault(fmt::format("{}: expected a number, found \"{}\"", option, text));
        return *value;
    }

    /// As given, or the first of the family.
    std::string PixelType() const {
        if (!pixelType_.empty()) return pixelType_;
        return family_.empty() ? "K410 IR (GigE)"
                               : measure::PixelTypeName(SynthFamilyOf("--family", family_).forms().front().type);
    }

    const SSynthFamily& Family(const measure::SFrameFormat& format) const {
        const SSynthFamily* family = FindSynthFamily(format.pixelType);
        if (!family)
            throw UsageFault("--pixel-type: \"" + format.pixelTypeName +
                             "\" cannot be made (\"ovix formats\" lists what can)");
        if (!family_.empty() && family != &SynthFamilyOf("--family", family_))
            throw UsageFault("--pixel-type: \"" + format.pixelTypeName + "\" belongs to the family " + format.filter);
        return *family;
    }

    std::string CheckedForm(const SSynthFamily& family, const GUID& type) const {
        std::vector<std::string> forms;
        std::string list;
        for (const SSynthForm& form : family.forms()) {
            if (form.type != type) continue;
            if (form_.empty() || form.form == form_) return form.form;
            forms.push_back(form.form);
            list += (list.empty() ? "" : ", ") + form.form;
        }
        throw UsageFault("--form: expected one of " + list + ", found \"" + form_ + "\"" + DidYouMean(form_, forms));
    }

    std::unique_ptr<IFrameWriter> TruthWriter(const SSynthOptions& options, u64 count) const {
        if (truth_.empty()) return nullptr;
        SSeries series;
        series.width = options.width;
        series.height = options.height;
        series.frames = count;
        series.unit = UnitText(TemperatureFactory, Kelvin);
        series.title = "scene of " + output_.File();
        const SWriteOptions write{.overwrite = output_.Overwrites(), .range = std::pair(kSceneColdest, kSceneHottest)};
        return MakeFrameWriter(truth_, series, write);
    }

    struct SMade {
        u64 number;
        std::vector<float> kelvin;
        std::vector<u8> frame;
        SEncodedFrame truth;
    };

    static u64 WriteFrames(const ISynthesizer& camera, const SSynthOptions& options, u64 count, COutputFile& dump,
                           IFrameWriter* truth) {
        const CScene scene(options.width, options.height);
        const std::vector<u8> good(std::size_t{options.width} * options.height);
        const auto picture = [&](const SMade& made) {
            return SPicture{.frame = made.number, .values = made.kelvin, .status = good, .caption = {}};
        };
        const auto make = [&](u64 number) {
            SMade made{number, scene.Render(number), {}, {}};
            made.frame = camera.Frame(number, made.kelvin);
            if (truth) made.truth = truth->Encode(picture(made));
            return made;
        };
        CProgress progress("frame", count);
        measure::InOrder(measure::ThreadsOf(0), measure::Numbers(count), make, [&](const SMade& made) {
            progress.Show(made.number);
            dump.Write(made.frame.data(), made.frame.size());
            if (truth) truth->Append(picture(made), made.truth);
        });
        return dump.Size();
    }

    std::unique_ptr<CTableFiles> Tables(const ISynthesizer& camera) const {
        if (tables_.empty()) return nullptr;
        const auto tables = camera.Correction();
        if (!tables) throw UsageFault("--tables: these frames have neither a fixed pattern nor bad pixels");
        return std::make_unique<CTableFiles>(*tables, tables_, output_.Overwrites());
    }

    void Report(const measure::SFrameFormat& format, const std::string& form, u64 count, u64 bytes) const {
        if (output_.SaysJson()) {
            PrintJson({{"schema", kSchemaVersion},
                       {"output", output_.File()},
                       {"pixelType", format.pixelTypeName},
                       {"form", form},
                       {"width", format.width},
                       {"height", format.height},
                       {"frames", count},
                       {"bytes", bytes}});
            return;
        }
        Say(fmt::format("{}: {} {}, {} bytes; to read: --pixel-type \"{}\" --size {}x{}", output_.File(), count,
                        count == 1 ? "frame" : "frames", bytes, format.pixelTypeName, format.width, format.height));
    }

    COutputArguments output_;
    std::string family_;
    std::string pixelType_;
    std::string form_;
    std::string size_ = "640x480";
    std::string count_ = "1";
    std::string seed_ = "1";
    std::string truth_;
    std::string tables_;
    bool clean_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeSynthCommand() { return std::make_unique<CSynthCommand>(); }

}  // namespace ovix::app
