#include "measure/sources/source_body.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "measure/recordings/frame_sums.h"

namespace ovix::measure {

namespace {

template <class Object>
TSharedPtr<reduce::IReduceObject> CopyOf(const TSharedPtr<reduce::IReduceObject>& object) {
    // A plug-in may have put a class of its own in the place of the library's.
    const reduce::IReduceObject& found = *object;
    if (typeid(found) != typeid(Object)) return {};
    return MakeShared<Object>(static_cast<const Object&>(found));
}

/// A copy that shares what tables the object has: they are replaced, never written to, by those who use them.
TSharedPtr<reduce::IReduceObject> ShareTables(const TSharedPtr<reduce::IReduceObject>& object) {
    if (auto copy = CopyOf<reduce::CCorrectionReduceObject>(object)) return copy;
    if (auto copy = CopyOf<reduce::CMerlinFactoryCalReduceObject>(object)) return copy;
    return object->Duplicate();
}

}  // namespace

CSource::IBody::IBody(std::shared_ptr<const CInputFile> file, ESource kind, SFrameFormat format)
    : file_(std::move(file)), kind_(kind), format_(std::move(format)) {}

CSource::IBody::~IBody() {
    for (const SFound* found = findings_; found;) {
        const std::unique_ptr<const SFound> last(found);
        found = last->before;
    }
}

void CSource::IBody::SetObjects(const reduce::CReduceObjectArray& objects) {
    objects_ = objects;
    if (objects_.GetSourceInfo(false)) return;
    const auto info = objects_.GetSourceInfo(true);
    info->pixelType = format_.pixelType;
    info->width = info->frameWidth = info->packetWidth = format_.width;
    info->height = info->frameHeight = info->packetHeight = format_.height;
    info->baseUnit = FormOf(format_).unit;
    info->time.SetTimestamp(0);
}

void CSource::IBody::FindOverruled(const std::function<std::optional<std::vector<u8>>()>& next) {
    const auto recorded = objects_.GetObjectParameters(false);
    if (!recorded) return;
    const CFrameProbe probe(format_);
    while (auto frame = next()) {
        reduce::CReduceObjectArray own;
        if (!probe.ParseMetadata(*frame, own)) continue;  // whoever wants that frame will hear of it
        const auto stated = own.GetObjectParameters(false);
        if (!stated || !stated->fromSource) return;
        u32 bit = 1;
        for (const reduce::SObjectParameter& row : reduce::ObjectParameters()) {
            if ((*recorded).*row.member != (*stated).*row.member) overruled_ |= bit;
            bit <<= 1;
        }
        return;
    }
}

void CSource::IBody::Describe(reduce::CReduceObjectArray& objects) const {
    objects.Reset();
    for (u32 i = 0; i < objects_.GetSize(); ++i) objects.Add(ShareTables(objects_.GetAt(i)));
}

void CSource::IBody::Overrule(reduce::CReduceObjectArray& objects) const {
    if (!overruled_) return;
    const auto recorded = objects_.GetObjectParameters(false);
    const auto scene = objects.GetObjectParameters(true);
    u32 left = overruled_;
    for (const reduce::SObjectParameter& row : reduce::ObjectParameters()) {
        if (left & 1) (*scene).*row.member = (*recorded).*row.member;
        left >>= 1;
    }
}

std::vector<SFinding> CSource::IBody::Findings() const {
    std::vector<SFinding> findings;
    for (const SFound* found = findings_; found; found = found->before) findings.push_back(found->finding);
    std::reverse(findings.begin(), findings.end());
    return findings;
}

void CSource::IBody::Add(SFinding finding) const {
    auto added = std::make_unique<SFound>(SFound{std::move(finding), findings_});
    do {
        for (const SFound* found = added->before; found; found = found->before) {
            if (found->finding == added->finding) return;
        }
    } while (!findings_.compare_exchange_weak(added->before, added.get()));
    static_cast<void>(added.release());
}

void CSource::IBody::HoldAgainstSum(const CSumCheck& sums, const SRawFrame& frame) const {
    try {
        sums.Require(frame.number, frame.bytes);
    } catch (const CError& error) {
        Add({.id = EFinding::SumDiffers,
             .weight = EWeight::Damage,
             .frame = frame.number,
             .offset = frame.offset,
             .what = error.Facts().problem,
             .expected = error.Facts().expected,
             .found = error.Facts().found});
        throw error.Of(File().Name(), frame.number);
    }
}

ESource KindOf(const SFrameFormat& format) {
    return format.filter.empty() && format.pixelType == rootIRType ? ESource::Counts : ESource::Dump;
}

bool IsBigEndian(const SFrameFormat& format) { return format.filter.empty() && format.pixelTypeName == "counts-be"; }

void SwapBytes(std::span<u8> counts) {
    for (std::size_t i = 0; i + 1 < counts.size(); i += 2) std::swap(counts[i], counts[i + 1]);
}

}  // namespace ovix::measure
