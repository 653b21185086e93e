#include "measure/frame/measurement.h"

#include <atomic>

#include "measure/frame/frame_decoder.h"
#include "measure/frame/frame_objects.h"
#include "measure/frame/frame_work.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

struct SUnitChoice {
    EUnit unit;
    std::vector<EUnit> offered;
};

void Describe(CFrame& frame, const SFrameFacts& facts) {
    frame.preset = facts.namesPreset ? std::optional(facts.preset) : std::nullopt;
    frame.time = facts.time;
    frame.yearAssumed = facts.yearAssumed;
    frame.counter = facts.counter;
}

CError Unusable(std::string problem) {
    return CError({.id = EError::CorrectionUnusable, .problem = std::move(problem)});
}

}  // namespace

struct CMeasurement::SBody : std::enable_shared_from_this<SBody> {
    SBody(CSource from, SMeasureOptions with);
    ~SBody() { delete choice.load(); }

    void TakeCorrections();
    void ChooseByFirstGoodFrame();
    const SUnitChoice& Choose(reduce::CReduceObjectArray& objects) const;

    void Begin(CFrame& frame, const SRawFrame& first) const;
    SPixelRoom RoomIn(CFrame& frame) const;
    SFrameFacts Decode(SRawFrame& raw, CFrame::SWork& work) const;
    void Prepare(CFrame& frame) const;
    void Measure(SRawFrame& raw, CFrame& frame, const SPixelRoom& room) const;
    void Convert(CFrame& frame, const SPixelRoom& room) const;
    void ConvertMerged(CFrame& frame) const;
    template <class Step>
    auto OfFrame(u64 number, const Step& step) const;

    CSource source;
    SMeasureOptions options;
    CFrameDecoder decoder;
    reduce::CReduceObjectArray description;  ///< of the source, and what the options add
    bool corrects = false;
    CPreparedCache cache;
    mutable std::atomic<const SUnitChoice*> choice = nullptr;
};

CMeasurement::SBody::SBody(CSource from, SMeasureOptions with)
    : source(std::move(from)), options(std::move(with)), decoder(source, options.decodePatience) {
    source.Describe(description);
    if (!decoder.Form().HasPixels())
        throw CError({.id = EError::UnitNotOffered,
                      .file = source.Name(),
                      .problem = "frames of this pixel type are headers without pixels"});
    PutUserCalibration(description, options);
    TakeCorrections();
    if (source.IsNumbered()) ChooseByFirstGoodFrame();
}

void CMeasurement::SBody::TakeCorrections() {
    if (!options.corrections.empty() && decoder.Form().unit != Counts)
        throw CError({.id = EError::WrongArgument, .problem = "correction is for counts; the source holds colours"});
    for (const SCorrectionFiles& files : options.corrections) LoadCorrectionTables(description, files, source.Format());
    corrects = HasCorrection(description, source.Format()) && options.correct;
    if (options.clip && !corrects)
        throw CError({.id = EError::WrongArgument, .problem = "limits of corrected counts go with a correction"});
    if (!options.clip && options.correct) return;
    const auto settings = description.GetCorrectionCfg(true);
    if (!options.correct) settings->applyNUC = settings->applyBadPixels = false;
    if (!options.clip) return;
    settings->clip = options.clip->on;
    settings->minimum = options.clip->low;
    settings->maximum = options.clip->high;
}

/// The calibration comes with the frames, so it takes one that will do.
void CMeasurement::SBody::ChooseByFirstGoodFrame() {
    std::optional<CError> first;
    CFrame frame;
    for (u64 number = 0; number < source.Count(); ++number) {
        try {
            source.Read(number, frame.work->raw);
            CopyObjects(description, frame.work->objects);
            decoder.Decode(frame.work->raw.bytes, frame.work->objects, nullptr);
        } catch (const CError& error) {
            if (!first) first = error.Of(source.Name(), number);
            continue;
        }
        Choose(frame.work->objects);
        return;
    }
    if (first) throw CError(*first);
}

