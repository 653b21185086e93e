#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/ovix/output/output_file.h"
#include "reduce/reduce.h"

namespace ovix::app {

/// The tables of a correction as files of one stem: STEM.mvg, .mvo and .mvb, those that there are.
class CTableFiles {
  public:
    /// Writes them beside their places. Throws `CFault`, and leaves nothing, when one cannot be written.
    CTableFiles(const reduce::CCorrectionReduceObject& tables, const std::string& stem, bool overwrite);

    /// Puts all of them into their places.
    void Commit();

  private:
    std::vector<std::unique_ptr<COutputFile>> files_;
};

}  // namespace ovix::app
