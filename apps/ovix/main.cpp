#include <malloc.h>

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "apps/ovix/command_line.h"
#include "apps/ovix/facts/error_json.h"
#include "apps/ovix/output/interrupt_cleanup.h"
#include "apps/ovix/text/console.h"

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
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        // Errors of the command line itself are in the form that it asks for.
        if (std::ranges::find(arguments, "--json") != arguments.end()) UseJsonErrors();
        return RunCommandLine(arguments);
    } catch (const std::exception&) {
        const CFault fault = CurrentFault();
        SayFault(fault);
        return fault.Exit();
    }
}
