#pragma once

#include "reduce/objects/typed_reduce_object.h"
#include "reduce/pixels/abate.h"

namespace ovix::reduce {

/// How the frames of several presets are merged into one. One object serves the whole source.
class OVIX_REDUCE_API CAbateCfgReduceObject : public TReduceObject<CAbateCfgReduceObject> {
  public:
    static constexpr GUID typeID = "{12C99632-E051-4922-B9A3-A7259271C94D}"_guid;
    static constexpr const wchar_t* kName = L"AbateCfg";
    static constexpr u16 kDefaultLow = 1000;
    static constexpr u16 kDefaultHigh = 15000;

    bool enabled = false;
    u16 low[8];                        ///< thresholds, by preset number
    u16 high[8];                       ///< likewise
    u8 order[8];                       ///< preset numbers in the order in which they are tried
    EAbateMode mode = AbateFromFirst;  ///< from which end

    CAbateCfgReduceObject();

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;

  private:
    bool LoadOldStream(IFile& file);
};

}  // namespace ovix::reduce
