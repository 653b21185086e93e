#include "python/src/measurement.h"

#include <algorithm>
#include <cstring>

namespace ovix::python {

using namespace measure;

namespace {

template <class T, std::size_t N>
T Choose(const std::string& word, const char* name, const std::pair<const char*, T> (&words)[N]) {
    std::string list;
    for (const auto& [key, value] : words) {
        if (word == key) return value;
        list += (list.empty() ? "" : ", ") + std::string(key);
    }
    throw py::value_error(std::string(name) + ": expected one of " + list + ", found " +
                          std::string(py::repr(py::cast(word))));
}

constexpr std::pair<const char*, EQuantity> kQuantities[] = {
    {"counts", EQuantity::Counts},     {"signal", EQuantity::Signal},
    {"radiance", EQuantity::Radiance}, {"temperature", EQuantity::Temperature},
    {"red", EQuantity::Red},           {"green", EQuantity::Green},
    {"blue", EQuantity::Blue},         {"average", EQuantity::Average}};
constexpr std::pair<const char*, ECalibration> kCalibrations[] = {{"factory", ECalibration::Factory},
                                                                  {"user", ECalibration::User}};
constexpr std::pair<const char*, ETempType> kScales[] = {
    {"C", Celsius}, {"F", Fahrenheit}, {"K", Kelvin}, {"R", Rankine}};
constexpr std::pair<const char*, std::optional<float> SSceneValues::*> kScene[] = {
    {"emissivity", &SSceneValues::emissivity},
    {"distance", &SSceneValues::distance},
    {"reflected_temp", &SSceneValues::reflectedTemp},
    {"atmosphere_temp", &SSceneValues::atmosphereTemp},
    {"atmosphere_trans", &SSceneValues::atmosphereTrans},
    {"relative_humidity", &SSceneValues::relativeHumidity},
    {"ext_optics_temp", &SSceneValues::extOpticsTemp},
    {"ext_optics_trans", &SSceneValues::extOpticsTrans},
};

}  // namespace

SMeasureOptions MeasureOptionsOf(const py::dict& given) {
    SMeasureOptions options;
    const auto get = [&](const char* key) -> py::object {
        return given.contains(key) ? py::object(given[key]) : py::object(py::none());
    };
    if (const auto word = get("quantity"); !word.is_none())
        options.quantity = Choose(word.cast<std::string>(), "quantity", kQuantities);
    if (const auto word = get("calibration"); !word.is_none())
        options.calibration = Choose(word.cast<std::string>(), "calibration", kCalibrations);
    if (const auto word = get("scale"); !word.is_none())
        options.scale = Choose(word.cast<std::string>(), "scale", kScales);
    for (const auto& [key, member] : kScene) {
        if (const auto value = get(key); !value.is_none()) options.scene.*member = value.cast<float>();
    }
    if (const auto stems = get("correction"); !stems.is_none()) {
        for (auto& [preset, stem] : stems.cast<std::vector<std::pair<std::optional<u8>, std::string>>>())
            options.corrections.push_back({preset, stem});
    }
    if (const auto calibration = get("user_calibration"); !calibration.is_none())
        options.userCalibration = calibration.cast<CRCalFile>();
    if (const auto clip = get("clip"); py::isinstance<py::bool_>(clip)) {
        options.clip = SClip{.on = clip.cast<bool>()};
    } else if (!clip.is_none()) {
        const auto [low, high] = clip.cast<std::pair<float, float>>();
        options.clip = SClip{.on = true, .low = low, .high = high};
    }
    if (const auto correct = get("correct"); !correct.is_none()) options.correct = correct.cast<bool>();
    return options;
}

const char* UnitSymbol(EUnit unit, ETempType scale) {
    constexpr const char* kScaleSymbols[] = {"°C", "°F", "K", "°R"};
    if (IsTemperature(unit)) return kScaleSymbols[scale];
    return unit == RadianceUser || unit == RadianceFactory ? "W/(cm² sr)" : "counts";
}

SMeasuredFacts::SMeasuredFacts(const CFrame& frame)
    : number(frame.number),
      ticks(TicksOf(frame.time)),
      yearAssumed(frame.yearAssumed),
      counter(frame.counter),
      preset(frame.preset),
      merged(frame.merged),
      unit(UnitWords(frame.unit)),
      parameters(frame.Parameters()) {}

/// Taken and given back under the interpreter's lock.
class CPyMeasurement::CBorrowedFrame {
  public:
    explicit CBorrowedFrame(CPyMeasurement& owner) : owner_(owner) {
        if (owner_.idle_.empty()) {
            frame_ = std::make_unique<CFrame>();
        } else {
            frame_ = std::move(owner_.idle_.back());
            owner_.idle_.pop_back();
        }
    }
    CBorrowedFrame(CBorrowedFrame&&) noexcept = default;
    ~CBorrowedFrame() {
        if (frame_) owner_.idle_.push_back(std::move(frame_));
    }
    CFrame& operator*() const { return *frame_; }

