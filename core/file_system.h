#pragma once

#include "core/array.h"
#include "core/file.h"
#include "core/process.h"

namespace ovix {

/// One file of a listing. Texts of more than 512 characters are not listed.
class OVIX_API CDirectoryEntry {
  public:
    static constexpr std::size_t kRoom = 512 + 1;  ///< with the terminator

    const wchar_t* GetName() const { return name_; }
    const wchar_t* GetFullPath() const { return path_; }
    /// False when either text does not fit.
    bool Set(const CString& name, const CString& path);

  private:
    wchar_t name_[kRoom] = {};
    wchar_t path_[kRoom] = {};
};

/// The files of a directory, in order of their names.
class OVIX_API CDirectoryListing : public TArray<CDirectoryEntry> {
  public:
    CDirectoryListing() = default;
    CDirectoryListing(const CDirectoryListing&) = default;
    CDirectoryListing& operator=(const CDirectoryListing&) = default;
    ~CDirectoryListing() override;
};

class OVIX_API IFileSystem {
  public:
    enum EMode : u32 {
        OpenForReading = 18,
        CreateForWriting = 40,  ///< and reading of what was written
        OpenForUpdate = 34,     ///< reading and writing in place
    };

    virtual ~IFileSystem();
    /// Empty on failure.
    virtual TSharedPtr<IFile> Open(const CString& path, u32 mode) = 0;
    /// The files (not directories) whose name matches.
    virtual CDirectoryListing List(const CString& directory, const CString& pattern) = 0;

    /// Cuts the file name off the path in place; a path without a directory becomes ".".
    static void GetDirectory(wchar_t* path);
    /// `*` matches any run of characters and `?` any one; case is ignored.
    static bool WildcardMatch(const wchar_t* pattern, const wchar_t* name);
};

/// The file system of the machine. Its files are buffered: bytes that could not be written are reported by a later
/// write, `Flush` or `Close`, and by all that follow.
class OVIX_API CFileSystem final : public IFileSystem {
  public:
    TSharedPtr<IFile> Open(const CString& path, u32 mode) override;
    CDirectoryListing List(const CString& directory, const CString& pattern) override;
};

using FileSystemHolder = TSingletonPtr<CFileSystem, 1, 0, TSingletonPtrPostCreateDoNothing>;
extern template class OVIX_API TSingletonPtr<CFileSystem, 1, 0, TSingletonPtrPostCreateDoNothing>;
inline constexpr FileSystemHolder FileSystem{};

}  // namespace ovix
