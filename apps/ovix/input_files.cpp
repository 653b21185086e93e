#include "apps/ovix/input_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "apps/ovix/fault.h"

namespace ovix::app {

namespace {

using Identity = std::pair<dev_t, ino_t>;

std::vector<Identity> inputs;  ///< of this call of the tool; by one thread

std::optional<Identity> IdentityOf(const std::filesystem::path& file) {
    struct stat facts {};
    const int known = file == "-" ? ::fstat(STDIN_FILENO, &facts) : ::stat(file.c_str(), &facts);
    if (known != 0 || !S_ISREG(facts.st_mode)) return {};
    return Identity{facts.st_dev, facts.st_ino};
}

}  // namespace

void RememberInput(const std::filesystem::path& file) {
    if (const auto identity = IdentityOf(file)) inputs.push_back(*identity);
}

const std::filesystem::path& RequireNoInput(const std::filesystem::path& output) {
    const auto identity = output == "-" ? std::nullopt : IdentityOf(output);
    if (identity && std::ranges::find(inputs, *identity) != inputs.end())
        throw UsageFault(output.string() + " is the input");
    return output;
}

}  // namespace ovix::app
