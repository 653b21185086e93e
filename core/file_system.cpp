#include "core/file_system.h"

#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <system_error>
#include <utility>

namespace ovix {

namespace {

/// A write error sticks: the system may report it once only, and perhaps on behalf of bytes taken much earlier.
class CDiskFile final : public IFile {
  public:
    explicit CDiskFile(std::FILE* file) : file_(file) {}
    CDiskFile(const CDiskFile&) = delete;
    CDiskFile& operator=(const CDiskFile&) = delete;
    ~CDiskFile() override { CDiskFile::Close(); }

    u32 Write(const void* data, u32 size) override {
        if (!size || !Turn(kWriting)) return 0;
        const auto written = static_cast<u32>(std::fwrite(data, 1, size, file_));
        Check(written == size);
        return written;
    }
    u32 Read(void* data, u32 size) override {
        if (!size || !Turn(kReading)) return 0;
        return static_cast<u32>(std::fread(data, 1, size, file_));
    }
    u64 GetPosition() override {
        const off_t position = file_ ? ::ftello(file_) : 0;
        return position > 0 ? static_cast<u64>(position) : 0;
    }
    bool Seek(i64 offset, int origin) override {
        if (!file_ || origin < FromStart || origin > FromEnd || !Flush()) return false;
        const int whence = origin == FromStart ? SEEK_SET : origin == FromCurrent ? SEEK_CUR : SEEK_END;
        last_ = kNothing;
        return ::fseeko(file_, offset, whence) == 0;
    }
    bool Flush() override { return Check(!file_ || last_ != kWriting || std::fflush(file_) == 0); }
    bool Close() override {
        std::FILE* file = std::exchange(file_, nullptr);
        return Check(!file || std::fclose(file) == 0);
    }

  private:
    enum EOperation { kNothing, kReading, kWriting };

    /// A stream must be repositioned between a read and a write.
    bool Turn(EOperation next) {
        const bool turns = last_ != kNothing && last_ != next;
        if (!file_ || (turns && !Seek(0, FromCurrent))) return false;
        last_ = next;
        return true;
    }
    bool Check(bool done) { return good_ = good_ && done; }

    std::FILE* file_;
    EOperation last_ = kNothing;
    bool good_ = true;
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
    const wchar_t* star = nullptr;  // the last star met, and where in the name its run ends so far
    const wchar_t* runEnd = nullptr;
    while (*name) {
        if (*pattern == L'*') {
            star = pattern++;
            runEnd = name;
        } else if (*pattern == L'?' || FoldCase(*pattern) == FoldCase(*name)) {
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
                      : mode == CreateForWriting ? "w+b"
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
