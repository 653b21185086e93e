// Writes the manual of the tool and its completion for shells to a folder, laid out as below /usr/share.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "apps/manual/option.h"
#include "apps/ovix/command_line.h"

namespace {

void Put(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void WriteAll(const std::filesystem::path& folder, const CLI::App& tree) {
    using namespace ovix::app;
    const SVerb tool = VerbOf(tree);
    const std::vector<SVerb> verbs = VerbsOf(tree);
    Put(folder / "man/man1/ovix.1", ToolPage(tool, verbs, OVIX_VERSION));
    for (const SVerb& verb : verbs) Put(folder / ("man/man1/ovix-" + verb.name + ".1"), VerbPage(verb, OVIX_VERSION));
    Put(folder / "bash-completion/completions/ovix", BashCompletion(tool, verbs));
    Put(folder / "zsh/_ovix", ZshCompletion(tool, verbs));
    Put(folder / "fish/vendor_completions.d/ovix.fish", FishCompletion(tool, verbs));
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: ovix_manual FOLDER\n");
        return 2;
    }
    try {
        ovix::app::WithCommandTree([&](const CLI::App& tree) { WriteAll(arguments[1], tree); });
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ovix_manual: %s\n", error.what());
        return 1;
    }
    return 0;
}
