#include <algorithm>

#include "capi/guard.h"

using namespace ovix::capi;
using namespace ovix::measure;
using ovix::u64;
using ovix::u8;

/// A source with what is made of its frames, and the frame measured last.
struct ovix_source {
    explicit ovix_source(CSource from, SMeasureOptions with) : source(std::move(from)), options(std::move(with)) {}

    /// Made when it is wanted, for it reads frames.
    const CMeasurement& Measurement() {
        if (!measurement) measurement.emplace(source, options);
        return *measurement;
    }
    template <class Measure>
    void MeasureInto(ovix_frame* to, const Measure& measure) {
        const std::size_t size = CheckedSize(to, "frame");
        measured = false;
        measure();
        measured = true;
        Give(to, Facts(), size);
    }
    ovix_frame Facts() const;

    CSource source;
    SMeasureOptions options;
    std::optional<CMeasurement> measurement;
    SRawFrame raw;
    CFrame frame;
    bool measured = false;
    u64 pushed = 0;
    std::vector<SFinding> findings;
    std::vector<SParameter> parameters;
};

ovix_frame ovix_source::Facts() const {
    ovix_frame facts{};
    facts.number = frame.number;
    facts.values = frame.values.data();
    facts.status = frame.status.data();
    facts.width = frame.width;
    facts.height = frame.height;
    facts.unit = static_cast<std::int32_t>(frame.unit);
    facts.scale = static_cast<std::int32_t>(frame.scale);
    if (frame.time) facts.present |= OVIX_HAS_TIME;
    if (frame.yearAssumed) facts.present |= OVIX_YEAR_ASSUMED;
    if (frame.counter) facts.present |= OVIX_HAS_COUNTER;
    if (frame.preset) facts.present |= OVIX_HAS_PRESET;
    facts.time = frame.time ? frame.time->time_since_epoch().count() : 0;
    facts.counter = frame.counter.value_or(0);
    facts.preset = frame.preset.value_or(0);
    return facts;
}

namespace {

int Hand(ovix_source** to, std::unique_ptr<ovix_source> made) {
    *to = made.release();
    return OVIX_OK;
}

/// As sources hand out frames that they read: counts with the low byte first.
void TakeFrame(ovix_source& source, const void* bytes, std::size_t size) {
    const auto* first = &Require(static_cast<const u8*>(bytes), "bytes");
    source.raw.number = source.pushed;
    source.raw.bytes.assign(first, first + size);
    if (source.source.Format().pixelTypeName != "counts-be") return;
    for (std::size_t i = 0; i + 1 < size; i += 2) std::swap(source.raw.bytes[i], source.raw.bytes[i + 1]);
}

void RequireMeasured(const ovix_source& source) {
    if (!source.measured) throw WrongArgument("no frame was measured");
}

void PutUnits(ovix_source& source, ovix_information& facts) {
    facts.unit = OVIX_UNIT_UNKNOWN;
    try {
        const CMeasurement& measurement = source.Measurement();
        if (!measurement.Unit()) return;
        facts.unit = static_cast<std::int32_t>(*measurement.Unit());
        for (const ovix::EUnit unit : measurement.Offered()) facts.offered |= 1u << unit;
    } catch (const CError&) {
        // Whoever wants a frame will hear of it.
    }
}

}  // namespace

int ovix_open(const char* path, const ovix_options* options, ovix_source** source) {
    return Guard([&]() -> int {
        Require(source, "source");
        SAsked asked(options);
        CSource opened = Open(&Require(path, "path"), asked.open);
        return Hand(source, std::make_unique<ovix_source>(std::move(opened), std::move(asked.measure)));
    });
}

int ovix_open_stream(const ovix_options* options, ovix_source** source) {
    return Guard([&]() -> int {
        Require(source, "source");
        SAsked asked(&Require(options, "options"));
        CSource opened = PushedFrames("stream", asked.open);
        auto made = std::make_unique<ovix_source>(std::move(opened), std::move(asked.measure));
        made->Measurement();
        return Hand(source, std::move(made));
    });
}

int ovix_share(ovix_source* source, ovix_source** shared) {
    return Guard([&]() -> int {
        Require(shared, "shared");
        auto made = std::make_unique<ovix_source>(Require(source, "source").source, source->options);
        made->measurement.emplace(source->Measurement());
        return Hand(shared, std::move(made));
    });
}

void ovix_close(ovix_source* source) { delete source; }

