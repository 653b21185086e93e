#include "python/src/binding.h"

namespace ovix::python {

namespace {

using measure::CError;
using measure::EError;
using measure::SErrorFacts;

constexpr std::pair<EError, const char*> kNames[] = {
    {EError::FileChanged, "FileChanged"},
    {EError::UnknownFormat, "UnknownFormat"},
    {EError::NoFrames, "NoFrames"},
    {EError::BlocksBroken, "BlocksBroken"},
    {EError::MetadataDamaged, "MetadataDamaged"},
    {EError::NoDecoder, "NoDecoder"},
    {EError::WrongGeometry, "WrongGeometry"},
    {EError::FrameCut, "FrameCut"},
    {EError::FrameRefused, "FrameRefused"},
    {EError::PixelsDamaged, "PixelsDamaged"},
    {EError::PresetOutOfRange, "PresetOutOfRange"},
    {EError::SumDiffers, "SumDiffers"},
    {EError::NoCalibration, "NoCalibration"},
    {EError::CorrectionUnusable, "CorrectionUnusable"},
    {EError::FitUndetermined, "FitUndetermined"},
};

/// `OSError(errno, text, file)`, which Python turns into the class that belongs to the number.
void RaiseSystemError(const CError& error, int number) {
    const SErrorFacts& facts = error.Facts();
    const py::object file = facts.file.empty() ? py::object(py::none()) : py::cast(facts.file);
    const std::string text = facts.problem.empty() ? error.what() : facts.problem;
    const py::tuple arguments = py::make_tuple(facts.systemError ? facts.systemError : number, text, file);
    PyErr_SetObject(PyExc_OSError, arguments.ptr());
}

void RaiseFormatError(const CError& error, const char* name) {
    const SErrorFacts& facts = error.Facts();
    const auto text = [](const std::string& value) { return value.empty() ? py::object(py::none()) : py::cast(value); };
    const py::object type = py::module_::import("ovix.errors").attr("FormatError");
    const py::object made = type(error.what(), name, text(facts.file), facts.frame, text(facts.block), facts.offset,
                                 text(facts.problem), text(facts.expected), text(facts.found), text(facts.advice));
    PyErr_SetObject(type.ptr(), made.ptr());
}

void Raise(const CError& error) {
    switch (error.Id()) {
        case EError::WrongArgument:
        case EError::UnitNotOffered:
        case EError::NotNumbered:
        case EError::FileIsInput:
            return PyErr_SetString(PyExc_ValueError, error.what());
        case EError::NoSuchFrame:
            return PyErr_SetString(PyExc_IndexError, error.what());
        case EError::FileMissing:
            return RaiseSystemError(error, ENOENT);
        case EError::FileExists:
            return RaiseSystemError(error, EEXIST);
        case EError::FileUnreadable:
        case EError::FileUnwritable:
        case EError::HelperMissing:
        case EError::SystemFailed:
            return RaiseSystemError(error, EIO);
        case EError::Interrupted:
            return RaiseSystemError(error, EINTR);
        default:
            break;
    }
    for (const auto& [id, name] : kNames) {
        if (id == error.Id()) return RaiseFormatError(error, name);
    }
    RaiseFormatError(error, "Other");
}

}  // namespace

void BindErrors(py::module_&) {
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const CError& error) {
            Raise(error);
        }
    });
}

py::dict Dict(const measure::SFinding& finding) {
    constexpr const char* kWeights[] = {"note", "doubt", "damage"};
    py::dict dict;
    dict["weight"] = kWeights[static_cast<std::size_t>(finding.weight)];
    dict["what"] = finding.what;
    dict["frame"] = finding.frame;
    dict["block"] = finding.block.empty() ? py::object(py::none()) : py::cast(finding.block);
    dict["offset"] = finding.offset;
    dict["expected"] = finding.expected;
    dict["found"] = finding.found;
    return dict;
}

py::dict Dict(const measure::SParameter& parameter) {
    constexpr const char* kOrigins[] = {"frame", "file", "default", "caller", "computed"};
    py::dict dict;
    dict["key"] = parameter.key;
    dict["name"] = parameter.name;
    dict["unit"] = parameter.unit;
    dict["value"] = parameter.value;
    dict["origin"] = kOrigins[static_cast<std::size_t>(parameter.origin)];
    return dict;
}

}  // namespace ovix::python
