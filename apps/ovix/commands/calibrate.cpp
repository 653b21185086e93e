#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>

#include "apps/ovix/cli/output_arguments.h"
#include "apps/ovix/commands/command.h"
#include "apps/ovix/facts/calibration_points.h"
#include "apps/ovix/facts/user_calibration.h"
#include "apps/ovix/input_files.h"
#include "apps/ovix/output/output_file.h"
#include "apps/ovix/text/choice.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/number_text.h"
#include "apps/ovix/text/text_table.h"
#include "apps/ovix/text/values.h"
#include "apps/ovix/units.h"

namespace ovix::app {

using measure::ETemperatureModel;
using measure::SCalibrationFit;
using measure::SCalibrationPoint;
using measure::SFitOptions;
using measure::SFittedPoint;
using measure::SPresetFit;

namespace {

class CCalibrateCommand final : public ICommand {
  public:
    const char* Verb() const override { return "calibrate"; }
    const char* Brief() const override { return "a user calibration from black bodies that the camera saw"; }
    const char* Examples() const override {
        return "ovix calibrate points.csv --band 8,12 -o cal.json\n"
               "ovix calibrate points.csv --band 3,5 --order 3 --to-temperature planck --scale K -o cal.json";
    }
    void AddOptions(CLI::App& verb) override {
        verb.add_option("FILE", file_,
                        "lines of counts,temperature or counts,temperature,preset; - is the standard input")
            ->required()
            ->type_name("");
        const auto add = [&](const char* group, const char* name, std::string& value, const char* type,
                             const char* help) {
            return verb.add_option(name, value, help)->type_name(type)->group(group);
        };
        add("Input", "--scale", scale_, "C|F|K|R",
            "scale of temperatures that bear none, and of those that are shown (else C)");
        add("Input", "--preset", preset_, "0..7", "preset of points that name none (else 0)");
        add("Fit", "--band", band_, "LO,HI", "the band in which the camera sees, in micrometres")->required();
        add("Fit", "--order", order_, "N", "order of the polynomial from counts to radiance, 1 to 9 (else 2)");
        add("Fit", "--to-temperature", model_, "table|polynomial|planck",
            "how radiance becomes temperature: by a table of Planck's law over the band, by a polynomial near it, "
            "or by Planck's law at the band's middle (else table)");
        add("Fit", "--temperature-order", temperatureOrder_, "N", "order of that polynomial, 1 to 9 (else 5)");
        output_.Add(verb, "the calibration (JSON)");
    }

    EExit Run() override {
        SFitOptions options;
        TakeBand(options);
        options.order = Order("--order", order_, options.order);
        options.model = ParseChoice<ETemperatureModel>("--to-temperature", model_,
                                                       {{"table", ETemperatureModel::Table},
                                                        {"polynomial", ETemperatureModel::Polynomial},
                                                        {"planck", ETemperatureModel::Planck}});
        options.temperatureOrder = Order("--temperature-order", temperatureOrder_, options.temperatureOrder);
        std::optional<ETempType> scale;
        if (!scale_.empty()) scale = ParseScale("--scale", scale_);
        const auto preset = ParseNumber<u8>(preset_);
        if (!preset || *preset >= CRCalFile::PresetCount)
            throw UsageFault("--preset: expected 0 to 7, found \"" + preset_ + "\"");

        RememberInput(file_);
        COutputFile output(output_.File(), output_.Overwrites());
        const SCalibrationFit fit = Fit(ReadCalibrationPoints(file_, scale, *preset), options);
        for (const SPresetFit& found : fit.presets) {
            if (!found.steady)
                Say(
                    fmt::format("{}: preset {}: the fitted radiance turns round between the measured counts; a lower "
                                "--order may not",
                                file_, found.preset));
        }
        const std::string document = UserCalibrationDocument(fit.calibration).dump(2) + '\n';
        output.Write(document.data(), document.size());
        output.Commit();
        Report(fit, scale.value_or(Celsius));
        return ExitDone;
    }

