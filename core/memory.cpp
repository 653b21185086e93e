#include "core/memory.h"

#include <cstdlib>

namespace ovix {

void* Alloc(std::size_t size) { return std::malloc(size); }
void* Realloc(void* pointer, std::size_t size) { return std::realloc(pointer, size); }
void Free(void* pointer) { std::free(pointer); }

}  // namespace ovix
