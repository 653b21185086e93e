#include "reduce/factory/plugin_scan.h"

#include <dlfcn.h>
#include <link.h>
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

/// The library or program that an address is in; all null for none.
Dl_info ModuleOf(const void* address) {
    Dl_info info = {};
    return ::dladdr(address, &info) && info.dli_fname ? info : Dl_info{};
}

Dl_info ThisModule() {
    static const char anchor = 0;
    return ModuleOf(&anchor);
}

CString NameOf(const Dl_info& module) {
    if (!module.dli_fname) return {};
    const char* slash = std::strrchr(module.dli_fname, '/');
    return slash ? slash + 1 : module.dli_fname;
}

/// The file of this library, or that of the host executable when the library bears another name.
CString PathOfLibrary() {
    const Dl_info module = ThisModule();
    return EqualsNoCase(NameOf(module), kLibrary) ? CString(module.dli_fname) : PathOfHost();
}

bool IsPlugin(const wchar_t* name) {
    return !EqualsNoCase(name, kLibrary) && !EqualsNoCase(name, kWrapper) &&
           !IFileSystem::WildcardMatch(kWrappers, name);
}

/// Whether the file holds all that the system would map of it. The system does not look: touching a page that was cut
/// off kills the process.
bool IsWhole(const wchar_t* path) {
    const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::OpenForReading);
    const u64 size = file ? file->GetRemaining() : 0;
    ElfW(Ehdr) header;
    if (!file || !file->ReadBytes(&header, sizeof header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_phentsize != sizeof(ElfW(Phdr)) || !file->Seek(static_cast<i64>(header.e_phoff), IFile::FromStart)) {
        return false;
    }
    for (int i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment;
        if (!file->ReadBytes(&segment, sizeof segment)) return false;
        const bool there = segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset;
        if (segment.p_type == PT_LOAD && !there) return false;
    }
    return true;
}

void Load(const wchar_t* path) {
    // The handle is dropped and the result not looked at: a plug-in speaks for itself, and is never unloaded.
    if (IsWhole(path)) ::dlopen(CString(path).GetUTF8(), RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

CString OriginOf(void (*function)()) {
    const Dl_info module = ModuleOf(reinterpret_cast<const void*>(function));
    return module.dli_fbase == ThisModule().dli_fbase ? CString() : NameOf(module);
}

void SSharedPtrFactoryPostCreateLoadDLLs::PostCreate() {
    static constinit bool done = false;  // shared by the three factories
    if (done) return;
    done = true;
    const CString path = PathOfLibrary();
    std::wstring directory(path.c_str());
    IFileSystem::GetDirectory(directory.data());
    const CDirectoryListing files = FileSystem->List(directory.c_str(), kPlugins);
    for (const CDirectoryEntry& file : files) {
        if (IsPlugin(file.GetName())) Load(file.GetFullPath());
    }
}

}  // namespace ovix::reduce
