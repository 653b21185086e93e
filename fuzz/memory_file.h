#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

/// A file of the input's bytes, in memory, for readers that take a file by its name.
class CMemoryFile {
  public:
    CMemoryFile() : file_(::memfd_create("input", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(file_)) {}
    const std::string& Hold(const std::uint8_t* data, std::size_t size) const {
        if (::ftruncate(file_, 0) || ::pwrite(file_, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
        return path_;
    }

  private:
    int file_;
    std::string path_;
};
