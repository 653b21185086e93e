#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "core/string.h"

namespace ovix::test {

/// An empty folder on the disk that goes with its test.
class CTestFolder {
  public:
    CTestFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "ovix_test_XXXXXX").string();
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;
    ~CTestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    CString Path(const char* name = "") const { return CString((folder_ / name).c_str()); }

  private:
    std::filesystem::path folder_;
};

}  // namespace ovix::test
