#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/bytes.h"
#include "core/pixel_types.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"

/// Every decoder of the factory, plug-ins included: what `CheckFrame` passes, all operations must bear. The frame and
/// every destination stand in heap buffers of exactly their size, so that the address sanitizer sees each byte beyond.
///
/// An input is the pixel type (16 bytes; one that nobody handles stands for some type by its first byte), width and
/// height (a byte each), a byte for the packet (images in the low half, the wanted one in the high half), and the
/// frame.
namespace ovix::reduce {
namespace {

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "fuzz_frames: %s\n", what);
    std::abort();
}

class CHeapBytes {
  public:
    explicit CHeapBytes(u64 size, u8 fill = 0) : size_(static_cast<u32>(size)), bytes_(new u8[size]) {
        std::fill_n(bytes_.get(), size, fill);
    }
    CHeapBytes(const u8* bytes, u64 size) : CHeapBytes(size) { std::copy_n(bytes, size, bytes_.get()); }

    u8* Data() const { return bytes_.get(); }
    u32 Size() const { return size_; }
    bool operator==(const CHeapBytes& other) const {
        return size_ == other.size_ && std::equal(Data(), Data() + size_, other.Data());
    }

  private:
    u32 size_;
    std::unique_ptr<u8[]> bytes_;
};

struct SInput {
    CString family;
    GUID type;
    u16 width = 0, height = 0, images = 0, image = 0;
    const u8* frame = nullptr;
    u32 size = 0;

    u64 Pixels() const { return u64{width} * height; }
    CHeapBytes Frame() const { return {frame, size}; }
    TSharedPtr<IFilter> NewFilter() const { return filterFactory()->Create(family); }
};

/// The type that the input names, and whose it is. The root type belongs to nobody, and families take it all the same.
void ChooseType(SInput& input, const GUID& named) {
    input.type = named;
    input.family = filterFactory()->GetPixelTypeHandler(named);
    if (!input.family.IsEmpty()) return;
    const auto& entry = filterFactory()->GetEntryAt(named.data1 % 256 % filterFactory()->GetEntryCount());
    const TArray<GUID>& types = entry.extra.pixelTypes;
    const u32 choice = (named.data1 >> 8) % (types.size() + 1);
    input.family = entry.name;
    input.type = choice < types.size() ? types[choice] : rootIRType;
}

bool ReadInput(SInput& input, const u8* data, std::size_t size) {
    CByteCursor cursor(data, size);
    const u8* head = cursor.Take(19);
    if (!head) return false;
    ChooseType(input, LoadGuid(head));
    input.width = head[16];
    input.height = head[17];
    input.images = head[18] & 15;
    input.image = head[18] >> 4;
    input.frame = data + 19;
    input.size = static_cast<u32>(size - 19);
    return true;
}

/// What a fresh decoder makes of the frame.
struct SParsed {
    bool done = false;
    u8 preset = 9;
    CReduceObjectArray objects;
    CHeapBytes pixels{0};

    auto Info() { return objects.Get<CFrameInfoReduceObject>(preset, false); }
};

void Parse(SParsed& parsed, const SInput& input, EDataType type, u8 fill) {
    const u32 bytesPerPixel = type == Opaque ? 3 : 2;
    const CHeapBytes frame = input.Frame();
    STypedData dest{nullptr, type};
    if (type != NoPixels) {
        parsed.pixels = CHeapBytes(bytesPerPixel * input.Pixels(), fill);
        dest.data = parsed.pixels.Data();
    }
    parsed.done = input.NewFilter()->ParseFrame(frame.Data(), input.type, input.width, input.height, frame.Size(), dest,
                                                parsed.objects, parsed.preset);
}

void RequireSameMetadata(SParsed& a, SParsed& b) {
    Require(a.done == b.done && a.preset == b.preset, "metadata depends on the destination");
    const auto left = a.Info(), right = b.Info();
    Require(!left == !right, "frame information depends on the destination");
    if (!left || !a.done) return;
    Require(left->frameNumber == right->frameNumber && left->NumEntries() == right->NumEntries(),
            "frame information depends on the destination");
    for (u32 i = 1; i < left->NumEntries(); ++i) {  // the first row is the time, which may be the present one
        const auto one = left->GetAt(i), other = right->GetAt(i);
        Require(one.name == other.name && one.value == other.value, "a frame value depends on the destination");
    }
}

