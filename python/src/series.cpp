#include "python/src/measurement.h"

namespace ovix::python {

using namespace measure;

CFrameNumbers NumbersOf(const std::vector<std::array<u64, 3>>& runs) {
    std::vector<CFrameNumbers::SRun> list;
    list.reserve(runs.size());
    for (const auto& [first, last, step] : runs) list.push_back({first, last, step});
    return CFrameNumbers(std::move(list));
}

namespace {

EOnFault OnFaultOf(const std::string& word) {
    if (word == "stop") return EOnFault::Stop;
    if (word == "skip") return EOnFault::Skip;
    if (word == "fill") return EOnFault::Fill;
    throw py::value_error("on_fault: expected one of stop, skip, fill, found '" + word + "'");
}

using Runs = std::optional<std::vector<std::array<u64, 3>>>;

SSeriesOptions OptionsOf(const Runs& runs, unsigned threads, const std::string& onFault, bool mergePresets) {
    SSeriesOptions options;
    if (runs) options.frames = NumbersOf(*runs);
    options.threads = threads;
    options.onFault = OnFaultOf(onFault);
    options.mergePresets = mergePresets;
    return options;
}

py::list FaultsOf(const CSeries& series) {
    py::list list;
    for (const CError& fault : series.Faults()) list.append(py::make_tuple(fault.Facts().frame, fault.what()));
    return list;
}

/// Measured frames one after the other, each in arrays of its own.
class CPySeries {
  public:
    CPySeries(const CPyMeasurement& of, SSeriesOptions options)
        : measurement_(of.measurement), series_(measurement_, WithStop(std::move(options))) {}
    ~CPySeries() { Close(); }

    /// The threads end.
    void Close() {
        const py::gil_scoped_release unlocked;
        stop_.request_stop();
        at_.reset();
        ended_ = true;
    }
    py::tuple Next() {
        if (ended_) throw py::stop_iteration();
        try {
            Advance();
        } catch (...) {
            ended_ = true;
            throw;
        }
        if (*at_ == std::default_sentinel) {
            Close();
            throw py::stop_iteration();
        }
        CFrame& frame = **at_;
        SMeasuredFacts facts(frame);
        const std::vector<py::ssize_t> shape{frame.height, frame.width};
        return py::make_tuple(Owned(std::move(frame.values), shape), Owned(std::move(frame.status), shape),
                              std::move(facts), UnitSymbol(frame.unit, frame.scale));
    }
    py::list Faults() const { return FaultsOf(series_); }
    u64 FaultCount() const { return series_.FaultCount(); }

  private:
    SSeriesOptions WithStop(SSeriesOptions options) {
        options.stop = stop_.get_token();
        return options;
    }
    void Advance() {
        const auto step = [this] {
            if (at_)
                ++*at_;
            else
                at_.emplace(series_.begin());
        };
        // A frame of a file is there soon; for one of a pipe it may be long.
        if (!measurement_.Source().IsNumbered()) return Interruptibly(stop_, step);
        const py::gil_scoped_release unlocked;
        signals_.Check();
        step();
    }

    CMeasurement measurement_;
    std::stop_source stop_;
    CSeries series_;
    std::optional<CSeries::CIterator> at_;
    CSignals signals_;
    bool ended_ = false;
};

/// The figures of regions, frame by frame, as columns.
struct SColumns {
    explicit SColumns(std::size_t regions) : figures(regions) {}

    struct SFigures {
        std::vector<double> mean, deviation, minimum, maximum;
        std::vector<u32> count, good;
    };
    std::vector<u64> frames;
    std::vector<i64> ticks;
    std::vector<SFigures> figures;