  private:
    void TakeBand(SFitOptions& options) const {
        constexpr double kLongest = 100;
        const auto ends = SplitText(band_, ',');
        const auto low = ParseNumber<double>(ends.front());
        const auto high = ends.size() == 2 ? ParseNumber<double>(ends.back()) : std::nullopt;
        if (!low || !high || !(*low > 0 && *low < *high && *high <= kLongest))
            throw UsageFault("--band: expected LO,HI in micrometres, LO below HI and HI at most 100, found \"" + band_ +
                             '"');
        options.lowWave = *low;
        options.highWave = *high;
    }
    static int Order(const char* option, const std::string& text, int byDefault) {
        if (text.empty()) return byDefault;
        const auto order = ParseNumber<int>(text);
        if (!order || *order < 1 || *order > 9)
            throw UsageFault(fmt::format("{}: expected 1 to 9, found \"{}\"", option, text));
        return *order;
    }

    SCalibrationFit Fit(std::vector<SCalibrationPoint> points, const SFitOptions& options) const {
        try {
            return measure::FitCalibration(std::move(points), options);
        } catch (const measure::CError& error) {
            throw FaultOf(error.Of(file_, {}));
        }
    }

    void Report(const SCalibrationFit& fit, ETempType scale) const {
        if (output_.File() == "-") return;  // the standard output is taken
        if (output_.SaysJson()) return PrintJson(Document(fit));
        const SUnitText temperature = app::UnitText(TemperatureUser, scale);
        const SUnitText radiance = app::UnitText(RadianceUser, scale);
        // A difference in degrees Fahrenheit or Rankine is 1.8 times that in kelvin.
        const double perKelvin = scale == Fahrenheit || scale == Rankine ? 1.8 : 1;
        const auto difference = [&](double kelvin, const char* plus = "") {
            return std::isfinite(kelvin) ? fmt::format("{}{:.3f}", kelvin > 0 ? plus : "", kelvin * perKelvin) : "-";
        };
        CTextTable table({{"Preset", CTextTable::Right},
                          {"Counts", CTextTable::Right},
                          {"Black body (" + temperature.symbol + ")", CTextTable::Right},
                          {"Radiance (" + radiance.symbol + ")", CTextTable::Right},
                          {"Fitted (" + radiance.symbol + ")", CTextTable::Right},
                          {"Found (" + temperature.symbol + ")", CTextTable::Right},
                          {"Residual (" + temperature.difference + ")", CTextTable::Right}});
        std::string summary;
        for (const SPresetFit& preset : fit.presets) {
            for (const SFittedPoint& p : preset.points) {
                const auto shown = [&](double celsius) {
                    return ShownValue(CMath::ConvertTemperature(celsius, Celsius, scale), TemperatureUser);
                };
                table.Row({fmt::format("{}", preset.preset), ShownValue(p.point.counts, Counts), shown(p.point.celsius),
                           ShownValue(p.radiance, RadianceUser), ShownValue(p.fitted, RadianceUser), shown(p.celsius),
                           difference(p.Residual(), "+")});
            }
            summary += fmt::format("preset {}: {} points, residuals: rms {} {}, largest {} {}\n", preset.preset,
                                   preset.points.size(), difference(preset.Rms()), temperature.difference,
                                   difference(preset.Largest()), temperature.difference);
        }
        Print(table.Text() + summary);
    }

    Json Document(const SCalibrationFit& fit) const {
        Json presets = Json::array();
        for (const SPresetFit& preset : fit.presets) {
            Json points = Json::array();
            for (const SFittedPoint& p : preset.points) {
                points.push_back({{"counts", p.point.counts},
                                  {"blackBodyCelsius", p.point.celsius},
                                  {"radiance", p.radiance},
                                  {"fittedRadiance", p.fitted},
                                  {"foundCelsius", p.celsius},
                                  {"residualKelvin", p.Residual()}});
            }
            presets.push_back({{"preset", preset.preset},
                               {"steady", preset.steady},
                               {"rmsKelvin", preset.Rms()},
                               {"largestKelvin", preset.Largest()},
                               {"points", std::move(points)}});
        }
        return {{"schema", kSchemaVersion},
                {"output", output_.File()},
                {"radianceUnit", app::UnitText(RadianceUser, Celsius).symbol},
                {"presets", std::move(presets)}};
    }

    COutputArguments output_;
    std::string file_, band_, order_, temperatureOrder_, scale_;
    std::string model_ = "table";
    std::string preset_ = "0";
};

}  // namespace

std::unique_ptr<ICommand> MakeCalibrateCommand() { return std::make_unique<CCalibrateCommand>(); }

}  // namespace ovix::app
