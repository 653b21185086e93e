#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// The raw header of the frame at hand of an Osprey camera. Per preset and per frame, and never persisted.
class OVIX_REDUCE_API COspreyFrameInfoReduceObject : public TReduceObject<COspreyFrameInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{CEE1192C-7D8C-4633-A143-F304E294AA57}"_guid;
    static constexpr const wchar_t* kName = L"OspreyFrameInfo";
    static constexpr u16 kWords = 96;

    u16 header[kWords] = {};  ///< the first bytes of the frame as they stand there, beyond a narrow line too
    u16 headerWords = 0;      ///< how many of the words are header

    COspreyFrameInfoReduceObject();

    /// Takes the count of words for one of bytes: a duplicate has the first half of the header and zeros behind it.
    TSharedPtr<IReduceObject> Duplicate() const override;
};

}  // namespace ovix::reduce
