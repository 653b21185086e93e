#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "measure/frame/measurement.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// The conversion of a frame as a function of its counts, its scene and its calibration's constants.
class CModel {
  public:
    /// One input, which knows what it can be.
    struct SInput {
        SParameter value;
        bool constant;
        double least;
        double most;
        std::function<void(double)> set;  ///< in the model's own copies
        bool whole = false;               ///< numbers alone that are
    };

    explicit CModel(const CFrame& frame);

    /// All but the counts.
    const std::vector<SInput>& Inputs() const { return inputs_; }
    /// With the inputs as they are set. Throws `CError` (FrameRefused) for a value outside of what is calibrated.
    double Value(double counts);
    /// To be called after inputs were set.
    void Update();

  private:
    void AddScene(const CFrame& frame);
    template <class Cal, class Member>
    void AddConstant(const TSharedPtr<Cal>& calibration, const char* key, const char* unit, Member Cal::*member);
    template <class Cal>
    void AddCurve(const TSharedPtr<Cal>& calibration);
    void AddFactory();
    void AddUser();
    double AtWhole(u16 counts);

    reduce::CReduceObjectArray objects_;
    reduce::CConvertContext context_;
    EUnit unit_;
    ETempType scale_;
    u8 preset_;
    std::vector<SInput> inputs_;
};

}  // namespace ovix::measure
