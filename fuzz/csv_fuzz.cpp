#include "apps/ovix/app_error.h"
#include "apps/ovix/facts/calibration_points.h"
#include "fuzz/memory_file.h"

/// Any text as the points of black bodies.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const CMemoryFile file;
    try {
        for (const auto& point : ovix::app::ReadCalibrationPoints(file.Hold(data, size), ovix::Celsius, 0)) {
            if (point.preset > 7 || !(point.celsius > -274)) std::abort();
        }
    } catch (const ovix::app::CAppError& error) {
        if (!*error.what()) std::abort();
    }
    return 0;
}
