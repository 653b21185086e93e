#include "reduce/filters/frame_probe.h"

namespace ovix::reduce {

bool CFrameProbe::Holds(u64 offset, u64 size, const wchar_t* what) const {
    if (offset <= size_ && size <= size_ - offset) return true;
    return Refuse(offset, CString::FromFormat(L"%s (%I64d bytes)", what, static_cast<i64>(size)),
                  CString::FromFormat(L"the end of the frame at byte %I64d", static_cast<i64>(size_)));
}

bool CFrameProbe::HasWord(u64 offset, u16 value, const wchar_t* what) const {
    const u16 word = LoadLittle<u16>(At(offset));
    if (word == value) return true;
    return Refuse(offset, CString::FromFormat(L"%d (%s)", int{value}, what), CString::FromFormat(L"%d", int{word}));
}

bool CFrameProbe::Refuse(u64 offset, const CString& expected, const CString& found) const {
    if (fault_) *fault_ = {offset, expected, found};
    return false;
}

}  // namespace ovix::reduce
