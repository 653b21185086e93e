#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>

#include "apps/ovix/cli/source_arguments.h"
#include "apps/ovix/commands/block_report.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/commands/hexdump.h"
#include "apps/ovix/commands/source_report.h"
#include "apps/ovix/facts/user_calibration.h"
#include "apps/ovix/facts/value_section.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/text_table.h"

namespace ovix::app {

namespace {

std::string TimeLine(const Json& time, u64 frames) {
    if (time.is_null()) return "none in the frames";
    const double seconds = time["spanSeconds"];
    std::string line = time["first"].get<std::string>();
    if (frames > 1) line += fmt::format(" to {}, {} s", time["last"].get<std::string>(), seconds);
    if (frames > 1 && seconds > 0) line += fmt::format(", {:.2f} frames/s", static_cast<double>(frames - 1) / seconds);
    return line;
}

std::string CounterLine(const Json& counter) {
    if (counter.is_null()) return "none in the frames";
    std::string line = fmt::format("{} to {}", counter["first"].get<u64>(), counter["last"].get<u64>());
    if (counter["gapCount"].is_null()) return line + ", gaps not looked for (--counters does)";
    if (counter["gapCount"] == 0) return line + ", no gaps";
    return line +
           fmt::format(", {} gaps, {} frames missing", counter["gapCount"].get<u64>(), counter["missing"].get<u64>());
}

std::string GapLines(const Json& counter) {
    constexpr std::size_t kMostShown = 10;
    if (counter.is_null() || counter["gapCount"].is_null() || counter["gaps"].empty()) return {};
    CTextTable table({{"  after frame", CTextTable::Right},
                      {"counter", CTextTable::Right},
                      {"next", CTextTable::Right},
                      {"missing", CTextTable::Right}});
    for (std::size_t i = 0; i < counter["gaps"].size() && i < kMostShown; ++i) {
        const Json& gap = counter["gaps"][i];
        table.Row({gap["afterFrame"].dump(), gap["from"].dump(), gap["to"].dump(), gap["missing"].dump()});
    }
    const u64 hidden = counter["gapCount"].get<u64>() - std::min<u64>(counter["gapCount"].get<u64>(), kMostShown);
    return "\nGaps of the frame counter\n" + table.Text() + (hidden ? fmt::format("  and {} more\n", hidden) : "");
}

std::string CalibrationLine(const Json& calibrations) {
    std::string line;
    for (const Json& one : calibrations) {
        line += (line.empty() ? "" : ", ") + one["name"].get<std::string>();
        if (!one["preset"].is_null()) line += fmt::format(" (preset {})", one["preset"].dump());
        if (!one["valid"].get<bool>()) line += ", not valid";
    }
    return line.empty() ? "none" : line;
}

void AddSourceRows(CTextTable& table, const Json& source) {
    if (source.is_null()) return;
    table.Row({"Camera", source["camera"]});
    table.Row({"Recorded",
               fmt::format("{}, {}", ShownJson(source["time"]),
                           source["finished"].get<bool>() ? "finished"
                                                          : "never finished or cut (\"ovix repair\" brings it back)")});
    if (!source["texts"].empty()) table.Row({"Texts", ShownJson(source["texts"])});
}

std::string Overview(const Json& d) {
    CTextTable table({{""}, {""}});
    table.Row({"File", d["file"]});
    AddSourceRows(table, d["source"]);
    table.Row({"Decoder", ShownJson(d["decoder"])});
    table.Row(
        {"Pixel type", fmt::format("{} {}", d["pixelType"].get<std::string>(), d["pixelTypeGuid"].get<std::string>())});
    table.Row({"Image", fmt::format("{} x {} pixels", d["width"].get<u16>(), d["height"].get<u16>())});
    const u64 frames = d["framesRead"];
    table.Row({"Frames", d["frames"] == frames ? d["frames"].dump()
                                               : fmt::format("{}, {} of them read", d["frames"].dump(), frames)});
    table.Row({"Frame size", d["frameBytes"].is_null() ? "differs" : d["frameBytes"].dump() + " bytes"});
    table.Row({"Time", TimeLine(d["time"], frames)});
    table.Row({"Frame counter", CounterLine(d["counter"])});
    std::string presets;
    for (const Json& preset : d["presets"]) {
        const u64 count = preset["frames"];
        presets += fmt::format("{}{} ({} {})", presets.empty() ? "" : ", ", preset["preset"].get<u64>(), count,
                               count == 1 ? "frame" : "frames");
    }
    table.Row({"Presets", presets});
    table.Row({"Calibrations", CalibrationLine(d["calibrations"])});
    table.Row({"Stored unit", d["baseUnit"]});
    table.Row({"Units on offer", ShownJson(d["units"])});
    return table.Text();
}

std::string ValueTable(const Json& values) {
    CTextTable table({{"Name"}, {"Value", CTextTable::Right}, {"Unit"}, {"Kind"}});
    for (const Json& value : values)
        table.Row({value["name"], ShownJson(value["value"]), value["unit"], value["kind"]});
    return table.Text();
}

class CInfoCommand final : public ICommand {
  public:
    const char* Verb() const override { return "info"; }
    const char* Brief() const override {
        return "what is in a file: source, frames, calibration, or one frame's values";
    }
    const char* Examples() const override {
        return "ovix info dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480\n"
               "ovix info dump.raw --pixel-type \"K410 IR (GigE)\" --size 640x480 --frame -1 --json\n"
               "ovix info run.krt --hexdump";
    }
    void AddOptions(CLI::App& verb) override {
        source_.Add(verb);
        verb.add_option("--frame", frame_, "the values of this frame alone, from 0, -1 the last")
            ->type_name("N")
            ->group("Output")
            ->excludes(verb.get_option("--frames"));
        verb.add_flag("--hexdump", hexdump_,
                      "the bytes of one frame, the first when --frame names none, beside field names and values")
            ->group("Output")
            ->excludes(verb.get_option("--frames"));
        verb.add_flag("--counters", counters_,
                      "read all frames for their presets, times and counters, not the two ends of the file alone")
            ->group("Input");
        verb.add_option("--user-cal", userCalibration_, "a user calibration that \"ovix calibrate\" wrote")
            ->type_name("FILE")
            ->group("Input");
        verb.add_flag("--json", json_, "one JSON document instead of tables")->group("Output");
    }