    /// A result that is not wanted is measured into the frame itself.
    void Measure(u64 number, float* values, u8* status) const {
        const CMeasurement& by = owner_.measurement;
        if (values) return by.Measure(number, *frame_, {values, status});
        by.Measure(number, *frame_);
        if (status) std::memcpy(status, frame_->status.data(), frame_->status.size());
    }

  private:
    CPyMeasurement& owner_;
    std::unique_ptr<CFrame> frame_;
};

SMeasuredFacts CPyMeasurement::MeasureOne(u64 number, const py::object& values, const py::object& status) {
    const SFrameFormat& format = measurement.Source().Format();
    auto* const valueRoom = Room<float>(values, {format.height, format.width}, "out");
    auto* const statusRoom = Room<u8>(status, {format.height, format.width}, "status");
    const CBorrowedFrame frame(*this);
    {
        const py::gil_scoped_release unlocked;
        frame.Measure(number, valueRoom, statusRoom);
    }
    return SMeasuredFacts(*frame);
}

std::vector<SMeasuredFacts> CPyMeasurement::MeasureMany(const Numbers& numbers, const py::object& values,
                                                        const py::object& status, unsigned threads) {
    const SFrameFormat& format = measurement.Source().Format();
    const std::vector<py::ssize_t> shape{numbers.size(), format.height, format.width};
    auto* const valueRoom = Room<float>(values, shape, "out");
    auto* const statusRoom = Room<u8>(status, shape, "status");
    const u64 count = static_cast<u64>(numbers.size());
    std::vector<CBorrowedFrame> frames;
    for (unsigned worker = 0; worker < WorkersFor(count, threads); ++worker) frames.emplace_back(*this);
    std::vector<std::optional<SMeasuredFacts>> facts(count);
    InParallel(count, threads, [&, wanted = numbers.data()](u64 i, unsigned worker) {
        const u64 at = i * format.PixelCount();
        frames[worker].Measure(wanted[i], valueRoom ? valueRoom + at : nullptr, statusRoom ? statusRoom + at : nullptr);
        facts[i].emplace(*frames[worker]);
    });
    std::vector<SMeasuredFacts> result;
    result.reserve(count);
    for (auto& one : facts) result.push_back(std::move(*one));
    return result;
}

void BindMeasurement(py::module_& module) {
    py::class_<SMeasuredFacts>(module, "Facts")
        .def_readonly("number", &SMeasuredFacts::number)
        .def_readonly("ticks", &SMeasuredFacts::ticks)
        .def_readonly("year_assumed", &SMeasuredFacts::yearAssumed)
        .def_readonly("counter", &SMeasuredFacts::counter)
        .def_readonly("preset", &SMeasuredFacts::preset)
        .def_readonly("merged", &SMeasuredFacts::merged)
        .def_readonly("unit", &SMeasuredFacts::unit)
        .def_property_readonly("parameters", [](const SMeasuredFacts& self) {
            py::list list;
            for (const SParameter& parameter : self.parameters) list.append(Dict(parameter));
            return list;
        });
    py::class_<CPyMeasurement>(module, "Measurement")
        .def(py::init([](const CPySource& source, const py::dict& given) {
                 SMeasureOptions options = MeasureOptionsOf(given);
                 const py::gil_scoped_release unlocked;
                 return CPyMeasurement(CMeasurement(source.source, std::move(options)));
             }),
             py::arg("source"), py::arg("options"))
        .def_property_readonly("unit",
                               [](const CPyMeasurement& self) -> std::optional<std::string> {
                                   const auto unit = self.measurement.Unit();
                                   return unit ? std::optional(UnitWords(*unit)) : std::nullopt;
                               })
        .def_property_readonly("symbol",
                               [](const CPyMeasurement& self) -> std::optional<std::string> {
                                   const auto unit = self.measurement.Unit();
                                   return unit ? std::optional(UnitSymbol(*unit, self.measurement.Options().scale))
                                               : std::nullopt;
                               })
        .def_property_readonly("offered",
                               [](const CPyMeasurement& self) {
                                   std::vector<std::string> words;
                                   for (const EUnit unit : self.measurement.Offered()) words.push_back(UnitWords(unit));
                                   return words;
                               })
        .def_property_readonly("corrects", [](const CPyMeasurement& self) { return self.measurement.Corrects(); })
        .def("measure", &CPyMeasurement::MeasureOne, py::arg("number"), py::arg("values"), py::arg("status"))
        .def("measure_many", &CPyMeasurement::MeasureMany, py::arg("numbers"), py::arg("values"), py::arg("status"),
             py::arg("threads"));
}

}  // namespace ovix::python
