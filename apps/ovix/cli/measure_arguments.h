#pragma once

#include <optional>
#include <string>
#include <vector>

#include "measure/measure.h"

namespace CLI {
class App;
}

namespace ovix::app {

/// The options that add to what a source tells of itself: its scene, the tables that correct its counts, and a
/// calibration of the user's own.
class CSceneArguments {
  public:
    void Add(CLI::App& verb);
    /// Throws wrong usage for a value that would not do.
    measure::SSceneValues Scene() const;
    std::vector<measure::SCorrectionFiles> Corrections() const;
    /// Takes "emissivity=0.9" as if the option "--emissivity 0.9" were there. Throws wrong usage for a text that names
    /// no value of the scene.
    void Set(const std::string& text);
    /// Throws `CFault` for a file that would not do.
    std::optional<CRCalFile> UserCalibration() const;
    /// The options that say something of the scene and change nothing of values in the unit.
    std::vector<std::string> IdleIn(EUnit unit) const;
    bool HasUserCalibration() const { return !userCalibration_.empty(); }

  private:
    std::string emissivity_, distance_, reflectedTemp_, atmosphereTemp_, atmosphereTrans_, humidity_, extOpticsTemp_,
        extOpticsTrans_;
    std::vector<std::string> corrections_;
    std::string userCalibration_;
};

/// The options that say what is made of the pixels: unit, scale, scene, correction.
class CMeasureArguments {
  public:
    void Add(CLI::App& verb);
    /// Throws wrong usage for a value that would not do.
    measure::SMeasureOptions Options() const;
    /// Throws wrong usage for an option that changes nothing of values in the unit.
    void RefuseIdle(EUnit unit) const;
    /// The same for what was asked for without a source, and for a correction of a preset that no frame bears: looks
    /// through frames with numbers until each was seen.
    void RefuseIdle(const measure::CMeasurement& measurement,
                    const std::optional<measure::CFrameNumbers>& frames) const;
    /// As `CSceneArguments::Set`.
    void SetScene(const std::string& text) { given_.Set(text); }

  private:
    CSceneArguments given_;
    std::string unit_;
    std::string calibration_;
    std::string scale_;
    std::string clip_;
};

}  // namespace ovix::app
