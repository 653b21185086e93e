#include "core/file_system.h"

#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <system_error>

namespace ovix {

namespace {

class CDiskFile final : public IFile {
  public:
    explicit CDiskFile(std::FILE* file) : file_(file) {}
    CDiskFile(const CDiskFile&) = delete;
    CDiskFile& operator=(const CDiskFile&) = delete;
    ~CDiskFile() override { std::fclose(file_); }

    u32 Write(const void* data, u32 size) override {
        if (!Turn(kWriting)) return 0;
        return static_cast<u32>(std::fwrite(data, 1, size, file_));
    }
    u32 Read(void* data, u32 size) override {
        if (!Turn(kReading)) return 0;
        return static_cast<u32>(std::fread(data, 1, size, file_));
    }
    u64 GetPosition() override { return static_cast<u64>(::ftello(file_)); }
    bool Seek(i64 offset, int origin) override {
        const int whence = origin == FromStart ? SEEK_SET : origin == FromCurrent ? SEEK_CUR : SEEK_END;
        last_ = kNothing;
        return origin >= FromStart && origin <= FromEnd && ::fseeko(file_, offset, whence) == 0;
    }
    bool Flush() override { return std::fflush(file_) == 0; }

  private:
    enum EOperation { kNothing, kReading, kWriting };

    /// A stream must be repositioned between a read and a write.
    bool Turn(EOperation next) {
        const bool turned = last_ == kNothing || last_ == next || ::fseeko(file_, 0, SEEK_CUR) == 0;
        last_ = next;
        return turned;
    }

    std::FILE* file_;
    EOperation last_ = kNothing;
};

}  // namespace

bool CDirectoryEntry::Set(const CString& name, const CString& path) {
    if (static_cast<std::size_t>(name.length()) >= kRoom || static_cast<std::size_t>(path.length()) >= kRoom)
        return false;
    std::wcscpy(name_, name);
    std::wcscpy(path_, path);
    return true;
}

CDirectoryListing::~CDirectoryListing() = default;

IFileSystem::~IFileSystem() = default;

void IFileSystem::GetDirectory(wchar_t* path) {
    if (wchar_t* slash = std::wcsrchr(path, L'/')) {
        slash[slash == path ? 1 : 0] = 0;  // the root stays the root
    } else if (*path) {
        path[0] = L'.';
        path[1] = 0;
    }
}

bool IFileSystem::WildcardMatch(const wchar_t* pattern, const wchar_t* name) {
    const auto same = [](wchar_t a, wchar_t b) {
        const wchar_t pair[2][2] = {{a, 0}, {b, 0}};
        return EqualsNoCase(pair[0], pair[1]);
    };
    const wchar_t* star = nullptr;  // the last star met, and where in the name its run ends so far
    const wchar_t* runEnd = nullptr;
    while (*name) {
        if (*pattern == L'*') {
            star = pattern++;
            runEnd = name;
        } else if (*pattern == L'?' || same(*pattern, *name)) {
            ++pattern;
            ++name;
        } else if (star) {
            pattern = star + 1;
            name = ++runEnd;
        } else {
            return false;
        }
    }
    while (*pattern == L'*') ++pattern;
    return !*pattern;
}

TSharedPtr<IFile> CFileSystem::Open(const CString& path, u32 mode) {
    const char* how = mode == OpenForReading     ? "rb"
                      : mode == CreateForWriting ? "wb"
                      : mode == OpenForUpdate    ? "r+b"
                                                 : nullptr;
    std::error_code ignored;
    if (!how || std::filesystem::is_directory(path.GetUTF8(), ignored)) return {};
    std::FILE* file = std::fopen(path.GetUTF8(), how);
    return file ? MakeShared<CDiskFile>(file) : TSharedPtr<CDiskFile>();
}

CDirectoryListing CFileSystem::List(const CString& directory, const CString& pattern) {
    CDirectoryListing listing;
    std::error_code error;
    for (std::filesystem::directory_iterator at(directory.GetUTF8(), error), end; !error && at != end;
         at.increment(error)) {
        std::error_code ignored;
        const CString name(at->path().filename().c_str());
        CDirectoryEntry entry;
        if (at->is_directory(ignored) || !WildcardMatch(pattern, name)) continue;
        if (entry.Set(name, CString(at->path().c_str()))) listing.Add(entry);
    }
    listing.Sort(
        [](const CDirectoryEntry* a, const CDirectoryEntry* b) { return std::wcscmp(a->GetName(), b->GetName()); });
    return listing;
}

template class TSingletonPtr<CFileSystem, 1, 0, TSingletonPtrPostCreateDoNothing>;

}  // namespace ovix
