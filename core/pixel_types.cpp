#include "core/pixel_types.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "core/types.h"

namespace ovix {

namespace {

struct SRegistry {
    std::shared_mutex mutex;
    std::vector<SPixelType> types;

    const SPixelType* Find(const GUID& id) const {
        const auto found =
            std::find_if(types.begin(), types.end(), [&](const SPixelType& type) { return type.id == id; });
        return found == types.end() ? nullptr : &*found;
    }
};

/// Lives to the end of the process: plug-ins may look types up until then.
SRegistry& Registry() {
    static SRegistry& registry = *new SRegistry;
    return registry;
}

}  // namespace

bool RegisterPixelType(GUID id, const wchar_t* name, u8 bytesPerPixel, EDataType type, GUID baseType) {
    SRegistry& registry = Registry();
    const std::unique_lock lock(registry.mutex);
    if (!registry.Find(id)) registry.types.push_back({id, name, bytesPerPixel, type, baseType});
    return true;
}

u8 PixelWidth(GUID type) {
    SRegistry& registry = Registry();
    const std::shared_lock lock(registry.mutex);
    const SPixelType* found = registry.Find(type);
    return found ? found->bytesPerPixel : u8{0};
}

bool IsPixelBaseType(GUID type, GUID base) {
    SRegistry& registry = Registry();
    const std::shared_lock lock(registry.mutex);
    for (std::size_t steps = 0; steps <= registry.types.size(); ++steps) {  // a chain may be a ring
        if (type == base) return true;
        const SPixelType* found = registry.Find(type);
        if (!found) return false;
        type = found->baseType;
    }
    return false;
}

GUID OldPixelTypeUInt32ToNewPixelType(u32) { return rootIRType; }

bool GetPixelType(GUID type, SPixelType& facts) {
    SRegistry& registry = Registry();
    const std::shared_lock lock(registry.mutex);
    const SPixelType* found = registry.Find(type);
    if (found) facts = *found;
    return found != nullptr;
}

void GetPixelTypes(TArray<SPixelType>& types) {
    SRegistry& registry = Registry();
    const std::shared_lock lock(registry.mutex);
    types.Empty();
    for (const SPixelType& type : registry.types) types.Add(type);
}

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
