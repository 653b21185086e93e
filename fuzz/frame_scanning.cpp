#include "fuzz/frame_input.h"

namespace ovix::reduce {
namespace {

bool IsNow(const CDateTime& time) {
    const i64 age = CDateTime().GetTimestamp() - time.GetTimestamp();
    return age >= 0 && age < 60 * CDateTime::TicksPerSecond;
}

/// What stands where: every field lies in the frame and says what it is.
TArray<SFrameField> Describe(const SInput& input) {
    TArray<SFrameField> fields;
    const CHeapBytes frame = input.Frame(), untouched = input.Frame();
    const bool done =
        DescribeFrame(input.family, frame.Data(), input.type, input.width, input.height, frame.Size(), fields);
    const bool can = filterFactory()->GetEntry(input.family).extra.describe != nullptr;
    Require(done == can, "a frame that passes is not described");
    Require(frame == untouched, "a description changes the frame");
    for (const SFrameField& field : fields) {
        Require(field.offset <= frame.Size() && field.size <= frame.Size() - field.offset,
                "a field reaches beyond the frame");
        Require(!field.name.IsEmpty() && field.size > 0, "a field says nothing");
    }
    return fields;
}

/// What the operations that scan a recording make of the frame. Each has a copy of its own, as some write to it.
struct SScanned {
    explicit SScanned(const SInput& input) : filter(input.NewFilter()) {
        const auto call = [&](auto operation, auto&... results) {
            const CHeapBytes frame = input.Frame();
            return (filter.ptr()->*operation)(frame.Data(), input.type, input.width, input.height, frame.Size(),
                                              results...);
        };
        hasPreset = call(&IFilter::ParsePreset, preset);
        hasCounter = call(&IFilter::ParseFrameCounter, counter);
        hasTime = call(&IFilter::ParseTime, time);
        hasAll = call(&IFilter::ParseBasicInfo, basicPreset, basicCounter, basicTime);
        const CHeapBytes frame = input.Frame();
        u32 counts[256] = {};
        filter->CountPresets(frame.Data(), frame.Size(), input.type, input.width, input.height, 0, counts);
        Require(!hasPreset || counts[preset] == 1, "a preset is not counted");
    }

    TSharedPtr<IFilter> filter;
    bool hasPreset, hasCounter, hasTime, hasAll;
    u8 preset = 0, basicPreset = 0;
    u64 counter = 0, basicCounter = 0;
    CDateTime time, basicTime;
};

bool IsSameTime(const CDateTime& a, const CDateTime& b) { return a == b || (IsNow(a) && IsNow(b)); }

/// The value of a described field, or an empty text.
CString Told(const TArray<SFrameField>& fields, const wchar_t* name) {
    const auto field = std::find_if(fields.begin(), fields.end(), [&](const auto& each) { return each.name == name; });
    return field == fields.end() ? CString() : field->value;
}

/// Deliberate: the quick look of the K410 family reads the record as it stands in the frame, in whatever byte order and
/// beyond its end as the container tells it. Then it need not find what the whole parsing finds.
bool ReadsRecordAsItStands(const SInput& input) {
    if (!input.family.Equals(L"K410")) return true;
    const TArray<SFrameField> fields = Describe(input);
    return Told(fields, L"ByteOrder") == L"native" && !Told(fields, L"Time").IsEmpty();
}

/// Deliberate: "Osprey" has its time go through a text, which keeps the time that was there where hours, minutes or
/// seconds are out of range, and reads another fraction of a second from digits that are.
bool TimeSurvivesText(const SInput& input, const CDateTime& time) {
    constexpr int kTextLength = 19;  // DDD:HH:MM:SS.mmmuuu
    return !input.family.Equals(L"Osprey") || (Told(Describe(input), L"Time").length() == kTextLength && !IsNow(time));
}

void ScanAndCompare(const SInput& input) {
    const SScanned scanned(input);
    const IFilter& filter = *scanned.filter;
    const bool counts = filter.HasFrameCounter(input.type), times = filter.HasTime(input.type);
    // "Lapwing" gives all bits of its preset here, three of them there.
    const u8 basicPreset = scanned.basicPreset & (input.family.Equals(L"Lapwing") ? 7 : 255);
    // "Wren" numbers frames by the lower half of its counter.
    const u64 basicNumber = scanned.basicCounter & (input.family.Equals(L"Wren") ? 0xFFFFFFFF : ~u64{0});
    Require(!scanned.hasPreset || !scanned.hasAll || scanned.preset == basicPreset,
            "two operations read different presets");
    // "Plover" numbers its frames in one byte order there and in the other here.
    if (scanned.hasCounter && scanned.hasAll && counts && !input.family.Equals(L"Plover")) {
        Require(scanned.counter == scanned.basicCounter, "two operations read different frame counters");
    }
    if (scanned.hasTime && scanned.hasAll && times) {
        Require(IsSameTime(scanned.time, scanned.basicTime), "two operations read different times");
    }

    SParsed parsed;
    Parse(parsed, input, NoPixels, 0);
    const auto info = parsed.Info();
    if (!parsed.done || !info || !scanned.hasAll) return;
    // "MVFalcon" gives a whole byte to those who look quickly, two bits of it to those who parse.
    const u8 shownPreset = basicPreset & (input.family.Equals(L"MVFalcon") ? 3 : 255);
    Require(parsed.preset == shownPreset, "the quick look finds another preset");
    if (!ReadsRecordAsItStands(input)) return;
    if (counts) Require(info->frameNumber == basicNumber, "the quick look finds another frame counter");
    if (times && TimeSurvivesText(input, info->time)) {
        Require(IsSameTime(info->time, scanned.basicTime), "the quick look finds another time");
    }
}

}  // namespace

void CheckAndDescribe(const SInput& input, u32 way) {
    SFrameFault fault;
    const CHeapBytes frame = input.Frame();
    if (!CheckFrame(input.family, frame.Data(), input.type, input.width, input.height, frame.Size(), &fault)) {
        Require(!fault.expected.IsEmpty() && !fault.found.IsEmpty(), "a frame is refused without a reason");
    } else if (way % 2) {
        Describe(input);
    } else {
        ScanAndCompare(input);
    }
}

}  // namespace ovix::reduce
