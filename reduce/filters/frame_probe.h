#pragma once

#include "core/bytes.h"
#include "reduce/filters/frame_questions.h"

namespace ovix::reduce {

/// A frame under check: what a family asks before any of its operations may read it, and where the first fault goes.
/// Nothing here reads beyond the frame's size.
class CFrameProbe {
  public:
    CFrameProbe(const void* frame, u32 size, SFrameFault* fault)
        : bytes_(static_cast<const u8*>(frame)), size_(size), fault_(fault) {}

    /// Whether `size` bytes stand at `offset`; `what` names them in the fault.
    bool Holds(u64 offset, u64 size, const wchar_t* what) const {
        if (offset <= size_ && size <= size_ - offset) return true;
        return Refuse(offset, CString::FromFormat(L"%s (%I64d bytes)", what, static_cast<i64>(size)),
                      CString::FromFormat(L"the end of the frame at byte %I64d", static_cast<i64>(size_)));
    }
    /// Whether the little-endian word at `offset`, which must be held, is `value`; `what` says what that value means.
    bool HasWord(u64 offset, u16 value, const wchar_t* what) const {
        const u16 word = LoadLittle<u16>(At(offset));
        if (word == value) return true;
        return Refuse(offset, CString::FromFormat(L"%d (%s)", int{value}, what), CString::FromFormat(L"%d", int{word}));
    }
    bool RefuseType(const wchar_t* family) const {
        return Refuse(0, CString::FromFormat(L"a pixel type of the %s family", family), L"another pixel type");
    }
    bool RefuseSeveral(u16 images) const {
        return Refuse(0, L"one image in a buffer of this type", CString::FromFormat(L"%d", int{images}));
    }
    /// Notes the fault; always false.
    bool Refuse(u64 offset, const CString& expected, const CString& found) const {
        if (fault_) *fault_ = {offset, expected, found};
        return false;
    }

    /// The frame from `offset` on, which must be held.
    const u8* At(u64 offset) const { return bytes_ + offset; }
    u64 Size() const { return size_; }

  private:
    const u8* bytes_;
    u64 size_;
    SFrameFault* fault_;
};

}  // namespace ovix::reduce
