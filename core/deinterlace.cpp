#include "core/deinterlace.h"

#include <cstring>

#include "core/types.h"

namespace ovix {

void deinterlace(void* dest, const void* source, int width, int height, int bytesPerPixel, int, int) {
    if (width < 1 || height < 1 || bytesPerPixel < 1) return;
    const std::size_t line = static_cast<std::size_t>(width) * static_cast<std::size_t>(bytesPerPixel);
    const auto* from = static_cast<const u8*>(source);
    for (std::size_t field = 0; field < 2; ++field) {
        for (std::size_t y = field; y < static_cast<std::size_t>(height); y += 2, from += line) {
            std::memcpy(static_cast<u8*>(dest) + y * line, from, line);
        }
    }
}

}  // namespace ovix
