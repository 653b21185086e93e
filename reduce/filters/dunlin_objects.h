#pragma once

#include "reduce/filters/dunlin_factory_cal_reduce_object.h"
#include "reduce/filters/dunlin_frame_info_reduce_object.h"
#include "reduce/filters/dunlin_trailer.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

/// The objects of one preset that frames of the Lapwing and Wren cameras fill.
struct SDunlinObjects {
    /// Fetches the three in this order and makes those that are missing.
    SDunlinObjects(CReduceObjectArray& objects, u8 preset);

    /// False when a plug-in owns one of the names with a class of its own: there is nothing to fill then.
    explicit operator bool() const { return frameInfo && factoryCal && dunlinInfo; }

    void FillFactoryCal(const SDunlinTrailer& values) const;
    /// The frame info, which shows the fields of `shown` in their order, and the Dunlin info, which takes all values
    /// as they are. `valid` and places of the objects stay.
    void FillFrame(const SDunlinTrailer& values, DunlinLayout shown) const;

    u8 preset;
    TSharedPtr<CFrameInfoReduceObject> frameInfo;
    TSharedPtr<CDunlinFactoryCalReduceObject> factoryCal;
    TSharedPtr<CDunlinFrameInfoReduceObject> dunlinInfo;
};

}  // namespace ovix::reduce
