// Loads the library that it is given and prints which marker plug-ins came with it.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    if (count != 2) return 2;
    if (!::dlopen(arguments[1], RTLD_NOW)) {
        std::printf("%s\n", ::dlerror());
        return 1;
    }
    const char* loaded = std::getenv("OVIX_TEST_LOADED");
    std::printf("loaded %s\n", loaded ? loaded : "none");
    return 0;
}