    EExit Run() override {
        const bool ofOneFrame = hexdump_ || !frame_.empty();
        if (ofOneFrame && counters_) throw UsageFault("--counters: has no effect on one frame");
        if (hexdump_ && !userCalibration_.empty()) throw UsageFault("--user-cal: has no effect on --hexdump");
        const std::vector<measure::SBlock> found =
            source_.File() == "-" || ofOneFrame ? std::vector<measure::SBlock>() : Blocks();
        const Json blocks = found.empty() ? Json() : BlocksJson(found);
        std::optional<measure::CSource> source;
        try {
            source = source_.Open(true);
        } catch (const CFault&) {
            if (!found.empty()) ShowBlocksAlone(blocks);
            if (!found.empty() && IsWholeWithoutFrames(found)) return ExitDone;
            if (found.empty() && !source_.NamesType()) ShowGuesses();
            throw;
        }
        if (hexdump_) return ShowBytes(*source);
        std::optional<CRCalFile> userCalibration;
        if (!userCalibration_.empty()) userCalibration = ReadUserCalibration(userCalibration_);
        CSourceReport report(*source, userCalibration);
        return ofOneFrame ? ShowFrame(*source, report) : ShowAll(*source, report, blocks);
    }

  private:
    /// None for a file that cannot be opened, of which `Open` says why.
    std::vector<measure::SBlock> Blocks() const {
        try {
            return measure::BlocksOf(source_.File());
        } catch (const measure::CError&) {
            return {};
        }
    }
    /// What the bytes of a dump speak for, best first, as options to paste.
    void ShowGuesses() const {
        std::vector<measure::SGuess> guesses;
        try {
            if (source_.File() != "-") guesses = measure::GuessFormat(source_.File());
        } catch (const measure::CError&) {
            return;  // of a file that cannot be read, the error that follows says so
        }
        if (guesses.empty()) return;
        if (json_) return PrintJson(GuessesJson(guesses));
        CTextTable table({{"The bytes may be"}, {"Mark"}, {"Size in header"}, {"Counter rises"}, {"No remainder"}});
        const auto word = [](bool speaks) { return speaks ? "yes" : "-"; };
        for (const measure::SGuess& guess : guesses)
            table.Row({OptionsOf(guess), word(guess.mark), word(guess.sizeInHeader), word(guess.counterRises),
                       word(guess.noRemainder)});
        Print(table.Text());
    }
    static std::string OptionsOf(const measure::SGuess& guess) {
        const measure::SFrameFormat& format = guess.format;
        return fmt::format("--pixel-type \"{}\" --size {}x{}", format.pixelTypeName, format.width, format.height) +
               (guess.frameSize ? fmt::format(" --frame-size {}", guess.frameSize) : "");
    }
    Json GuessesJson(const std::vector<measure::SGuess>& guesses) const {
        Json list = Json::array();
        for (const measure::SGuess& guess : guesses) {
            list.push_back({{"options", OptionsOf(guess)},
                            {"pixelType", guess.format.pixelTypeName},
                            {"width", guess.format.width},
                            {"height", guess.format.height},
                            {"frameBytes", guess.frameSize ? Json(guess.frameSize) : Json()},
                            {"mark", guess.mark},
                            {"sizeInHeader", guess.sizeInHeader},
                            {"counterRises", guess.counterRises},
                            {"noRemainder", guess.noRemainder},
                            {"fullEvidence", guess.Full()}});
        }
        return {{"schema", kSchemaVersion}, {"file", source_.File()}, {"guesses", std::move(list)}};
    }

