#include "apps/ovix/output/spool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "apps/ovix/fault.h"
#include "apps/ovix/input_files.h"
#include "apps/ovix/text/console.h"

namespace ovix::app {

namespace fs = std::filesystem;

int OpenNamelessFile() {
    const std::string directory = fs::temp_directory_path();
    const int file = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file < 0) throw SystemFault(ExitFile, directory, "cannot make a temporary file", errno);
    return file;
}

void PrintFile(int descriptor, const std::string& name) {
    std::vector<char> block(std::size_t{1} << 20);
    for (off_t at = 0;;) {
        const ssize_t read = ::pread(descriptor, block.data(), block.size(), at);
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) throw SystemFault(ExitFile, name, "cannot read back", errno);
        if (read == 0) return;
        Print({block.data(), static_cast<std::size_t>(read)});
        at += read;
    }
}

CSpool::CSpool(const std::string& file) : name_(file == "-" ? "standard input" : file) {
    spool_ = OpenNamelessFile();
    const int from = file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    try {
        if (from < 0) throw SystemFault(ExitFile, name_, "cannot open", errno);
        Copy(from);
    } catch (...) {
        if (from > STDERR_FILENO) ::close(from);
        ::close(spool_);
        throw;
    }
    if (from > STDERR_FILENO) ::close(from);
}

CSpool::~CSpool() { ::close(spool_); }

void CSpool::Copy(int from) {
    std::vector<char> block(std::size_t{1} << 20);
    for (;;) {
        const ssize_t read = ::read(from, block.data(), block.size());
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) throw SystemFault(ExitFile, name_, "cannot read", errno);
        if (read == 0) return;
        for (ssize_t written = 0; written < read;) {
            const ssize_t moved = ::write(spool_, block.data() + written, static_cast<std::size_t>(read - written));
            if (moved < 0 && errno != EINTR)
                throw SystemFault(ExitFile, fs::temp_directory_path(), "cannot write a temporary file", errno);
            if (moved > 0) written += moved;
        }
    }
}

CStorePart::CStorePart(const fs::path& target, bool overwrite)
    : target_(RequireNoInput(target)), part_(target.string() + ".part"), overwrite_(overwrite) {
    const int made = ::mkdir(part_.c_str(), 0777);
    if (made < 0 && errno == EEXIST)
        throw CFault({.exit = ExitFile,
                      .file = part_.string(),
                      .problem = "is there already: somebody writes it, or never finished"});
    if (made < 0) throw SystemFault(ExitFile, target_.string(), "cannot create it", errno);
    removed_.emplace(part_);
}

CStorePart::~CStorePart() {
    std::error_code nobodyIsTold;
    if (removed_) fs::remove_all(part_, nobodyIsTold);
}

void CStorePart::Put() {
    RequireNoInput(target_);
    const int handle = ::open(part_.c_str(), O_RDONLY | O_CLOEXEC);
    // Of thousands of files all of the file system at once.
    int failed = handle < 0 || ::syncfs(handle) != 0 ? errno : 0;
    if (!failed) failed = TakePlace();
    if (!failed && ::syncfs(handle) != 0) failed = errno;
    ::close(handle);
    if (failed) throw SystemFault(ExitFile, target_.string(), "cannot write", failed);
    removed_.reset();
}

/// A folder is not removed in one step: what is replaced keeps its name until its successor has it, and goes then.
int CStorePart::TakePlace() const {
    std::error_code error;
    const auto exchange = [&] {
        return ::renameat2(AT_FDCWD, part_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE) == 0;
    };
    fs::path replaced = part_;
    if (!overwrite_ || !exchange()) {
        replaced += ".replaced";
        // Not all file systems exchange names.
        if (overwrite_ && fs::exists(target_)) fs::rename(target_, replaced, error);
        if (!error) fs::rename(part_, target_, error);
    }
    if (!error) fs::remove_all(replaced, error);
    return error.value();
}

CWayOut::CWayOut(const fs::path& target) : path_(target) {
    if (target != "-") return;
    std::string pattern = fs::temp_directory_path() / "ovix-XXXXXX";
    if (!::mkdtemp(pattern.data())) throw SystemFault(ExitFile, pattern, "cannot make a temporary folder", errno);
    folder_ = pattern;
    removed_.emplace(folder_);
    path_ = folder_ / "standard output";
}

CWayOut::~CWayOut() { Remove(); }

void CWayOut::Remove() {
    std::error_code nobodyIsTold;
    if (!folder_.empty()) fs::remove_all(folder_, nobodyIsTold);
    removed_.reset();
    folder_.clear();
}

void CWayOut::Send() {
    if (folder_.empty()) return;
    const int file = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) throw SystemFault(ExitFile, path_, "cannot read back", errno);
    Remove();  // ahead of a reader that may end this process
    try {
        PrintFile(file, path_);
    } catch (...) {
        ::close(file);
        throw;
    }
    ::close(file);
}

}  // namespace ovix::app
