// The mean count of each frame of a dump of 64 x 48 pixels; and why a file that is missing cannot be read.

#include <cstdio>

#include "measure/measure.h"

using namespace ovix::measure;

int main(int, char** arguments) try {
    try {
        static_cast<void>(Open("no such recording.krt"));
        return 2;
    } catch (const CError& error) {
        if (error.Id() != EError::FileMissing) return 3;
    }
    const CSource source = Open(arguments[1], {.pixelType = arguments[2], .width = 64, .height = 48});
    for (const CFrame& frame : CSeries(CMeasurement(source, {.quantity = EQuantity::Counts}), {.threads = 2}))
        std::printf("frame %d mean %.1f\n", static_cast<int>(frame.number), frame.Statistics().mean);
} catch (const CError& error) {
    std::puts(error.what());
    return 1;
}
