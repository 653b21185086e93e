#include "python/src/binding.h"

namespace ovix::python {

using namespace measure;

namespace {

const char* KindWord(ESource kind) {
    switch (kind) {
        case ESource::Recording:
            return "recording";
        case ESource::Dump:
            return "dump";
        case ESource::Counts:
            return "counts";
    }
    return "";
}

SOpenOptions OptionsOf(const std::string& pixelType, u16 width, u16 height, u32 frameSize, bool follow, double patience,
                       bool acceptDamage) {
    if (!(patience >= 0 && patience < 1e9)) throw py::value_error("patience: expected seconds from 0 to 1e9");
    return {.pixelType = pixelType,
            .width = width,
            .height = height,
            .frameSize = frameSize,
            .follow = follow,
            .patience = std::chrono::milliseconds(static_cast<i64>(patience * 1000)),
            .acceptDamage = acceptDamage};
}

/// Opens what may keep silent for long: a signal ends the waiting.
CPySource OpenInterruptibly(SOpenOptions options, const std::function<CSource(const SOpenOptions&)>& open) {
    std::stop_source stop;
    options.stop = stop.get_token();
    std::optional<CSource> source;
    Interruptibly(stop, [&] { source.emplace(open(options)); });
    return CPySource(std::move(*source));
}

/// What the file says as a whole; nothing of a picture is read.
py::dict RecordedInfo(const CSource& source) {
    reduce::CReduceObjectArray objects;
    source.Describe(objects);
    const auto info = objects.GetSourceInfo(true);
    py::list texts;
    for (const CString* text :
         {&info->text0, &info->text1, &info->text2, &info->text3, &info->text4, &info->text5, &info->text6,
          &info->text7, &info->text8, &info->text9, &info->text10, &info->text11, &info->text12}) {
        if (!text->IsEmpty()) texts.append(text->GetUTF8());
    }
    py::dict dict;
    const bool recording = source.Kind() == ESource::Recording;
    dict["camera"] = recording ? py::cast(info->cameraName.GetUTF8()) : py::object(py::none());
    dict["texts"] = texts;
    dict["ticks"] = recording && info->time.GetTimestamp() ? TimeOf(info->time).time_since_epoch().count() : kNoTime;
    return dict;
}

void ReadCounts(CPySource& self, const Numbers& numbers, const py::array& out, unsigned threads) {
    const CFrameReader& reader = self.Reader();
    const u64 count = static_cast<u64>(numbers.size());
    const std::size_t bytes = std::size_t{reader.Form().bytesPerPixel} * self.source.Format().PixelCount();
    if (!out.writeable() || !(out.flags() & py::array::c_style) || static_cast<u64>(out.nbytes()) != count * bytes)
        throw py::value_error("out: expected a writable array in C order of the shape and type of the counts");
    auto* const pixels = static_cast<u8*>(py::array(out).mutable_data());
    struct SWorker {
        SRawFrame raw;
        reduce::CReduceObjectArray objects;
    };
    std::vector<SWorker> workers(WorkersFor(count, threads));
    InParallel(count, threads, [&, frames = numbers.data()](u64 i, unsigned worker) {
        SWorker& own = workers[worker];
        self.source.Read(frames[i], own.raw);
        reader.Read(own.raw, own.objects, std::span(pixels + i * bytes, bytes));
    });
}

py::tuple Facts(CPySource& self, const Numbers& numbers, unsigned threads) {
    const CFrameIndex& index = self.Index();
    const u64 count = static_cast<u64>(numbers.size());
    std::vector<i64> ticks(count), counters(count);
    std::vector<i16> presets(count);
    InParallel(count, threads, [&, frames = numbers.data()](u64 i, unsigned) {
        const SFrameFacts facts = index.Facts(frames[i]);
        ticks[i] = TicksOf(facts.time);
        counters[i] = facts.counter ? static_cast<i64>(*facts.counter) : -1;
        presets[i] = facts.namesPreset ? facts.preset : i16{-1};
    });
    const std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(count)};
    return py::make_tuple(Owned(std::move(ticks), shape), Owned(std::move(counters), shape),
                          Owned(std::move(presets), shape));
}

py::array Extents(const CPySource& self, const Numbers& numbers) {
    std::vector<u64> places;
    for (py::ssize_t i = 0; i < numbers.size(); ++i) {
        const SExtent frame = self.source.Find(numbers.data()[i]);
        places.insert(places.end(), {frame.offset, frame.size});
    }
    return Owned(std::move(places), {numbers.size(), 2});
}

py::tuple References(const std::vector<std::string>& paths, const std::string& pixelType, u16 width, u16 height,
                     u32 frameSize, bool follow, double patience, bool acceptDamage, const std::string& baseUrl,
                     u64 framesPerReference, unsigned threads) {
    const SOpenOptions options = OptionsOf(pixelType, width, height, frameSize, follow, patience, acceptDamage);
    const std::vector<std::filesystem::path> files(paths.begin(), paths.end());
    CSignals signals;
    SReferenceOptions how{.baseUrl = baseUrl, .framesPerReference = framesPerReference, .threads = threads};
    how.progress = [&](u64, u64) { signals.Check(); };
    std::vector<std::pair<std::string, SFinding>> found;
    how.report = [&](const std::string& file, const SFinding& finding) { found.emplace_back(file, finding); };
    std::string text;
    {
        const py::gil_scoped_release unlocked;
        text = ZarrReferences(files, options, how);
    }
    py::list findings;
    for (const auto& [file, finding] : found) findings.append(py::make_tuple(file, Dict(finding)));
    return py::make_tuple(text, findings);
}

}  // namespace

