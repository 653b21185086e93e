#pragma once

#include <string>
#include <vector>

#include "apps/ovix/pipeline/measure_options.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// The options that add to what a source tells of itself: its scene, and the tables that correct its counts.
class CSceneArguments {
  public:
    void Add(CLI::App& verb);
    /// Throws wrong usage for a value that would not do.
    SSceneValues Scene() const;
    std::vector<SCorrectionFiles> Corrections() const;

  private:
    std::string emissivity_, distance_, reflectedTemp_, atmosphereTemp_, atmosphereTrans_, humidity_, extOpticsTemp_,
        extOpticsTrans_;
    std::vector<std::string> corrections_;
};

/// The options that say what is made of the pixels: unit, scale, scene, correction.
class CMeasureArguments {
  public:
    void Add(CLI::App& verb);
    /// Throws wrong usage for a value that would not do.
    SMeasureOptions Options() const;

  private:
    CSceneArguments told_;
    std::string unit_;
    std::string calibration_;
    std::string scale_ = "C";
    std::string clip_;
};

}  // namespace ovix::app
