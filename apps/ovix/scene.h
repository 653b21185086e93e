#pragma once

#include <vector>

#include "measure/measure.h"

namespace ovix::app {

/// A warm machine with a hot bearing and a cool pipe before a wall, with a temperature at every point and every moment.
/// It is described in shares of the picture, so that it looks the same at every size. Frames are 20 ms apart. The
/// machine runs for three seconds, in which the shaft turns and the bearing warms up; it stops for four, in which it
/// cools down by 27 K; and runs again. At its middle, t seconds after the start, the bearing has 341 K + 9.5 K
/// (1 - exp(-t)) until it stops, and tends to 316 K with exp(-t / 2.5 s) from then on. Meanwhile hot billets pass below
/// it, one every two seconds, and cool on their way.

/// All temperatures of the scene lie between these, in kelvin.
inline constexpr float kSceneColdest = 283;
inline constexpr float kSceneHottest = 363;

/// What does not change is worked out once for all frames. Any number of threads may render at a time.
class CScene {
  public:
    CScene(u16 width, u16 height);
    ~CScene();
    /// The temperatures in kelvin of width times height pixels, row by row.
    std::vector<float> Render(u64 frame) const;

  private:
    struct SRotor;
    void AddBillet(std::vector<float>& kelvin, double middle) const;

    u16 width_;
    u16 height_;
    std::vector<float> still_;
    std::vector<SRotor> rotors_;
};

/// One frame of the scene.
std::vector<float> RenderScene(u16 width, u16 height, u64 frame);

/// "bearing", "pipe" and "housing": three regions that show the hottest part, the coolest and the body. For pictures of
/// at least 32 x 32 pixels.
std::vector<measure::CPixelSet> SceneRegions(u16 width, u16 height);

}  // namespace ovix::app
