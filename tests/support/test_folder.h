#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

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

    std::filesystem::path At(const std::string& name = "") const { return folder_ / name; }
    CString Path(const char* name = "") const { return CString(At(name).c_str()); }
    std::filesystem::path Put(const std::string& name, const std::vector<u8>& bytes) const {
        std::ofstream(At(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return At(name);
    }
    std::vector<u8> Get(const std::string& name) const {
        std::ifstream file(At(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// All names in it, hidden ones too.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::filesystem::path folder_;
};

}  // namespace ovix::test
