#pragma once

#include "reduce/filters/lor_filter.h"

namespace ovix::reduce {

/// Reached through the factory as "LOR-RA".
class CLORFilterRA final : public CLORFilter {
  public:
    CLORFilterRA();
    static bool Register();

    const wchar_t* GetName() const override;

  protected:
    bool FillObjects(const u8* header, GUID type, u16 width, CReduceObjectArray& objects, u8& preset) override;
};

}  // namespace ovix::reduce