const CFrameReader& CPySource::Reader() {
    if (!reader_) reader_.emplace(source);
    return *reader_;
}

const CFrameIndex& CPySource::Index() {
    if (index_) return *index_;
    std::optional<CFrameIndex> made;
    {
        const py::gil_scoped_release unlocked;
        made.emplace(source);
    }
    if (!index_) index_ = std::move(made);  // another thread may have been faster
    return *index_;
}

const char* CPySource::Element() {
    const reduce::SFrameForm& form = Reader().Form();
    return form.element == UInt16 ? "uint16" : form.element == Opaque ? "rgb" : "";
}

void BindSource(py::module_& module) {
    module.def("zarr_references", &References, py::arg("paths"), py::arg("pixel_type"), py::arg("width"),
               py::arg("height"), py::arg("frame_size"), py::arg("follow"), py::arg("patience"),
               py::arg("accept_damage"), py::arg("base_url"), py::arg("frames_per_reference"), py::arg("threads"));
    py::class_<CPySource>(module, "Source")
        .def(py::init([](const std::string& path, const std::string& pixelType, u16 width, u16 height, u32 frameSize,
                         bool follow, double patience, bool acceptDamage) {
                 return OpenInterruptibly(
                     OptionsOf(pixelType, width, height, frameSize, follow, patience, acceptDamage),
                     [&](const SOpenOptions& options) { return Open(path, options); });
             }),
             py::arg("path"), py::arg("pixel_type"), py::arg("width"), py::arg("height"), py::arg("frame_size"),
             py::arg("follow"), py::arg("patience"), py::arg("accept_damage"))
        .def_static(
            "from_descriptor",
            [](int descriptor, const std::string& name, const std::string& pixelType, u16 width, u16 height,
               u32 frameSize) {
                return OpenInterruptibly(
                    OptionsOf(pixelType, width, height, frameSize, false, 0, false),
                    [&](const SOpenOptions& options) { return OpenDescriptor(descriptor, name, options); });
            },
            py::arg("descriptor"), py::arg("name"), py::arg("pixel_type"), py::arg("width"), py::arg("height"),
            py::arg("frame_size"))
        .def_property_readonly("name", [](const CPySource& self) { return self.source.Name(); })
        .def_property_readonly("kind", [](const CPySource& self) { return KindWord(self.source.Kind()); })
        .def_property_readonly("numbered", [](const CPySource& self) { return self.source.IsNumbered(); })
        .def_property_readonly("count",
                               [](const CPySource& self) {
                                   const py::gil_scoped_release unlocked;
                                   return self.source.Count();
                               })
        .def_property_readonly("frame_size", [](const CPySource& self) { return self.source.FrameSize(); })
        .def_property_readonly("width", [](const CPySource& self) { return self.source.Format().width; })
        .def_property_readonly("height", [](const CPySource& self) { return self.source.Format().height; })
        .def_property_readonly("pixel_type", [](const CPySource& self) { return self.source.Format().pixelTypeName; })
        .def_property_readonly("decoder", [](const CPySource& self) { return self.source.Format().filter; })
        .def_property_readonly("element", &CPySource::Element)
        .def_property_readonly("compressed", [](CPySource& self) { return self.Reader().Form().compressed; })
        .def("recorded", [](const CPySource& self) { return RecordedInfo(self.source); })
        .def("findings",
             [](const CPySource& self) {
                 py::list list;
                 for (const SFinding& finding : self.source.Findings()) list.append(Dict(finding));
                 return list;
             })
        .def("counts", &ReadCounts, py::arg("numbers"), py::arg("out"), py::arg("threads"))
        .def("facts", &Facts, py::arg("numbers"), py::arg("threads"))
        .def("extents", &Extents, py::arg("numbers"))
        .def("pixels",
             [](CPySource& self) -> std::optional<std::pair<u64, bool>> {
                 const auto& place = self.Index().Pixels();
                 return place ? std::optional(std::pair(place->offset, place->bigEndian)) : std::nullopt;
             })
        .def(
            "raw",
            [](const CPySource& self, u64 number) {
                SRawFrame raw;
                {
                    const py::gil_scoped_release unlocked;
                    self.source.Read(number, raw);
                }
                return py::bytes(reinterpret_cast<const char*>(raw.bytes.data()), raw.bytes.size());
            },
            py::arg("number"));
}

}  // namespace ovix::python
