#include "apps/ovix/synth/table_files.h"

#include "apps/ovix/fault.h"
#include "apps/ovix/recording/library_file.h"

namespace ovix::app {

namespace {

/// One output as the library opens it by a path; which path does not matter.
class COneFile final : public IFileSystem {
  public:
    explicit COneFile(COutputFile& output) : output_(output) {}
    TSharedPtr<IFile> Open(const CString&, u32) override { return MakeShared<CLibraryOutput>(output_); }
    CDirectoryListing List(const CString&, const CString&) override { return {}; }

  private:
    COutputFile& output_;
};

}  // namespace

CTableFiles::CTableFiles(const reduce::CCorrectionReduceObject& tables, const std::string& stem, bool overwrite) {
    const auto add = [&](const char* extension, auto save, auto... table) {
        COutputFile& file = *files_.emplace_back(std::make_unique<COutputFile>(stem + extension, overwrite));
        COneFile place(file);
        if (!save(&place, L"", static_cast<u16>(tables.width), static_cast<u16>(tables.height), u16{0}, table...))
            throw CFault({.exit = ExitFile, .file = file.Target().string(), .problem = "cannot write"});
    };
    if (tables.gain) add(".mvg", CNormFile::SaveGainTable, tables.gain);
    if (tables.offset) add(".mvo", CNormFile::SaveOffsetTable, tables.offset);
    if (tables.map) add(".mvb", CNormFile::SaveBadPixelTable, tables.mask, tables.map);
}

void CTableFiles::Commit() {
    for (const auto& file : files_) file->Commit();
}

}  // namespace ovix::app
