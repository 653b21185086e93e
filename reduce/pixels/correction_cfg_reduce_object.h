#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// Which of the corrections are on. One object serves all presets of a source; it is not persisted.
class OVIX_REDUCE_API CCorrectionCfgReduceObject : public TReduceObject<CCorrectionCfgReduceObject> {
  public:
    static constexpr GUID typeID = "{191F2684-72A2-407C-8DEC-39DD57B9ABE0}"_guid;
    static constexpr const wchar_t* kName = L"CorrectionCfg";

    bool applyNUC = true;        ///< use the tables of gain and offset
    bool applyBadPixels = true;  ///< use the replacement map
    bool clip = true;            ///< clamp results to the two limits
    double minimum = 0.0;
    double maximum = 16383.0;

    CCorrectionCfgReduceObject();
};

}  // namespace ovix::reduce
