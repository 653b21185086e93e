#include "core/file_system.h"

#include <unistd.h>

#include <cwchar>
#include <thread>

#include "core/process.h"
#include "core/version.h"
#include "tests/support/test_folder.h"

namespace ovix {
namespace {

using test::CTestFolder;

TEST(FileSystem, MatchesWildcards) {
    const wchar_t* const matching[][2] = {{L"", L""},
                                          {L"*", L""},
                                          {L"*.so", L"x.so.so"},
                                          {L"*a*b*c", L"xxaxxbxxbc"},
                                          {L"*aab", L"aaaab"},
                                          {L"ovix.reduce.*.so", L"OVIX.Reduce.x.SO"},
                                          {L"ovix.reduce.*.so", L"ovix.reduce..so"}};
    for (const auto& [pattern, name] : matching)
        EXPECT_TRUE(IFileSystem::WildcardMatch(pattern, name)) << CString(pattern).GetUTF8();
    const wchar_t* const others[][2] = {{L"", L"a"},
                                        {L"a*", L""},
                                        {L"?", L""},
                                        {L"a?c", L"ac"},
                                        {L"[a]", L"a"},
                                        {L"[", L"{"},
                                        {L"ovix.reduce.*.so", L"ovix.reduce.so"},
                                        {L"ovix.reduce.*.NET.so", L"ovix.reduce.NET.so"}};
    for (const auto& [pattern, name] : others)
        EXPECT_FALSE(IFileSystem::WildcardMatch(pattern, name)) << CString(pattern).GetUTF8();
}

TEST(FileSystem, CutsTheFileNameOff) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"/a/b/c", L"/a/b"}, {L"/a/b/", L"/a/b"}, {L"/a", L"/"}, {L"/", L"/"},
        {L"a/b", L"a"},       {L"a", L"."},        {L"", L""}};
    for (const auto& [path, directory] : cases) {
        wchar_t buffer[16];
        std::wcscpy(buffer, path);
        IFileSystem::GetDirectory(buffer);
        EXPECT_STREQ(buffer, directory);
    }
}

TEST(FileSystem, WritesReadsAndPatchesFiles) {
    const CTestFolder folder;
    const CString path = folder.Path("\xC2\xB0.bin");
    {
        const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::CreateForWriting);
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->WriteBytes("0123456789", 10));
        EXPECT_TRUE(file->Close());
        EXPECT_FALSE(file->WriteBytes("x", 1));
        EXPECT_FALSE(file->Seek(0, IFile::FromStart));
    }
    {
        const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::OpenForUpdate);
        char read[4] = {};
        EXPECT_TRUE(file->ReadBytes(read, 2));
        EXPECT_EQ(file->GetRemaining(), 8u);
        EXPECT_FALSE(file->Seek(0, 7));
        EXPECT_TRUE(file->WriteBytes("ab", 2));  // right after a read, at its end
        EXPECT_TRUE(file->ReadBytes(read, 2));
        EXPECT_STREQ(read, "45");
        EXPECT_TRUE(file->Seek(1, IFile::FromCurrent) && file->WriteBytes("c", 1));
        EXPECT_TRUE(file->Seek(2, IFile::FromEnd) && file->WriteBytes("d", 1));
    }
    const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::OpenForReading);
    char read[14] = {};
    EXPECT_EQ(file->GetRemaining(), 13u);
    EXPECT_EQ(file->Read(read, 20), 13u);
    EXPECT_EQ(std::string(read, 13), std::string("01ab456c89\0\0d", 13));
    EXPECT_FALSE(file->WriteBytes("x", 1));

    EXPECT_FALSE(FileSystem->Open(folder.Path("none"), IFileSystem::OpenForReading));
    EXPECT_FALSE(FileSystem->Open(folder.Path(), IFileSystem::OpenForReading));
    EXPECT_FALSE(FileSystem->Open(path, 0));
}

