#include "apps/ovix/input/small_text.h"

#include <fmt/format.h>

#include "apps/ovix/fault.h"

namespace ovix::app {

std::string ReadSmallText(const CInputFile& file, const char* expected) {
    constexpr u64 kMostBytes = 16 * 1024 * 1024;
    if (file.Size() > kMostBytes)
        throw CFault(
            {.file = file.Name(), .expected = expected, .found = fmt::format("a file of {} bytes", file.Size())});
    std::string text(file.Size(), '\0');
    text.resize(file.ReadAt(0, {reinterpret_cast<u8*>(text.data()), text.size()}));
    return text;
}

}  // namespace ovix::app
