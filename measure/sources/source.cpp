#include "measure/sources/source.h"

#include <algorithm>
#include <utility>

#include "measure/sources/source_body.h"

namespace ovix::measure {

CSource::CSource(std::shared_ptr<IBody> body) : body_(std::move(body)) {}

const std::string& CSource::Name() const { return body_->File().Name(); }
ESource CSource::Kind() const { return body_->Kind(); }
const SFrameFormat& CSource::Format() const { return body_->Format(); }
bool CSource::IsNumbered() const { return body_->IsNumbered(); }
std::optional<u64> CSource::Count() const { return body_->Count(); }
u64 CSource::FrameSize() const { return body_->FrameSize(); }

void CSource::Read(u64 number, SRawFrame& frame) const { body_->Read(number, frame); }
SExtent CSource::Find(u64 number) const { return body_->Find(number); }
bool CSource::Next(SRawFrame& frame, const std::stop_token& stop) const { return body_->Next(frame, stop); }

void CSource::Describe(reduce::CReduceObjectArray& objects) const { body_->Describe(objects); }
void CSource::Overrule(reduce::CReduceObjectArray& objects) const { body_->Overrule(objects); }
u32 CSource::OverruledScene() const { return body_->OverruledScene(); }

std::vector<SFinding> CSource::Findings() const { return body_->Findings(); }
void CSource::Add(SFinding finding) const { body_->Add(std::move(finding)); }

std::optional<EWeight> CSource::Worst() const {
    std::optional<EWeight> worst;
    for (const SFinding& finding : Findings()) worst = std::max(worst.value_or(EWeight::Note), finding.weight);
    return worst;
}

bool CSource::IsFile(const std::filesystem::path& path) const {
    return body_->File().IsRegular() && IdentityOf(path) == body_->File().Identity();
}

}  // namespace ovix::measure
