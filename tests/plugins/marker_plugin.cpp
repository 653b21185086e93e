// Tells that it was loaded, and under which name: adds its file name to an environment variable of the process.

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

[[maybe_unused]] const bool kMarked = [] {
    static const char anchor = 0;
    Dl_info info = {};
    ::dladdr(&anchor, &info);
    const char* before = std::getenv("OVIX_TEST_LOADED");
    const std::string loaded = (before ? before : "") + std::filesystem::path(info.dli_fname).filename().string() + ";";
    return ::setenv("OVIX_TEST_LOADED", loaded.c_str(), 1) == 0;
}();

}  // namespace
