#pragma once

#include "reduce/filters/lor_filter.h"

namespace ovix::reduce {

/// Reached through the factory as "LOR-SB": a second trigger input, and a lens block behind the 96 bytes. A header that
/// was kept apart has no lens block, so its buffer must be longer than the header by 24 bytes, best of zeros.
class CLORFilterSB final : public CLORFilter {
  public:
    CLORFilterSB();
    static bool Register();

    const wchar_t* GetName() const override;

  protected:
    bool FillObjects(const u8* header, GUID type, u16 width, CReduceObjectArray& objects, u8& preset) override;
};

}  // namespace ovix::reduce