    /// A file of blocks without pixels is a kind of its own.
    static bool IsWholeWithoutFrames(const std::vector<measure::SBlock>& blocks) {
        return std::ranges::all_of(blocks, [](const measure::SBlock& block) {
            return block.header.size != reduce::SInfoFileBlock::ToEndOfFile && block.crcRight.value_or(true);
        });
    }

    EExit ShowBytes(const measure::CSource& source) const {
        measure::SRawFrame raw;
        CSourceArguments::ReadOne(source, frame_.empty() ? "0" : frame_, "--frame", raw);
        Json rows;
        try {
            rows = HexdumpJson(raw.bytes, source.Format());
        } catch (const CFault& fault) {
            SFault facts = fault.Facts();
            facts.file = source.Name();
            facts.frame = raw.number;
            throw CFault(std::move(facts));
        }
        if (json_)
            PrintJson({{"schema", kSchemaVersion},
                       {"file", source.Name()},
                       {"frame", raw.number},
                       {"pixelType", source.Format().pixelTypeName},
                       {"frameBytes", raw.bytes.size()},
                       {"rows", rows}});
        else
            Print(HexdumpTable(rows));
        return CSourceArguments::Exit(source, 0);
    }

    EExit ShowFrame(const measure::CSource& source, CSourceReport& report) const {
        measure::SRawFrame raw;
        CSourceArguments::ReadOne(source, frame_, "--frame", raw);
        report.Add(raw);
        const Json values = report.FrameValues(raw.bytes);
        if (json_)
            PrintJson({{"schema", kSchemaVersion}, {"file", source.Name()}, {"values", values}});
        else
            Print(ValueTable(values));
        return CSourceArguments::Exit(source, 0);
    }

    /// All frames that were asked for, or those at the two ends of the file.
    measure::CFrameNumbers FramesToRead(const measure::CSource& source) const {
        constexpr u64 kAtEachEnd = 2;
        if (const auto chosen = source_.Frames(source)) return *chosen;
        const u64 count = *source.Count();
        if (counters_ || count <= 2 * kAtEachEnd) return measure::CFrameNumbers::All(count);
        return measure::CFrameNumbers({{0, kAtEachEnd - 1, 1}, {count - kAtEachEnd, count - 1, 1}});
    }

    EExit ShowAll(const measure::CSource& source, CSourceReport& report, const Json& blocks) const {
        u64 skipped = 0;
        u64 read = 0;
        const auto take = [&](auto&& get) {
            try {
                get();
                ++read;
            } catch (const measure::CError& error) {
                if (source_.OnError() == measure::EOnFault::Stop) throw;
                ++skipped;
                Say(std::string(FaultOf(error).what()) + " (skipped)");
            }
        };
        measure::SRawFrame raw;
        bool whole = true;
        if (source.IsNumbered()) {
            const measure::CFrameNumbers frames = FramesToRead(source);
            whole = source_.Frames(source) || frames.Count() == source.Count();
            CProgress progress("frame", frames.Count());
            for (u64 n = 0; n < frames.Count(); ++n) {
                progress.Show(n);
                take([&] {
                    source.Read(frames[n], raw);
                    report.Add(raw);
                });
            }
        } else {
            for (bool more = true; more;) {
                take([&] {
                    more = source.Next(raw);
                    if (more) report.Add(raw);
                });
            }
        }
        if (!read) throw CAppError(ExitBadData, fmt::format("not one of {} frames would do", skipped));
        Json document = {{"schema", kSchemaVersion}};
        document.update(report.Document());
        // What lies between the ends was not read.
        if (!whole && !document["counter"].is_null())
            document["counter"]["gapCount"] = document["counter"]["missing"] = nullptr;
        document["framesSkipped"] = skipped;
        const bool recording = source.Kind() == measure::ESource::Recording;
        document["source"] = recording ? RecordedSourceJson(source, report.Objects()) : Json();
        document["blocks"] = blocks;
        if (json_) {
            PrintJson(document);
        } else {
            Print(Overview(document) + ValueSection("Scene as recorded", document["scene"]) +
                  ValueSection("Calibration", document["calibration"]) +
                  ValueSection("User calibration", document["userCalibration"]) + GapLines(document["counter"]) +
                  (blocks.is_null() ? "" : BlockTable(blocks)));
        }
        return CSourceArguments::Exit(source, skipped);
    }

    /// What can still be said of a recording without frames, or whose frames cannot be reached.
    void ShowBlocksAlone(const Json& blocks) const {
        if (json_)
            PrintJson({{"schema", kSchemaVersion}, {"file", source_.File()}, {"blocks", blocks}});
        else
            Print(BlockTable(blocks).substr(1));
    }

    CSourceArguments source_;
    std::string frame_;
    std::string userCalibration_;
    bool hexdump_ = false;
    bool counters_ = false;
    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeInfoCommand() { return std::make_unique<CInfoCommand>(); }

}  // namespace ovix::app
