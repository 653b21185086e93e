#pragma once

#include <span>
#include <string>
#include <utility>

#include "core/core.h"

namespace ovix::app {

/// A file that is read at any place, with 64-bit offsets. "-" is the standard input; what cannot be read at any place
/// (a pipe) is first copied to a temporary file without a name.
class CInputFile {
  public:
    /// Throws `CFault` (no input) for a file that is missing, no file, or not to be read.
    explicit CInputFile(std::string name);

    /// As the user wrote it.
    const std::string& Name() const { return name_; }
    u64 Size() const { return size_; }
    /// The number of bytes read: less than asked for only at the end of the file.
    std::size_t ReadAt(u64 offset, std::span<u8> bytes) const;

  private:
    /// Closed with its owner; -1 when the system gave none.
    class CDescriptor {
      public:
        explicit CDescriptor(int number) : number_(number) {}
        ~CDescriptor();
        CDescriptor(const CDescriptor&) = delete;
        CDescriptor& operator=(const CDescriptor&) = delete;
        void Swap(CDescriptor& other) { std::swap(number_, other.number_); }
        operator int() const { return number_; }

      private:
        int number_;
    };
    void CopyToTemporary();

    std::string name_;
    CDescriptor file_;
    u64 size_ = 0;
};

}  // namespace ovix::app
