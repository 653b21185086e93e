#pragma once

#include <string>

namespace CLI {
class App;
}

namespace ovix::app {

/// The options of a verb that writes something: where to, whether that may replace files, and whether what was done is
/// said as JSON.
class COutputArguments {
  public:
    /// `what` says what is written.
    void Add(CLI::App& verb, const char* what);

    /// As the user wrote it; "-" is the standard output.
    const std::string& File() const { return file_; }
    bool Overwrites() const { return overwrite_; }
    bool SaysJson() const { return json_; }

  private:
    std::string file_;
    bool overwrite_ = false;
    bool json_ = false;
};

}  // namespace ovix::app
