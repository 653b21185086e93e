#pragma once

#include "core/array.h"
#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// A header that an application defines itself; the library only carries it.
struct SUserFrameHeaderConfig {
    u8 bytes[16];
};
/// One field of such a header; the library only carries it.
struct SUserFrameHeaderFieldDesc {
    u8 bytes[328];
};
static_assert(sizeof(SUserFrameHeaderConfig) == 16 && sizeof(SUserFrameHeaderFieldDesc) == 328);

/// The raw header of a frame, for applications that keep it beside the pixels: `IFilter::GetHeaderInfo` answers its
/// type and size, `ExtractHeader` its bytes. Not persisted, and filled by nobody in this library.
class OVIX_REDUCE_API CFrameHeaderReduceObject : public TReduceObject<CFrameHeaderReduceObject> {
  public:
    static constexpr GUID typeID = "{ABB88590-614E-41F8-9CE0-6ACA00BBA514}"_guid;
    static constexpr const wchar_t* kName = L"FrameHeader";

    GUID headerType = CGUID::Empty;  ///< what kind of header the bytes are
    TArray<u8> headerData;

    CFrameHeaderReduceObject();

    /// Copies `version` too.
    TSharedPtr<IReduceObject> Duplicate() const override;
    /// Unlike in other classes, the place in the source goes too: all is as in a fresh object, save for the capacity of
    /// `headerData`.
    void Default() override;
};

}  // namespace ovix::reduce
