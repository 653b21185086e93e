#include <malloc.h>

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "apps/ovix/cli/command_line.h"
#include "apps/ovix/cli/console.h"
#include "apps/ovix/fault.h"
#include "apps/ovix/output/output_file.h"
#include "core/core.h"

namespace {

/// Buffers of a frame come and go with each: taken from the system each time, their pages would cost more than the
/// work on them.
void KeepFreedMemory() {
    constexpr int kMost = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, kMost);
    mallopt(M_TRIM_THRESHOLD, 4 * kMost);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace ovix::app;
    KeepFreedMemory();
    try {
        HoldStandardStreams();
        InstallInterruptCleanup();
        return RunCommandLine({argv + 1, argv + argc});
    } catch (const CAppError& error) {
        Say(error.what());
        return error.Exit();
    } catch (const ovix::measure::CError& error) {
        const CFault fault = FaultOf(error);
        Say(fault.what());
        return fault.Exit();
    } catch (const std::bad_alloc&) {
        Say("there is not enough memory");
    } catch (const std::exception& error) {
        Say(error.what());
    }
    return ExitBadData;
}