int ovix_describe(ovix_source* source, ovix_information* information) {
    return Guard([&]() -> int {
        const CSource& from = Require(source, "source").source;
        const std::size_t size = CheckedSize(information, "information");
        ovix_information facts{};
        facts.name = from.Name().c_str();
        facts.pixel_type = from.Format().pixelTypeName.c_str();
        facts.is_recording = from.Kind() == ESource::Recording;
        facts.is_numbered = from.IsNumbered();
        facts.frames = from.Count().value_or(0);
        facts.frame_size = from.FrameSize();
        facts.width = from.Format().width;
        facts.height = from.Format().height;
        PutUnits(*source, facts);
        const auto worst = from.Worst();
        facts.worst = worst ? static_cast<std::int32_t>(*worst) : -1;
        Give(information, facts, size);
        return OVIX_OK;
    });
}

int ovix_finding_at(ovix_source* source, size_t index, ovix_finding* finding) {
    return Guard([&]() -> int {
        source->findings = Require(source, "source").source.Findings();
        const std::size_t size = CheckedSize(finding, "finding");
        if (index >= source->findings.size()) return OVIX_END;
        const SFinding& found = source->findings[index];
        ovix_finding facts{};
        facts.id = static_cast<std::int32_t>(found.id);
        facts.weight = static_cast<std::int32_t>(found.weight);
        facts.frame = OrNone(found.frame);
        facts.offset = OrNone(found.offset);
        facts.block = found.block.c_str();
        facts.what = found.what.c_str();
        facts.expected = found.expected.c_str();
        facts.found = found.found.c_str();
        Give(finding, facts, size);
        return OVIX_OK;
    });
}

int ovix_read(ovix_source* source, uint64_t number, ovix_frame* frame) {
    return Guard([&]() -> int {
        Require(source, "source").MeasureInto(frame, [&] { source->Measurement().Measure(number, source->frame); });
        return OVIX_OK;
    });
}

int ovix_next(ovix_source* source, ovix_frame* frame) {
    return Guard([&]() -> int {
        CheckedSize(frame, "frame");
        const CSource& from = Require(source, "source").source;
        if (from.IsNumbered()) throw WrongArgument("the frames of the source have numbers, by which they are read");
        if (!from.Next(source->raw)) return OVIX_END;
        source->MeasureInto(frame, [&] { source->Measurement().Measure(source->raw, source->frame); });
        return OVIX_OK;
    });
}

int ovix_push(ovix_source* source, const void* bytes, size_t size, ovix_frame* frame) {
    return Guard([&]() -> int {
        Require(source, "source").MeasureInto(frame, [&] {
            TakeFrame(*source, bytes, size);
            source->Measurement().Measure(source->raw, source->frame);
            ++source->pushed;
        });
        return OVIX_OK;
    });
}

int ovix_measure_region(ovix_source* source, uint16_t x, uint16_t y, uint16_t width, uint16_t height,
                        ovix_statistics* statistics) {
    return Guard([&]() -> int {
        RequireMeasured(Require(source, "source"));
        const std::size_t size = CheckedSize(statistics, "statistics");
        if (!width != !height || (!width && (x || y))) throw WrongArgument("a region needs a width and a height");
        const SRegionStats figures = source->frame.Statistics({.x = x, .y = y, .width = width, .height = height});
        ovix_statistics facts{};
        facts.pixels = figures.pixels;
        facts.count = figures.count;
        facts.mean = figures.mean;
        facts.standard_deviation = figures.standardDeviation;
        facts.minimum = figures.minimum;
        facts.maximum = figures.maximum;
        facts.minimum_x = static_cast<std::uint16_t>(figures.minimumPosition.x);
        facts.minimum_y = static_cast<std::uint16_t>(figures.minimumPosition.y);
        facts.maximum_x = static_cast<std::uint16_t>(figures.maximumPosition.x);
        facts.maximum_y = static_cast<std::uint16_t>(figures.maximumPosition.y);
        Give(statistics, facts, size);
        return OVIX_OK;
    });
}

int ovix_parameter_at(ovix_source* source, size_t index, ovix_parameter* parameter) {
    return Guard([&]() -> int {
        RequireMeasured(Require(source, "source"));
        const std::size_t size = CheckedSize(parameter, "parameter");
        source->parameters = source->frame.Parameters();
        if (index >= source->parameters.size()) return OVIX_END;
        const SParameter& used = source->parameters[index];
        ovix_parameter facts{};
        facts.key = used.key.c_str();
        facts.name = used.name.c_str();
        facts.unit = used.unit.c_str();
        facts.value = used.value;
        facts.origin = static_cast<std::int32_t>(used.origin);
        Give(parameter, facts, size);
        return OVIX_OK;
    });
}
