#include "python/src/measurement.h"

namespace ovix::python {

using namespace measure;

namespace {

SWriteOptions WriteOptionsOf(bool overwrite, bool unpacked, bool keepPart, bool checksums) {
    return {.unpacked = unpacked, .overwrite = overwrite, .keepPart = keepPart, .checksums = checksums};
}

/// The largest of the chosen frames, where they differ: a recording has one size for all.
u32 FrameSizeOf(const CSource& source, const CFrameNumbers& frames, CSignals& signals) {
    u64 largest = source.FrameSize();
    for (u64 n = 0; !source.FrameSize() && n < frames.Count(); ++n) {
        signals.Check();
        largest = std::max(largest, source.Find(frames[n]).size);
    }
    return static_cast<u32>(largest);
}

u64 Record(const CPySource& from, const std::string& path, const std::vector<std::array<u64, 3>>& runs,
           const py::dict& given, bool overwrite, bool unpacked, bool keepPart, bool checksums) {
    const SMeasureOptions options = MeasureOptionsOf(given);
    SWriteOptions how = WriteOptionsOf(overwrite, unpacked, keepPart, checksums);
    const CSource& source = from.source;
    how.input = source;
    const CFrameNumbers frames = NumbersOf(runs);

    const py::gil_scoped_release unlocked;
    CSignals signals;
    reduce::CReduceObjectArray objects;
    GatherMetadata(source, frames, objects);
    AddToSource(objects, options, source.Format());
    CRecordingWriter writer(path, objects, source.Format(), FrameSizeOf(source, frames, signals), how);
    SRawFrame raw;
    for (u64 n = 0; n < frames.Count(); ++n) {
        signals.Check();
        source.Read(frames[n], raw);
        try {
            writer.Add(raw.bytes);
        } catch (const CError& error) {
            throw error.Of(source.Name(), raw.number);
        }
    }
    writer.Finish();
    return writer.Count();
}

/// Findings as they come, made into Python's at the end: nothing of Python is touched meanwhile.
class CFindings {
  public:
    auto Keep() {
        return [this](const SFinding& finding) {
            signals_.Check();
            list_.push_back(finding);
        };
    }
    py::list List() const {
        py::list list;
        for (const SFinding& finding : list_) list.append(Dict(finding));
        return list;
    }

  private:
    CSignals signals_;
    std::vector<SFinding> list_;
};

py::tuple Check(const std::string& path) {
    CFindings findings;
    bool good = false;
    {
        const py::gil_scoped_release unlocked;
        good = CheckRecording(path, findings.Keep());
    }
    return py::make_tuple(good, findings.List());
}

py::tuple Repair(const std::string& from, const std::string& to, bool overwrite, bool checksums) {
    CFindings findings;
    SRepaired repaired;
    {
        const py::gil_scoped_release unlocked;
        repaired = RepairRecording(from, to, WriteOptionsOf(overwrite, false, false, checksums), findings.Keep());
    }
    return py::make_tuple(repaired.frames, repaired.leftOut, findings.List());
}

py::dict CalibrationDict(const SCalibrationFacts& facts) {
    py::dict dict;
    py::list values;
    for (const SParameter& value : facts.values) values.append(Dict(value));
    dict["model"] = facts.model;
    dict["temperature_by"] = facts.temperatureBy;
    dict["values"] = values;
    return dict;
}

py::dict Explain(const CPySource& from, const py::dict& given, u64 frame, u32 x, u32 y) {
    const SMeasureOptions options = MeasureOptionsOf(given);
    const SFrameFormat& format = from.source.Format();
    if (x >= format.width || y >= format.height)
        throw py::value_error("pixel: expected one within " + std::to_string(format.width) + " x " +
                              std::to_string(format.height) + ", found " + std::to_string(x) + ", " +
                              std::to_string(y));
    SPixelWalk walk;
    {
        const py::gil_scoped_release unlocked;
        walk = WalkPixel(from.source, options, frame, y * format.width + x);
    }
    py::list steps, scene;
    for (const SWalkStep& step : walk.steps) {
        const std::string name = step.unit != Counts ? UnitWords(step.unit)
                                 : step.corrected    ? "counts, corrected"
                                                     : "counts as recorded";
        steps.append(py::make_tuple(name, step.value, UnitSymbol(step.unit, options.scale), step.status));
    }
    for (const SParameter& parameter : walk.scene) scene.append(Dict(parameter));
    py::dict dict;
    dict["preset"] = walk.preset;
    dict["steps"] = steps;
    dict["parameters"] = scene;
    dict["calibration"] = walk.calibration.model.empty() ? py::object(py::none()) : CalibrationDict(walk.calibration);
    return dict;
}

}  // namespace

void BindRecordings(py::module_& module) {
    module.def("record", &Record, py::arg("source"), py::arg("path"), py::arg("runs"), py::arg("options"),
               py::arg("overwrite"), py::arg("unpacked"), py::arg("keep_part"), py::arg("checksums"));
    module.def("verify", &Check, py::arg("path"));
    module.def("repair", &Repair, py::arg("source"), py::arg("target"), py::arg("overwrite"), py::arg("checksums"));
    module.def("explain", &Explain, py::arg("source"), py::arg("options"), py::arg("frame"), py::arg("x"),
               py::arg("y"));
}

}  // namespace ovix::python
