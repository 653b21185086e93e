#pragma once

#include <string>

namespace ovix::app {

/// What comes through a pipe, in a temporary file without a name, so that it can be read at any place.
class CSpool {
  public:
    /// Copies all of a file; "-" is the standard input. Throws `CFault` when it cannot be read or there is no room.
    explicit CSpool(const std::string& file);
    ~CSpool();
    CSpool(const CSpool&) = delete;
    CSpool& operator=(const CSpool&) = delete;

    int Descriptor() const { return spool_; }
    const std::string& Name() const { return name_; }

  private:
    void Copy(int from);

    std::string name_;
    int spool_ = -1;
};

}  // namespace ovix::app