void ParseAllWays(const SInput& input) {
    SParsed metadata, counts, again, colours;
    Parse(metadata, input, NoPixels, 0);
    Parse(counts, input, UInt16, 0x00);
    Parse(again, input, UInt16, 0xFF);
    Parse(colours, input, Opaque, 0);
    if (counts.done) RequireSameMetadata(metadata, counts);
    if (colours.done) RequireSameMetadata(metadata, colours);
    Require(counts.done == again.done, "the result changes from one decoder to the next");
    // A header may come without pixels, and a damaged compressed image leaves some of them.
    if (counts.done && input.NewFilter()->HasPixels(input.type))
        Require(counts.pixels == again.pixels, "some pixels were not written");
}

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
bool ReadsRecordAsItStands(const SInput& input, const TArray<SFrameField>& fields) {
    if (!input.family.Equals(L"K410")) return true;
    return Told(fields, L"ByteOrder") == L"native" && !Told(fields, L"Time").IsEmpty();
}

/// Deliberate: "Osprey" has its time go through a text, which keeps the time that was there where hours, minutes or
/// seconds are out of range, and reads another fraction of a second from digits that are.
bool TimeSurvivesText(const SInput& input, const TArray<SFrameField>& fields, const CDateTime& time) {
    constexpr int kTextLength = 19;  // DDD:HH:MM:SS.mmmuuu
    return !input.family.Equals(L"Osprey") || (Told(fields, L"Time").length() == kTextLength && !IsNow(time));
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

    const TArray<SFrameField> fields = Describe(input);
    SParsed parsed;
    Parse(parsed, input, NoPixels, 0);
    const auto info = parsed.Info();
    if (!parsed.done || !info || !scanned.hasAll) return;
    // "MVFalcon" gives a whole byte to those who look quickly, two bits of it to those who parse.
    const u8 shownPreset = basicPreset & (input.family.Equals(L"MVFalcon") ? 3 : 255);
    Require(parsed.preset == shownPreset, "the quick look finds another preset");
    if (!ReadsRecordAsItStands(input, fields)) return;
    if (counts) Require(info->frameNumber == basicNumber, "the quick look finds another frame counter");
    if (times && TimeSurvivesText(input, fields, info->time)) {
        Require(IsSameTime(info->time, scanned.basicTime), "the quick look finds another time");
    }
}

void ReadHeaderAndPixels(const SInput& input) {
    const TSharedPtr<IFilter> filter = input.NewFilter();
    const CHeapBytes frame = input.Frame();
    void* pixels = nullptr;
    i32 stride = 0;
    if (filter->HasPixels(input.type) &&
        filter->GetPixels(frame.Data(), input.type, input.width, input.height, frame.Size(), &pixels, stride)) {
        const u64 end =
            static_cast<u64>(static_cast<u8*>(pixels) - frame.Data()) + static_cast<u64>(stride) * input.height;
        Require(end <= frame.Size(), "the pixels reach beyond the frame");
    }
    GUID headerType;
    u32 headerSize = 0;
    filter->GetHeaderInfo(input.type, input.width, input.height, frame.Size(), headerType, headerSize);
    for (const u32 size : {0u, headerSize / 2, headerSize, headerSize + 9}) {
        const CHeapBytes header(size);
        filter->ExtractHeader(frame.Data(), input.type, input.width, input.height, frame.Size(), header.Data(), size);
    }
    for (u8 field = 0; field < 8; ++field) {
        bool triggered = false;
        u16 index = 0;
        filter->CheckForTrigger(frame.Data(), frame.Size(), input.type, input.width, input.height,
                                field < 4 ? 1 : input.images, field % 4, triggered, index);
    }
}

/// Needs no check ahead: the operation is told both sizes.
void Store(const SInput& input) {
    const TSharedPtr<IFilter> filter = input.NewFilter();
    const CHeapBytes source = input.Frame();
    // The room that one image of 16-bit pixels and what stands behind all images need, when there are so many.
    const u64 image = 2 * input.Pixels(), images = input.images * image;
    const u32 exact = images <= input.size ? static_cast<u32>(input.size - images + image) : 0;
    for (const u32 size : {input.size / 2, exact, input.size, input.size + 200}) {
        const CHeapBytes dest(size);
        filter->StoreFrame(source.Data(), source.Size(), input.type, input.width, input.height, input.images,
                           input.image, dest.Data(), dest.Size());
    }
}

}  // namespace
}  // namespace ovix::reduce

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace ovix::reduce;
    SInput input;
    if (!ReadInput(input, data, size)) return 0;
    Store(input);
    SFrameFault fault;
    const CHeapBytes frame = input.Frame();
    if (!CheckFrame(input.family, frame.Data(), input.type, input.width, input.height, frame.Size(), &fault)) {
        Require(!fault.expected.IsEmpty() && !fault.found.IsEmpty(), "a frame is refused without a reason");
        return 0;
    }
    ParseAllWays(input);
    ScanAndCompare(input);
    ReadHeaderAndPixels(input);
    return 0;
}
