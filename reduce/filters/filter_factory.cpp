#include "reduce/filters/filter_factory.h"

#include <algorithm>

template class ovix::TSingletonPtr<ovix::reduce::CFilterFactory, 100000, 0,
                                   ovix::reduce::SSharedPtrFactoryPostCreateLoadDLLs>;

namespace ovix::reduce {

constinit const FilterFactoryHolder FilterFactory{};
CFilterFactory* filterFactory() { return FilterFactoryHolder::GetInstance(); }

SFilterFactoryExtraStuff::SFilterFactoryExtraStuff() = default;
SFilterFactoryExtraStuff::SFilterFactoryExtraStuff(TArray<GUID>& types) : pixelTypes(std::move(types)) {}

bool CFilterFactory::Register(const wchar_t* name, TArray<GUID> pixelTypes, Create_t create, Destroy_t destroy,
                              const SFrameAnswers& answers) {
    SFilterFactoryExtraStuff extra(pixelTypes);
    static_cast<SFrameAnswers&>(extra) = answers;
    return TNamedClassFactory::Register(name, create, destroy, extra);
}

TSharedPtr<IFilter> CFilterFactory::CreateForPixelType(GUID type) const { return Create(GetPixelTypeHandler(type)); }
bool CFilterFactory::IsPixelTypeHandled(GUID type) const { return !GetPixelTypeHandler(type).IsEmpty(); }

CString CFilterFactory::GetPixelTypeHandler(GUID type) const {
    for (u32 i = 0; i < GetEntryCount(); ++i) {
        const SEntry& entry = GetEntryAt(i);
        const TArray<GUID>& types = entry.extra.pixelTypes;
        if (std::find(types.begin(), types.end(), type) != types.end()) return entry.name;
    }
    return {};
}

// The questions about frames go to whoever registered the answers.

namespace {

/// Of a filter that nobody registered, none.
const SFrameAnswers& AnswersOf(const wchar_t* filter) { return filterFactory()->GetEntry(filter).extra; }

bool Refuse(SFrameFault* fault, const wchar_t* expected, const CString& found) {
    if (fault) *fault = {0, expected, found};
    return false;
}

}  // namespace

bool CheckFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                SFrameFault* fault) {
    const SFrameAnswers& answers = AnswersOf(filter);
    if (!answers.check) return Refuse(fault, L"a decoder that checks its frames", filter);
    return answers.check(frame, type, width, height, frameSize, fault);
}

bool CheckFrames(const wchar_t* filter, const void* buffer, GUID type, u16 width, u16 height, u16 frameCount,
                 u32 bufferSize, SFrameFault* fault) {
    const SFrameAnswers& answers = AnswersOf(filter);
    if (frameCount < 2 && !answers.checkBuffer)
        return CheckFrame(filter, buffer, type, width, height, bufferSize, fault);
    if (!answers.checkBuffer) {
        return Refuse(fault, L"one image in a buffer of this family", CString::FromFormat(L"%d", int{frameCount}));
    }
    const u16 images = std::max<u16>(frameCount, 1);
    return answers.checkBuffer(buffer, type, width, height, images, bufferSize, fault);
}

bool GetFrameForm(const wchar_t* filter, GUID type, SFrameForm& form) {
    const SFrameAnswers& answers = AnswersOf(filter);
    return answers.form && answers.form(type, form);
}

bool GetFrameEvidence(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                      SFrameEvidence& evidence) {
    const SFrameAnswers& answers = AnswersOf(filter);
    SFrameForm form;
    if (!answers.evidence || !answers.form || !answers.form(type, form)) return false;
    evidence = {};
    answers.evidence(frame, type, width, height, frameSize, evidence);
    return true;
}

bool DescribeFrame(const wchar_t* filter, const void* frame, GUID type, u16 width, u16 height, u32 frameSize,
                   TArray<SFrameField>& fields) {
    fields.Empty();
    const SFrameAnswers& answers = AnswersOf(filter);
    if (!answers.describe || !CheckFrame(filter, frame, type, width, height, frameSize)) return false;
    answers.describe(frame, type, width, height, frameSize, fields);
    return true;
}

}  // namespace ovix::reduce
