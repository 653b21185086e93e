#include "apps/ovix/scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ovix::app {
namespace {

/// A point of the scene. The origin is the picture's centre, y grows downwards; the part that is always seen is 4/3
/// wide and 1 high.
struct SPlace {
    double x;
    double y;
};

constexpr SPlace kBearing{0.215, 0.02};
constexpr double kBearingRadius = 0.062;
constexpr double kPipeY = -0.37;
constexpr double kPipeX = 0.535;
constexpr double kPipeBend = 0.09;
constexpr double kPipeRadius = 0.038;
constexpr double kEdge = 0.004;  ///< optics are never quite sharp
constexpr double kSecondsPerFrame = 0.02;
constexpr double kTurn = 2 * std::numbers::pi;

// The machine runs, stops, and runs again; the bearing follows, each time as a body does whose temperature tends to
// another one. Kelvins are above the bearing's temperature at the start, to which a cycle comes back.
constexpr double kRuns = 3;   ///< seconds
constexpr double kStops = 4;  ///< seconds
constexpr double kRunning = 9.5, kWarming = 1.0;
constexpr double kStanding = -25, kCooling = 2.5;
constexpr double kTurnsPerSecond = 0.8, kRunsDown = 0.5;

// Billets on their way over the floor, from left to right.
constexpr double kBilletY = 0.42;
constexpr double kBilletStart = -0.78;  ///< just outside of what is always seen
constexpr double kBilletSpeed = 0.9;
constexpr double kBilletDistance = 1.8;
constexpr double kBilletHalfWidth = 0.06, kBilletHalfHeight = 0.04;

/// 1 well inside (a distance below 0), 0 well outside.
double Inside(double distance) {
    const double t = std::clamp(0.5 - distance / (2 * kEdge), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

double ToBox(SPlace p, SPlace centre, double halfWidth, double halfHeight, double corner) {
    const double dx = std::abs(p.x - centre.x) - halfWidth + corner;
    const double dy = std::abs(p.y - centre.y) - halfHeight + corner;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - corner;
}

double ToDisc(SPlace p, SPlace centre, double radius) { return std::hypot(p.x - centre.x, p.y - centre.y) - radius; }

void Cover(double& kelvin, double distance, double own) { kelvin += (own - kelvin) * Inside(distance); }

double Wall(SPlace p) {
    const double warmAir = 3.4 * std::exp(-(p.x * p.x * 5 + (p.y + 0.22) * (p.y + 0.22) * 9));
    return 293.2 - 2.4 * p.y + 0.5 * p.x + warmAir;
}

void AddFloor(double& kelvin, SPlace p) {
    const double mirrored = 2.6 * std::exp(-((p.x + 0.05) * (p.x + 0.05) * 9 + (p.y - 0.33) * (p.y - 0.33) * 60));
    Cover(kelvin, 0.31 - p.y, 290.4 + 2.0 * (p.y - 0.31) + mirrored);
}

/// Along the wall under the ceiling, round a bend and down: coldest on its axis, and a little warmer on its way.
void AddPipe(double& kelvin, SPlace p) {
    const SPlace bend{kPipeX - kPipeBend, kPipeY + kPipeBend};
    double axis = std::min(p.x < bend.x ? std::abs(p.y - kPipeY) : 1e9, p.y > bend.y ? std::abs(p.x - kPipeX) : 1e9);
    if (p.x >= bend.x && p.y <= bend.y) axis = std::abs(ToDisc(p, bend, kPipeBend));
    const double way = p.y > bend.y ? 0.9 + p.y : std::max(p.x, -0.8);
    Cover(kelvin, axis - kPipeRadius, 284.0 + 0.9 * way + 2.2 * std::pow(axis / kPipeRadius, 2));
    for (const SPlace flange : {SPlace{-0.36, kPipeY}, SPlace{0.14, kPipeY}}) {
        Cover(kelvin, ToBox(p, flange, 0.014, kPipeRadius * 1.45, 0.004), 285.6);
    }
}

void AddMotor(double& kelvin, SPlace p) {
    for (double x : {-0.3, 0.02}) Cover(kelvin, ToBox(p, {x, 0.245}, 0.05, 0.07, 0.008), 303.0 - 14 * (p.y - 0.2));
    const double towardsBearing = std::clamp((p.x + 0.4) / 0.6, 0.0, 1.0);
    const double rounded = -5.0 * std::pow((p.y - 0.02) / 0.18, 4);
    const double fins = 1.5 * std::cos(2 * std::numbers::pi * (p.y - 0.02) / 0.045);
    Cover(kelvin, ToBox(p, {-0.14, 0.02}, 0.27, 0.185, 0.03), 315.5 + 9 * towardsBearing + rounded + fins);
    Cover(kelvin, ToBox(p, {-0.2, -0.2}, 0.085, 0.05, 0.012), 307.0 + 2 * (p.x + 0.2));
    Cover(kelvin, ToBox(p, {-0.43, 0.02}, 0.03, 0.165, 0.02), 309.0);
    Cover(kelvin, ToBox(p, {0.145, 0.02}, 0.03, 0.15, 0.02), 327.5);
}

void AddShaft(double& kelvin, SPlace p) {
    const double decay = std::exp(-(p.x - kBearing.x) / 0.09);
    Cover(kelvin, ToBox(p, {0.31, 0.02}, 0.13, 0.022, 0.004), 308.0 + 34 * std::min(decay, 1.0));
}

/// What stands still and keeps its temperature.
double StillKelvin(SPlace p) {
    double kelvin = Wall(p);
    AddFloor(kelvin, p);
    AddPipe(kelvin, p);
    AddMotor(kelvin, p);
    AddShaft(kelvin, p);
    return kelvin;
}

/// What changes, at one moment.
struct SMoment {
    explicit SMoment(double seconds) : billets(kBilletStart + kBilletSpeed * seconds) {
        const double hot = kRunning * (1 - std::exp(-kRuns / kWarming));
        const double cold = kStanding + (hot - kStanding) * std::exp(-kStops / kCooling);
        const double restart = kWarming * std::log((kRunning - cold) / kRunning);  // until the start's temperature
        const double secondsRunDown = kRunsDown * (1 - std::exp(-kStops / kRunsDown));
        const double cycle = kRuns + kStops + restart;
        const double cycles = std::floor(seconds / cycle);
        const double since = seconds - cycles * cycle;
        double turning = cycles * (kRuns + secondsRunDown + restart);  // seconds at full speed
        if (since < kRuns) {
            heat = kRunning * (1 - std::exp(-since / kWarming));
            turning += since;
        } else if (since < kRuns + kStops) {
            heat = kStanding + (hot - kStanding) * std::exp(-(since - kRuns) / kCooling);
            turning += kRuns + kRunsDown * (1 - std::exp(-(since - kRuns) / kRunsDown));
        } else {
            heat = kRunning + (cold - kRunning) * std::exp(-(since - kRuns - kStops) / kWarming);
            turning += since - kStops + secondsRunDown;
        }
        turned = kTurn * kTurnsPerSecond * turning;
    }
    double heat;     ///< of the bearing, kelvin above the start
    double turned;   ///< by the shaft, radians
    double billets;  ///< where the middle of one of them is
};

/// The billet's temperature tells how far it has come.
double BilletKelvin(double middle) { return 300 + 52 * std::exp(-std::max(0.0, middle - kBilletStart) / 0.9); }

/// Pixels for one unit of the scene.
double Scale(u16 width, u16 height) { return std::min(width * 0.75, height * 1.0); }

measure::SRegion RegionAround(const char* name, SPlace centre, double halfWidth, double halfHeight, u16 width,
                              u16 height) {
    const double scale = Scale(width, height);
    const auto pixel = [](double at, u16 end) { return static_cast<int>(std::clamp(std::floor(at), 0.0, end - 1.0)); };
    const int left = pixel(width / 2.0 + (centre.x - halfWidth) * scale, width);
    const int right = pixel(width / 2.0 + (centre.x + halfWidth) * scale, width);
    const int top = pixel(height / 2.0 + (centre.y - halfHeight) * scale, height);
    const int bottom = pixel(height / 2.0 + (centre.y + halfHeight) * scale, height);
    return {name, static_cast<u16>(left), static_cast<u16>(top), static_cast<u16>(right - left + 1),
            static_cast<u16>(bottom - top + 1)};
}

}  // namespace

/// A pixel that sees the coupling, the bearing or its seat: shares of what covers what, and what does not change of it.
struct CScene::SRotor {
    SRotor(u32 at, SPlace p, double kelvin)
        : pixel(at),
          still(kelvin),
          couplingShare(Inside(ToBox(p, {0.415, 0.02}, 0.032, 0.09, 0.012))),
          ridge(std::asin(std::clamp((p.y - 0.02) / 0.09, -1.0, 1.0)) * 10) {
        const double distance = ToDisc(p, kBearing, 0);
        seatShare = Inside(distance - 0.1);
        seatWarmth = std::exp(-(distance - kBearingRadius) / 0.03);
        bearingShare = Inside(distance - kBearingRadius);
        ball = 9 * std::atan2(p.y - kBearing.y, p.x - kBearing.x);
        load = 2.0 * (p.y - kBearing.y) / kBearingRadius;
        raceShare = Inside(distance - 0.024);
    }
    bool Sees() const { return couplingShare > 0 || seatShare > 0; }
    double At(const SMoment& now) const {
        double kelvin = still;
        if (couplingShare > 0) kelvin += (305.5 + 1.1 * std::cos(ridge + now.turned) - kelvin) * couplingShare;
        kelvin += (331.0 + (10 + now.heat) * seatWarmth - kelvin) * seatShare;
        if (bearingShare > 0) {
            const double balls = 1.6 * std::cos(ball - now.turned);
            kelvin += (349.0 + now.heat + balls + load - kelvin) * bearingShare;
        }
        return kelvin + (341.0 + now.heat - kelvin) * raceShare;
    }

    u32 pixel;
    double still;  ///< what it sees behind, kelvin
    double couplingShare, ridge;
    double seatShare, seatWarmth;
    double bearingShare, ball, load;
    double raceShare;
};

CScene::CScene(u16 width, u16 height) : width_(width), height_(height) {
    const double scale = Scale(width, height);
    still_.reserve(std::size_t{width} * height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const SPlace place{(x + 0.5 - width / 2.0) / scale, (y + 0.5 - height / 2.0) / scale};
            const double kelvin = StillKelvin(place);
            const SRotor rotor(static_cast<u32>(still_.size()), place, kelvin);
            if (rotor.Sees()) rotors_.push_back(rotor);
            still_.push_back(static_cast<float>(kelvin));
        }
    }
}

CScene::~CScene() = default;

std::vector<float> CScene::Render(u64 frame) const {
    const SMoment now(static_cast<double>(frame) * kSecondsPerFrame);
    std::vector<float> kelvin = still_;
    for (const SRotor& rotor : rotors_) kelvin[rotor.pixel] = static_cast<float>(rotor.At(now));

    // The billets are an endless row; those that are in the picture are drawn.
    const double edge = width_ / 2.0 / Scale(width_, height_) + kBilletHalfWidth + kEdge;
    const double first = now.billets - std::floor((now.billets + edge) / kBilletDistance) * kBilletDistance;
    for (double middle = first; middle < edge; middle += kBilletDistance) AddBillet(kelvin, middle);
    return kelvin;
}

void CScene::AddBillet(std::vector<float>& kelvin, double middle) const {
    const measure::SRegion box =
        RegionAround("", {middle, kBilletY}, kBilletHalfWidth + kEdge, kBilletHalfHeight + kEdge, width_, height_);
    const double scale = Scale(width_, height_), own = BilletKelvin(middle);
    for (int y = box.y; y < box.y + box.height; ++y) {
        for (int x = box.x; x < box.x + box.width; ++x) {
            const SPlace place{(x + 0.5 - width_ / 2.0) / scale, (y + 0.5 - height_ / 2.0) / scale};
            float& pixel = kelvin[static_cast<std::size_t>(y) * width_ + static_cast<std::size_t>(x)];
            double covered = pixel;
            Cover(covered, ToBox(place, {middle, kBilletY}, kBilletHalfWidth, kBilletHalfHeight, 0.01), own);
            pixel = static_cast<float>(covered);
        }
    }
}

std::vector<float> RenderScene(u16 width, u16 height, u64 frame) { return CScene(width, height).Render(frame); }

std::vector<measure::CPixelSet> SceneRegions(u16 width, u16 height) {
    std::vector<measure::CPixelSet> regions;
    for (const measure::SRegion& r : {RegionAround("bearing", kBearing, 0.08, 0.08, width, height),
                                      RegionAround("pipe", {-0.11, kPipeY}, 0.2, 0.022, width, height),
                                      RegionAround("housing", {-0.17, 0.03}, 0.19, 0.12, width, height)})
        regions.emplace_back(measure::SShape::Rectangle(r.name, r.x, r.y, r.width, r.height), width, height);
    return regions;
}

}  // namespace ovix::app
