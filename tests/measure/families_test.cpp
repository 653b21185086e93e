// Frames of every family: measured by a series of any number of threads, and one by one in any order, they give what
// the plain steps of the library give for each frame alone.

#include <set>

#include "apps/ovix/scene.h"
#include "apps/ovix/synth/synth.h"
#include "source_files.h"

namespace ovix::measure {
namespace {

using namespace test;

constexpr u16 kWide = 48, kHigh = 32;
constexpr u32 kPixels = kWide * kHigh;
constexpr u16 kFrames = 11;

struct SPlain {
    std::vector<float> values = std::vector<float>(kPixels);
    std::vector<u8> status = std::vector<u8>(kPixels);
};

/// The steps that a program makes which uses the library alone, with everything new.
SPlain MeasurePlainly(const SFrameFormat& format, Bytes bytes, const SMeasureOptions& options, EUnit unit) {
    const CString name(format.filter.c_str());
    reduce::SFrameForm form;
    EXPECT_TRUE(reduce::GetFrameForm(name, format.pixelType, form));
    reduce::CReduceObjectArray objects;
    objects.GetSourceInfo(true)->baseUnit = form.unit;
    Bytes pixels(std::size_t{form.bytesPerPixel} * kPixels);
    STypedData buffer{pixels.data(), form.element};
    u8 preset = 0;
    EXPECT_TRUE(reduce::filterFactory()->Create(name)->ParseFrame(
        bytes.data(), format.pixelType, kWide, kHigh, static_cast<u32>(bytes.size()), buffer, objects, preset));
    if (options.scene.emissivity) objects.GetObjectParameters(true)->emissivity = *options.scene.emissivity;
    if (options.scene.distance) objects.GetObjectParameters(true)->distance = *options.scene.distance;
    reduce::CConvertContext context;
    context.setReduceObjs(&objects);
    bool presets[8] = {};
    presets[preset] = true;
    EXPECT_TRUE(context.SetUnit(unit, options.scale) && context.Update(presets, 8, 0));
    SPlain plain;
    EXPECT_TRUE(context.Convert(buffer, {plain.values.data(), Flt32}, plain.status.data(), kPixels));
    return plain;
}

bool SameBits(const CFrame& frame, const SPlain& plain) {
    return frame.status == plain.status && frame.values.size() == kPixels &&
           std::memcmp(frame.values.data(), plain.values.data(), kPixels * sizeof(float)) == 0;
}

/// Every frame by plain steps, by series, and alone in an order without sense, all into one `CFrame`.
void ExpectAlike(const CMeasurement& measurement, const std::vector<Bytes>& frames) {
    std::vector<SPlain> plain;
    for (const Bytes& bytes : frames)
        plain.push_back(
            MeasurePlainly(measurement.Source().Format(), bytes, measurement.Options(), measurement.Unit().value()));
    for (const unsigned threads : {1, 2, 3, 8}) {
        u64 number = 0;
        for (const CFrame& frame : CSeries(measurement, {.threads = threads})) {
            ASSERT_EQ(frame.number, number);
            ASSERT_TRUE(SameBits(frame, plain[number++])) << "frame " << frame.number << ", " << threads << " threads";
        }
        ASSERT_EQ(number, frames.size());
    }
    CFrame frame;
    for (u64 i = 0; i < 2 * frames.size(); ++i) {
        const u64 number = i * 7 % frames.size();
        measurement.Measure(number, frame);
        ASSERT_TRUE(SameBits(frame, plain[number])) << "frame " << number;
        SPlain room;
        measurement.Measure(number, frame, {room.values.data(), room.status.data()});
        ASSERT_TRUE(frame.values.empty());
        std::swap(frame.values, room.values);
        std::swap(frame.status, room.status);
        ASSERT_TRUE(SameBits(frame, plain[number])) << "frame " << number << " in the caller's memory";
    }
}

/// The pixels that a reader finds who knows the index alone are those as recorded, and each frame says by way of the
/// index what it says when it is measured. Answers whether there is a place.
bool ExpectIndexed(const CSource& source, const Bytes& file) {
    const CFrameIndex index(source);
    const CFrameReader reader(source);
    const CMeasurement measurement(source, {});
    for (u64 number = 0; number < source.Count(); ++number) {
        const CFrame frame = measurement.Measure(number);
        const SFrameFacts facts = index.Facts(number);
        EXPECT_TRUE(facts.time == frame.time && facts.counter == frame.counter) << number;
        EXPECT_EQ(facts.namesPreset ? std::optional(facts.preset) : std::nullopt, frame.preset);
        if (!index.Pixels()) continue;
        SRawFrame raw;
        source.Read(number, raw);
        Bytes pixels(2 * kPixels);
        reduce::CReduceObjectArray objects;
        reader.Read(raw, objects, pixels);
        const u64 at = index.Frame(number).offset + index.Pixels()->offset;
        for (std::size_t i = 0; i < pixels.size(); ++i)
            if (pixels[i] != file[at + (index.Pixels()->bigEndian ? i ^ 1 : i)]) return ADD_FAILURE() << i, false;
    }
    return index.Pixels().has_value();
}

/// Counts that decoders turn, pack or mask.
const std::set<std::string> kNotPlain = {"K410 IR (GigE, Flipped)", "Wren"};

TEST(Families, GiveTheSameBitsOnAnyNumberOfThreadsInAnyOrder) {
    const CTestFolder folder;
    for (const app::SSynthFamily& family : app::SynthFamilies()) {
        for (const app::SSynthForm& form : family.forms()) {
            SCOPED_TRACE(form.description);
            const auto camera = family.make({.type = form.type, .form = form.form, .width = kWide, .height = kHigh});
            std::vector<Bytes> frames;
            for (u64 i = 0; i < kFrames; ++i) frames.push_back(camera->Frame(i, app::RenderScene(kWide, kHigh, 5 * i)));
            const Bytes dump = Joined(frames);
            const CSource source = Open(folder.Put("dump", dump),
                                        {.pixelType = PixelTypeName(form.type), .width = kWide, .height = kHigh});
            const CMeasurement probe(source, {});
            const std::string type = PixelTypeName(form.type);
            reduce::SFrameForm pixels;
            reduce::GetFrameForm(CString(source.Format().filter.c_str()), form.type, pixels);
            const bool plain =
                pixels.element == UInt16 && !pixels.compressed && kNotPlain.find(type) == kNotPlain.end();
            EXPECT_EQ(ExpectIndexed(source, dump), plain);
            for (const EUnit unit : probe.Offered()) {
                for (const EQuantity quantity : {EQuantity::Counts, EQuantity::Signal, EQuantity::Radiance,
                                                 EQuantity::Temperature, EQuantity::Green, EQuantity::Average}) {
                    if (FindUnit(probe.Offered(), quantity, {}) == unit)
                        ExpectAlike(CMeasurement(source, {.quantity = quantity, .scale = Fahrenheit}), frames);
                }
            }
            if (probe.Unit() == TemperatureFactory)
                ExpectAlike(CMeasurement(source, {.scene = {.emissivity = 0.7f}}), frames);
        }
    }
}

/// Frames of one camera whose metadata differ: emissivities of 0.95, 0.8, 0.6 in turn; every fourth has no record
/// and brings none.
std::vector<Bytes> FramesOfManyScenes(u64 count) {
    constexpr std::size_t kEmissivity = 2 * kPixels + 128 + 32;
    const auto camera =
        app::FindSynthFamily(kK410GigE)->make({.type = kK410GigE, .form = "plain", .width = kWide, .height = kHigh});
    std::vector<Bytes> frames;
    for (u64 i = 0; i < count; ++i) {
        Bytes frame = camera->Frame(i, app::RenderScene(kWide, kHigh, i));
        const float emissivity = i % 3 == 0 ? 0.95f : i % 3 == 1 ? 0.8f : 0.6f;
        Patch(frame, kEmissivity, std::bit_cast<u32>(emissivity), 4);
        if (i % 4 == 3) Patch(frame, 2 * kPixels + 80, 0, 4);  // a container without a record
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::optional<SParameter> Find(const CFrame& frame, const std::string& key) {
    for (SParameter& parameter : frame.Parameters())
        if (parameter.key == key) return parameter;
    return {};
}

TEST(Families, FramesLeaveNothingToTheNext) {
    const CTestFolder folder;
    const std::vector<Bytes> frames = FramesOfManyScenes(12);
    const CSource source =
        Open(folder.Put("dump", Joined(frames)), {.pixelType = kGigE, .width = kWide, .height = kHigh});
    ExpectAlike(CMeasurement(source, {.quantity = EQuantity::Counts}), frames);

    ExpectAlike(CMeasurement(source, {}), frames);
    for (const CFrame& frame : CSeries(CMeasurement(source, {}), {.threads = 3})) {
        const bool bare = frame.number % 4 == 3;
        EXPECT_TRUE(frame.time.has_value() != bare && frame.counter.has_value() != bare) << frame.number;
        const auto emissivity = Find(frame, "emissivity");
        ASSERT_TRUE(emissivity);
        // What the frame before left would show here; the decoder takes a record that is not there for zeros.
        EXPECT_EQ(emissivity->value, bare ? 0 : frame.number % 3 == 0 ? 0.95 : frame.number % 3 == 1 ? 0.8 : 0.6);
        EXPECT_EQ(emissivity->origin, EOrigin::Frame);
        EXPECT_EQ(Find(frame, "atmosphere-trans")->origin, EOrigin::Computed);
    }
    const CFrame counts = CMeasurement(source, {.quantity = EQuantity::Counts}).Measure(0);
    EXPECT_TRUE(counts.Parameters().empty()) << "counts depend on no scene";

    const CFrame told = CMeasurement(source, {.scene = {.emissivity = 0.5f, .atmosphereTrans = 0.9f}}).Measure(1);
    EXPECT_TRUE(Find(told, "emissivity")->value == 0.5 && Find(told, "emissivity")->origin == EOrigin::Caller);
    EXPECT_TRUE(Find(told, "atmosphere-trans")->value == 0.9 && Find(told, "distance")->origin == EOrigin::Frame);
}

TEST(Families, APixelIsWalkedFromItsCountToItsTemperature) {
    const CTestFolder folder;
    const std::vector<Bytes> frames = FramesOfManyScenes(2);
    const CSource source =
        Open(folder.Put("dump", frames[0] + frames[1]), {.pixelType = kGigE, .width = kWide, .height = kHigh});
    constexpr u32 kPixel = 5 * kWide + 7;
    const SMeasureOptions kelvin{.scale = Kelvin, .scene = {.distance = 4.0f}};
    const SPixelWalk walk = WalkPixel(source, kelvin, 1, kPixel);
    ASSERT_EQ(walk.steps.size(), 4u);
    for (const SWalkStep& step : walk.steps) {
        EXPECT_EQ(step.value, MeasurePlainly(source.Format(), frames[1], kelvin, step.unit).values[kPixel])
            << step.unit;
        EXPECT_FALSE(step.corrected);
    }
    const float count = LoadLittle<u16>(frames[1].data() + 2 * kPixel);
    EXPECT_TRUE(walk.steps[0].value == count && walk.steps[3].unit == TemperatureFactory && walk.scene.size() == 8);
    EXPECT_TRUE(walk.calibration.model == "Curlew (factory)" && walk.calibration.values[0].key == "gain");
    for (const SParameter& v : walk.scene)
        EXPECT_TRUE(v.key != "distance" || (v.value == 4 && v.origin == EOrigin::Caller && v.unit == "m"));
    EXPECT_EQ(WalkPixel(source, {.quantity = EQuantity::Counts}, 1, kPixel).steps.size(), 1u);
    EXPECT_EQ(IdOf([&] { WalkPixel(source, {}, 1, kPixels); }), EError::WrongArgument);
    EXPECT_EQ(IdOf([&] { WalkPixel(source, {.calibration = ECalibration::User}, 1, 0); }), EError::UnitNotOffered);
}

}  // namespace
}  // namespace ovix::measure
