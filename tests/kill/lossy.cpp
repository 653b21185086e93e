// Preloaded into a program: keeps in the folder LOSSY_KEPT, by the number of its inode, what each file held when it was
// last flushed. After the program was killed, that is what a power cut would have left of the file; see kill.sh.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

void Keep(int descriptor) {
    const char* folder = std::getenv("LOSSY_KEPT");
    struct stat facts {};
    if (!folder || ::fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) return;
    std::vector<char> bytes(static_cast<std::size_t>(facts.st_size));
    // The program may have opened the file for writing alone.
    const std::string own = "/proc/self/fd/" + std::to_string(descriptor);
    const int again = ::open(own.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::pread(again, bytes.data(), bytes.size(), 0);
    ::close(again);
    const std::string kept = std::string(folder) + "/" + std::to_string(facts.st_ino);
    std::FILE* file = std::fopen((kept + ".new").c_str(), "wb");
    if (!file || size < 0 || std::fwrite(bytes.data(), 1, static_cast<std::size_t>(size), file) != bytes.size())
        std::abort();
    std::fclose(file);
    std::rename((kept + ".new").c_str(), kept.c_str());
}

int Flush(const char* name, int descriptor) {
    const auto flush = reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, name));
    const int result = flush(descriptor);
    if (result == 0) Keep(descriptor);
    return result;
}

}  // namespace

extern "C" {
int fsync(int descriptor) { return Flush("fsync", descriptor); }
int fdatasync(int descriptor) { return Flush("fdatasync", descriptor); }
/// All files below the folder, which is as much of the file system as matters.
int syncfs(int folder) {
    const int result = Flush("syncfs", folder);
    const std::filesystem::path own = "/proc/self/fd/" + std::to_string(folder);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(std::filesystem::read_symlink(own))) {
        const int file = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
        Keep(file);
        ::close(file);
    }
    return result;
}
}
