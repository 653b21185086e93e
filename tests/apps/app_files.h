#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/test_folder.h"

namespace ovix::test {

inline std::filesystem::path PathIn(const CTestFolder& folder, const char* name = "") {
    return folder.Path(name).GetUTF8();
}

inline std::string ContentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteContent(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// All names in the folder, hidden ones too.
inline std::vector<std::string> NamesIn(const CTestFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(PathIn(folder))) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace ovix::test