TEST(FileSystem, WritesWhereNothingCanBeSought) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    {
        const CString path = CString::FromFormat(L"/proc/self/fd/%d", ends[1]);
        const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::CreateForWriting);
        EXPECT_TRUE(file && file->WriteBytes("abc", 3) && file->WriteBytes("d", 1));
        EXPECT_TRUE(file && file->Close());
    }
    char read[5] = {};
    EXPECT_EQ(::read(ends[0], read, 4), 4);
    EXPECT_STREQ(read, "abcd");
    for (const int end : ends) ::close(end);
}

TEST(FileSystem, LosesNoWriteError) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this machine has no device that is always full";
    const std::pair<const char*, bool (*)(IFile&)> cases[] = {
        {"close", [](IFile& file) { return file.Close(); }},
        {"flush", [](IFile& file) { return file.Flush(); }},
        {"close after a flush", [](IFile& file) { return (file.Flush(), file.Close()); }},
        {"close after a lost large write", [](IFile& file) { return (file.WriteZeros(100'000), file.Close()); }},
        {"a later write", [](IFile& file) { return file.WriteZeros(100'000); }}};
    for (const auto& [how, discover] : cases) {
        const TSharedPtr<IFile> file = FileSystem->Open(L"/dev/full", IFileSystem::CreateForWriting);
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->WriteBytes("x", 1)) << how;  // only taken into the buffer
        EXPECT_FALSE(discover(*file)) << how;
    }
}

TEST(FileSystem, ListsFilesInOrderOfTheirNames) {
    const CTestFolder folder;
    for (const char* name : {"b.so", "a.so", "A.so", "a.txt"})
        FileSystem->Open(folder.Path(name), IFileSystem::CreateForWriting);
    std::filesystem::create_directory(folder.Path("d.so").GetUTF8());
    FileSystem->Open(folder.Path("d.so/inside.so"), IFileSystem::CreateForWriting);
    const CDirectoryListing listing = FileSystem->List(folder.Path(), L"*.so");
    ASSERT_EQ(listing.size(), 3u);
    const char* const expected[] = {"A.so", "a.so", "b.so"};
    for (u32 i = 0; i < 3; ++i) {
        EXPECT_STREQ(CString(listing[i].GetName()).GetUTF8(), expected[i]);
        EXPECT_TRUE(FileSystem->Open(listing[i].GetFullPath(), IFileSystem::OpenForReading));
    }
    EXPECT_EQ(FileSystem->List(folder.Path("none"), L"*").size(), 0u);
    EXPECT_FALSE(CDirectoryEntry().Set(std::wstring(513, L'x').c_str(), L"path"));
    EXPECT_TRUE(CDirectoryEntry().Set(std::wstring(512, L'x').c_str(), L"path"));
}

TEST(Version, IsThatOfTheProjectInMacrosAndLibrary) {
    EXPECT_STREQ(OVIX_VERSION_STRING, OVIX_PROJECT_VERSION);
    EXPECT_STREQ(Version(), OVIX_PROJECT_VERSION);
    EXPECT_EQ(CString::FromFormat(L"%d.%d.%d", OVIX_VERSION_MAJOR, OVIX_VERSION_MINOR, OVIX_VERSION_PATCH),
              CString(OVIX_PROJECT_VERSION));
}

TEST(RWLock, ExcludesWritersAndSharesNothingWithCopies) {
    CRWLock lock;
    int value = 0;
    {
        std::jthread threads[4];
        for (std::jthread& thread : threads) {
            thread = std::jthread([&] {
                for (int i = 0; i < 1000; ++i) {
                    lock.WriteLock();
                    ++value;
                    lock.WriteUnlock();
                }
            });
        }
    }
    EXPECT_EQ(value, 4000);

    lock.ReadLock();
    CRWLock copy(lock);
    copy.WriteLock();  // would wait for ever if it were the same lock
    copy = lock;
    copy.WriteUnlock();
    lock.ReadUnlock();
}

}  // namespace
}  // namespace ovix
