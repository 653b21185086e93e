#include "reduce/factory/plugin_scan.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "core/file_system.h"

namespace ovix::reduce {

namespace {

constexpr const wchar_t* kLibrary = L"ovix.reduce.so";
constexpr const wchar_t* kPlugins = L"ovix.reduce.*.so";
constexpr const wchar_t* kWrapper = L"ovix.reduce.NET.so";
constexpr const wchar_t* kWrappers = L"ovix.reduce.*.NET.so";

CString PathOfHost() {
    char path[4096];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path);
    return n > 0 ? CString(path, static_cast<int>(n)) : CString();
}

/// The file of this library, or that of the host executable when the library bears another name.
CString PathOfLibrary() {
    static const char anchor = 0;
    Dl_info info = {};
    if (::dladdr(&anchor, &info) && info.dli_fname) {
        const CString path(info.dli_fname);
        const wchar_t* slash = std::wcsrchr(path, L'/');
        if (EqualsNoCase(slash ? slash + 1 : path.c_str(), kLibrary)) return path;
    }
    return PathOfHost();
}

bool IsPlugin(const wchar_t* name) {
    return !EqualsNoCase(name, kLibrary) && !EqualsNoCase(name, kWrapper) &&
           !IFileSystem::WildcardMatch(kWrappers, name);
}

}  // namespace

void SSharedPtrFactoryPostCreateLoadDLLs::PostCreate() {
    static constinit bool done = false;  // shared by the three factories
    if (done) return;
    done = true;
    const CString path = PathOfLibrary();
    std::wstring directory(path.c_str());
    IFileSystem::GetDirectory(directory.data());
    const CDirectoryListing files = FileSystem->List(directory.c_str(), kPlugins);
    for (const CDirectoryEntry& file : files) {
        // The handle is dropped and the result not looked at: a plug-in speaks for itself, and is never unloaded.
        if (IsPlugin(file.GetName())) ::dlopen(CString(file.GetFullPath()).GetUTF8(), RTLD_NOW | RTLD_LOCAL);
    }
}

}  // namespace ovix::reduce