const SUnitChoice& CMeasurement::SBody::Choose(reduce::CReduceObjectArray& objects) const {
    if (const SUnitChoice* chosen = choice.load(std::memory_order_acquire)) return *chosen;
    TArray<EUnit> offered;
    reduce::converterFactory()->GetSupportedUnits(offered, objects);
    auto made = std::make_unique<SUnitChoice>();
    made->offered.assign(offered.begin(), offered.end());
    try {
        made->unit = ChooseUnit(made->offered, options);
    } catch (const CError& error) {
        throw error.Of(source.Name(), {});
    }
    const SUnitChoice* none = nullptr;
    if (choice.compare_exchange_strong(none, made.get(), std::memory_order_acq_rel)) return *made.release();
    return *none;
}

template <class Step>
auto CMeasurement::SBody::OfFrame(u64 number, const Step& step) const {
    try {
        return step();
    } catch (const CError& error) {
        // Without the helper or memory no frame would do.
        if (error.Id() >= EError::HelperMissing) throw;
        throw error.Of(source.Name(), number);
    }
}

void CMeasurement::SBody::Begin(CFrame& frame, const SRawFrame& first) const {
    if (!frame.work) frame.work = std::make_unique<CFrame::SWork>();
    if (frame.work->measurement.get() != this) {
        frame.work->prepared = nullptr;
        frame.work->measurement = shared_from_this();
    }
    frame.number = first.number;
    frame.width = source.Format().width;
    frame.height = source.Format().height;
    frame.scale = options.scale;
    frame.merged.clear();
    frame.mergedPresets.clear();
    CopyObjects(description, frame.work->objects);
    frame.work->presets = {};
    frame.work->pixels.resize(decoder.PixelBytes());
}

/// Makes room for the pixels in the frame itself.
SPixelRoom CMeasurement::SBody::RoomIn(CFrame& frame) const {
    frame.values.resize(source.Format().PixelCount());
    frame.status.resize(source.Format().PixelCount());
    return {frame.values.data(), frame.status.data()};
}

SFrameFacts CMeasurement::SBody::Decode(SRawFrame& raw, CFrame::SWork& work) const {
    return OfFrame(raw.number, [&] {
        const SFrameFacts facts = decoder.Decode(raw.bytes, work.objects, work.pixels.data());
        if (facts.preset >= work.presets.size())
            throw CError(
                {.id = EError::PresetOutOfRange, .expected = "a preset from 0 to 7", .found = Say(facts.preset)});
        work.presets[facts.preset] = true;
        return facts;
    });
}

void CMeasurement::SBody::Prepare(CFrame& frame) const {
    CFrame::SWork& work = *frame.work;
    frame.unit = Choose(work.objects).unit;
    OfFrame(frame.number, [&] {
        const bool lasts = DescribeCalibration(work.objects, work.presets, work.key);
        if (lasts && work.prepared && work.prepared->Key() == work.key) return;
        work.prepared = lasts ? cache.Find(work.key) : nullptr;
        if (work.prepared) return;
        work.prepared = std::make_shared<const CPrepared>(work.objects, frame.unit, options.scale, work.presets,
                                                          lasts ? work.key : std::vector<u8>());
        if (lasts) work.prepared = cache.Keep(work.prepared);
    });
    if (const auto used = work.prepared->Scene())
        work.objects.GetObjectParameters(true)->estimatedAtmosphereTrans = used->estimatedAtmosphereTrans;
}

void CMeasurement::SBody::Convert(CFrame& frame, const SPixelRoom& room) const {
    CFrame::SWork& work = *frame.work;
    const u32 count = source.Format().PixelCount();
    OfFrame(frame.number, [&] {
        STypedData pixels{work.pixels.data(), decoder.Form().element};
        if (corrects) work.corrected.resize(count);
        if (!work.prepared->Correct(pixels, {work.corrected.data(), Flt32}, count))
            throw Unusable("the correction tables cannot be used");
        if (!work.prepared->Convert(pixels, {room.values, Flt32}, room.status, count))
            throw CError(
                {.id = EError::FrameRefused, .problem = "the pixels cannot be converted to " + UnitWords(frame.unit)});
    });
}

void CMeasurement::SBody::Measure(SRawFrame& raw, CFrame& frame, const SPixelRoom& room) const {
    Begin(frame, raw);
    CSceneTrail scene(frame.work->objects);
    const SFrameFacts facts = Decode(raw, *frame.work);
    Describe(frame, facts);
    frame.work->origins = scene.Finish(source, options.scene);
    Prepare(frame);
    Convert(frame, room);
}

