#pragma once

#include <string>
#include <vector>

#include "apps/ovix/demo_agreement.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// One frame, measured.
struct SDemoFrame {
    std::string form;
    std::string pixelType;
    std::vector<u8> raw;  ///< as the camera sent it
    reduce::CReduceObjectArray objects;
    TSharedPtr<reduce::CCorrectionReduceObject> correction;
    std::vector<u16> counts;  ///< corrected
    std::vector<float> values;
    std::vector<u8> status;
    SAgreement agreement;
    SAgreement recorded;  ///< of the same frame, read back from its recording
};

}  // namespace ovix::app
