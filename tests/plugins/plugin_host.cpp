// Loads the library that it is given, closes it again, and prints which marker plug-ins came with it. The library must
// stay: its factories are deleted at process exit.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    if (count != 2) return 2;
    void* library = ::dlopen(arguments[1], RTLD_NOW);
    if (!library) {
        std::printf("%s\n", ::dlerror());
        return 1;
    }
    ::dlclose(library);
    const bool stays = ::dlopen(arguments[1], RTLD_NOW | RTLD_NOLOAD) != nullptr;
    const char* loaded = std::getenv("OVIX_TEST_LOADED");
    std::printf("%s %s\n", stays ? "loaded" : "gone again", loaded ? loaded : "none");
    return 0;
}
