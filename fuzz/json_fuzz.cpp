#include "apps/ovix/app_error.h"
#include "apps/ovix/facts/user_calibration.h"
#include "fuzz/memory_file.h"

/// Any text as a user calibration: what is read can be written, and reads again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const CMemoryFile file;
    try {
        const ovix::CRCalFile calibration = ovix::app::ReadUserCalibration(file.Hold(data, size));
        const std::string again = ovix::app::UserCalibrationDocument(calibration).dump();
        ovix::app::ReadUserCalibration(file.Hold(reinterpret_cast<const std::uint8_t*>(again.data()), again.size()));
    } catch (const ovix::app::CAppError& error) {
        if (!*error.what()) std::abort();
    }
    return 0;
}
