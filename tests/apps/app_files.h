#pragma once

#include "apps/ovix/facts/error_json.h"
#include "core/bytes.h"
#include "support/test_folder.h"

namespace ovix::test {

inline std::string ReadText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The elements of an array file behind its header.
template <class T>
std::vector<T> ReadArray(const std::filesystem::path& path) {
    const std::string bytes = ReadText(path);
    if (bytes.size() < 10) return {};
    const std::size_t start = 10u + LoadLittle<u16>(reinterpret_cast<const u8*>(bytes.data()) + 8);
    std::vector<T> values((bytes.size() - start) / sizeof(T));
    std::memcpy(values.data(), bytes.data() + start, values.size() * sizeof(T));
    return values;
}

inline void WriteText(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// What the tool would leave with after an action that must be refused, and the line that it would say.
inline int ExitOf(const auto& action, std::string* line = nullptr) {
    try {
        action();
        return app::ExitDone;
    } catch (const std::exception&) {
        const app::CFault fault = app::CurrentFault();
        if (line) *line = fault.what();
        return fault.Exit();
    }
}

}  // namespace ovix::test