void CMeasurement::SBody::ConvertMerged(CFrame& frame) const {
    CFrame::SWork& work = *frame.work;
    const u32 count = source.Format().PixelCount();
    STypedData frames[reduce::CConvertContext::PresetCount];
    for (std::size_t i = 0; i < std::size(frames); ++i) frames[i] = {work.counts[i].data(), Flt32};
    work.merged.resize(count);
    work.presetMap.resize(count);
    const SPixelRoom room = RoomIn(frame);
    const STypedData merged{work.merged.data(), Flt32};
    OfFrame(frame.number, [&] {
        if (!work.prepared->Merge(frames, merged, work.presetMap.data(), count))
            throw Unusable("the frames cannot be merged");
        if (!work.prepared->Convert(merged, work.presetMap.data(), {room.values, Flt32}, room.status, count))
            throw CError({.id = EError::FrameRefused,
                          .problem = "the merged pixels cannot be converted to " + UnitWords(frame.unit)});
    });
}

CMeasurement::CMeasurement(CSource source, SMeasureOptions options)
    : body_(std::make_shared<const SBody>(std::move(source), std::move(options))) {}

const CSource& CMeasurement::Source() const { return body_->source; }
const SMeasureOptions& CMeasurement::Options() const { return body_->options; }

std::optional<EUnit> CMeasurement::Unit() const {
    const SUnitChoice* chosen = body_->choice.load(std::memory_order_acquire);
    return chosen ? std::optional(chosen->unit) : std::nullopt;
}

bool CMeasurement::Corrects() const { return body_->corrects; }

std::vector<EUnit> CMeasurement::Offered() const {
    const SUnitChoice* chosen = body_->choice.load(std::memory_order_acquire);
    return chosen ? chosen->offered : std::vector<EUnit>();
}

void CMeasurement::Measure(u64 number, CFrame& frame) const {
    if (!frame.work) frame.work = std::make_unique<CFrame::SWork>();
    body_->OfFrame(number, [&] { body_->source.Read(number, frame.work->raw); });
    Measure(frame.work->raw, frame);
}

CFrame CMeasurement::Measure(u64 number) const {
    CFrame frame;
    Measure(number, frame);
    return frame;
}

void CMeasurement::Measure(u64 number, CFrame& frame, const SPixelRoom& room) const {
    if (!frame.work) frame.work = std::make_unique<CFrame::SWork>();
    body_->OfFrame(number, [&] { body_->source.Read(number, frame.work->raw); });
    frame.values.clear();
    frame.status.clear();
    body_->Measure(frame.work->raw, frame, room);
}

void CMeasurement::Measure(SRawFrame& raw, CFrame& frame) const { body_->Measure(raw, frame, body_->RoomIn(frame)); }

void CMeasurement::MeasureMerged(std::span<SRawFrame> raws, CFrame& frame) const {
    if (raws.empty()) throw CError({.id = EError::WrongArgument, .problem = "there is no frame to be merged"});
    body_->Begin(frame, raws.front());
    CFrame::SWork& work = *frame.work;
    const u32 count = body_->source.Format().PixelCount();
    CSceneTrail scene(work.objects);
    for (SRawFrame& raw : raws) {
        const SFrameFacts facts = body_->Decode(raw, work);
        std::vector<float>& counts = work.counts[facts.preset];
        counts.resize(count);
        body_->OfFrame(raw.number, [&] {
            if (!ConvertArray({counts.data(), Flt32}, {work.pixels.data(), body_->decoder.Form().element}, count))
                throw CError({.id = EError::FrameRefused, .problem = "pixels of this type cannot be merged"});
        });
        if (frame.merged.empty()) Describe(frame, facts);
        frame.merged.push_back(raw.number);
        frame.mergedPresets.push_back(facts.preset);
    }
    work.origins = scene.Finish(body_->source, body_->options.scene);
    body_->Prepare(frame);
    body_->ConvertMerged(frame);
}

u8 CMeasurement::PresetOf(SRawFrame& raw) const {
    return body_->OfFrame(raw.number, [&] {
        reduce::CReduceObjectArray objects;
        CopyObjects(body_->description, objects);
        return body_->decoder.Decode(raw.bytes, objects, nullptr).preset;
    });
}

}  // namespace ovix::measure
