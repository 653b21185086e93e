#include "reduce/filters/dunlin_reduce_objects.h"

#include <algorithm>

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CInfo = CDunlinCameraInfoReduceObject;

constexpr u32 kFirstVersion = 0x10000;
using FirstForm = TMemberStream<&CInfo::text0, &CInfo::text1, &CInfo::text2, &CInfo::text3, &CInfo::text4,
                                &CInfo::value0, &CInfo::value1, &CInfo::value2, &CInfo::value3, &CInfo::byte0,
                                &CInfo::number0, &CInfo::byte1, &CInfo::byte2, &CInfo::byte3, &CInfo::byte4>;
static_assert(FirstForm::Size() == 116);

/// Calls `use(text, text of the other)` for each of the five.
template <class Use>
void ForTexts(CInfo& info, const CInfo& other, Use use) {
    use(info.text0, other.text0);
    use(info.text1, other.text1);
    use(info.text2, other.text2);
    use(info.text3, other.text3);
    use(info.text4, other.text4);
}

}  // namespace

CDunlinCameraInfoReduceObject::CDunlinCameraInfoReduceObject() { version = 0x10001; }

TSharedPtr<IReduceObject> CDunlinCameraInfoReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> made = TReduceObject::Duplicate();
    ForTexts(*made.Cast<CInfo>(), *this, [](auto& text, const auto& own) {
        std::fill(std::begin(text), std::end(text), '\0');
        StrCpy(text, own, sizeof text);
    });
    return made;
}

void CDunlinCameraInfoReduceObject::Default() {
    const CInfo old = *this;
    TReduceObject::Default();
    ForTexts(*this, old, [](auto& text, const auto& kept) { std::copy(std::begin(kept), std::end(kept), text); });
    number0 = old.number0;
}

bool CDunlinCameraInfoReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    Default();
    if (!FirstForm::Read(*file, *this)) return false;
    if (blockVersion > kFirstVersion && !ReadValue(*file, useCameraClock)) return false;
    ForTexts(*this, *this, [](auto& text, const auto&) { *std::rbegin(text) = '\0'; });
    return true;
}

bool CDunlinCameraInfoReduceObject::Save(TSharedPtr<IFile> file, u32) {
    return FirstForm::Write(*file, *this) && WriteValue(*file, useCameraClock);
}

namespace {

using CCal = CDunlinFactoryCalReduceObject;
using Stream = TMemberStream<&CCal::calWord0, &CCal::calValue0, &CCal::calValue1, &CCal::calValue2, &CCal::calValue3,
                             &CCal::calValue4, &CCal::calValue5, &CCal::calValue6, &CCal::calWord1, &CCal::calWord2,
                             &CCal::calValue7, &CCal::calValue8, &CCal::detectorTemp, &CCal::integrationTime>;
static_assert(Stream::Size() == 56);

}  // namespace

bool CDunlinFactoryCalReduceObject::Load(TSharedPtr<IFile> file, u32, u32) {
    Default();
    return Stream::Read(*file, *this);
}

bool CDunlinFactoryCalReduceObject::Save(TSharedPtr<IFile> file, u32) { return Stream::Write(*file, *this); }

CDunlinFrameInfoReduceObject::CDunlinFrameInfoReduceObject() { persist = false; }

}  // namespace ovix::reduce
