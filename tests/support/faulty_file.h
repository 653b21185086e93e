#pragma once

#include <algorithm>
#include <vector>

#include "core/file.h"

namespace ovix::test {

/// A file in memory with a fault at one of its writes, counted from 0.
class CFaultyFile final : public IFile {
  public:
    enum EFault {
        None,
        OneFails,  ///< that write takes half of its bytes; the next ones work again
        AllFail,   ///< so do all that follow
        PowerOff,  ///< nothing works any more, and what was not flushed is gone
    };

    CFaultyFile(EFault fault, u64 at) : fault_(fault), at_(at) {}

    u32 Write(const void* data, u32 size) override {
        const u64 n = writes_++;
        if (fault_ == PowerOff && n >= at_) {
            bytes = flushed_;
            return 0;
        }
        const bool fails = fault_ == OneFails ? n == at_ : fault_ == AllFail && n >= at_;
        const u32 done = fails ? size / 2 : size;
        if (position_ + done > bytes.size()) bytes.resize(position_ + done);
        std::copy_n(static_cast<const u8*>(data), done, bytes.begin() + static_cast<std::ptrdiff_t>(position_));
        position_ += done;
        return done;
    }
    u32 Read(void* data, u32 size) override {
        const u64 left = bytes.size() - std::min<u64>(bytes.size(), position_);
        const u32 done = static_cast<u32>(std::min<u64>(size, left));
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position_), done, static_cast<u8*>(data));
        position_ += done;
        return done;
    }
    u64 GetPosition() override { return position_; }
    bool Seek(i64 offset, int origin) override {
        const u64 base = origin == FromStart ? 0 : origin == FromCurrent ? position_ : bytes.size();
        position_ = base + static_cast<u64>(offset);
        return true;
    }
    bool Flush() override {
        if (fault_ == PowerOff && writes_ > at_) return false;
        flushed_ = bytes;
        return fault_ != AllFail || writes_ <= at_;
    }

    u64 Writes() const { return writes_; }

    std::vector<u8> bytes;

  private:
    EFault fault_;
    u64 at_;
    u64 writes_ = 0;
    u64 position_ = 0;
    std::vector<u8> flushed_;
};

}  // namespace ovix::test