    void Add(const CFrame& frame, std::span<const SRegionStats> stats) {
        frames.push_back(frame.number);
        ticks.push_back(TicksOf(frame.time));
        for (std::size_t i = 0; i < stats.size(); ++i) {
            const bool any = stats[i].count > 0;
            const auto put = [any](std::vector<double>& column, double value) {
                column.push_back(any ? value : std::numeric_limits<double>::quiet_NaN());
            };
            put(figures[i].mean, stats[i].mean);
            put(figures[i].deviation, stats[i].standardDeviation);
            put(figures[i].minimum, stats[i].minimum);
            put(figures[i].maximum, stats[i].maximum);
            figures[i].count.push_back(stats[i].count);
            figures[i].good.push_back(stats[i].good);
        }
    }
    py::dict Dict() && {
        const std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(frames.size())};
        py::dict dict;
        dict["frame"] = Owned(std::move(frames), shape);
        dict["ticks"] = Owned(std::move(ticks), shape);
        py::list regions;
        for (SFigures& one : figures) {
            py::dict columns;
            columns["mean"] = Owned(std::move(one.mean), shape);
            columns["std"] = Owned(std::move(one.deviation), shape);
            columns["min"] = Owned(std::move(one.minimum), shape);
            columns["max"] = Owned(std::move(one.maximum), shape);
            columns["count"] = Owned(std::move(one.count), shape);
            columns["good"] = Owned(std::move(one.good), shape);
            regions.append(std::move(columns));
        }
        dict["regions"] = regions;
        return dict;
    }
};

struct SMeasuredRegions {
    CFrame facts;  ///< without its pixels
    std::vector<SRegionStats> stats;
};

py::dict Statistics(const CPyMeasurement& of, const Runs& runs, const std::vector<std::array<u16, 4>>& boxes,
                    unsigned threads, const std::string& onFault, const py::object& progress) {
    std::vector<SRegion> regions;
    regions.reserve(boxes.size());
    for (const auto& [x, y, width, height] : boxes)
        regions.push_back({.x = x, .y = y, .width = width, .height = height});
    std::stop_source stop;
    SSeriesOptions options = OptionsOf(runs, threads, onFault, false);
    options.stop = stop.get_token();
    const bool numbered = of.measurement.Source().IsNumbered();
    CSignals signals;
    options.progress = [&](u64 done, std::optional<u64> total) {
        if (numbered) signals.Check();
        if (progress.is_none()) return;
        const py::gil_scoped_acquire lock;
        progress(done, total);
    };
    SColumns columns(regions.size());
    CSeries series(of.measurement, options);
    const auto run = [&] {
        series.Run(
            [&](const CFrame& frame) {
                SMeasuredRegions result;
                result.facts.number = frame.number;
                result.facts.time = frame.time;
                for (const SRegion& region : regions) result.stats.push_back(frame.Statistics(region));
                return result;
            },
            [&](const SMeasuredRegions& result) { columns.Add(result.facts, result.stats); });
    };
    if (numbered) {
        const py::gil_scoped_release unlocked;
        run();
    } else {
        Interruptibly(stop, run);
    }
    py::dict dict = std::move(columns).Dict();
    const auto unit = of.measurement.Unit();
    dict["symbol"] = unit ? UnitSymbol(*unit, of.measurement.Options().scale) : "";
    dict["unit"] = unit ? UnitWords(*unit) : "";
    dict["faults"] = FaultsOf(series);
    dict["fault_count"] = series.FaultCount();
    return dict;
}

}  // namespace

void BindSeries(py::module_& module) {
    py::class_<CPySeries>(module, "Series")
        .def(py::init([](const CPyMeasurement& of, const Runs& runs, unsigned threads, const std::string& onFault,
                         bool mergePresets) {
                 return std::make_unique<CPySeries>(of, OptionsOf(runs, threads, onFault, mergePresets));
             }),
             py::arg("measurement"), py::arg("runs"), py::arg("threads"), py::arg("on_fault"), py::arg("merge_presets"))
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", &CPySeries::Next)
        .def("close", &CPySeries::Close)
        .def_property_readonly("faults", &CPySeries::Faults)
        .def_property_readonly("fault_count", &CPySeries::FaultCount);
    module.def("statistics", &Statistics, py::arg("measurement"), py::arg("runs"), py::arg("regions"),
               py::arg("threads"), py::arg("on_fault"), py::arg("progress"));
}

}  // namespace ovix::python
