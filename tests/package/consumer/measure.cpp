// What a customer's program does with the measuring layer alone: it asks for frames that are not there, and learns why.

#include <cstdio>

#include "measure/measure.h"

int main() {
    using namespace ovix::measure;
    try {
        static_cast<void>(Open("no such recording.krt"));
        return 1;
    } catch (const CError& error) {
        if (error.Id() != EError::FileMissing) return 2;
    }
    try {
        static_cast<void>(FindFormat("K410 IR", 640, 480));
        return 3;
    } catch (const CError& error) {
        std::printf("%s\n", error.what());
    }
    return FindFormat("K410 IR (GigE)", 640, 480).filter == "K410" ? 0 : 4;
}
