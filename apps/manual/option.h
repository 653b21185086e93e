#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ovix::app {

/// What a shell can offer behind an option.
struct SOptionValues {
    bool taken = false;                   ///< the option takes a value
    bool file = false;                    ///< which is the name of a file or a folder
    std::vector<std::string> words = {};  ///< which is one of these, where they can be told
};

/// One option of a verb as a manual and a shell need it.
struct SOption {
    std::vector<std::string> names;  ///< with their dashes; none for a positional argument
    std::string type;                ///< of its value, as the help names it
    std::string help;
    std::string group;
    bool required = false;
    SOptionValues values;

    bool IsPositional() const { return names.empty(); }
};

/// A verb, or the tool itself.
struct SVerb {
    std::string name;
    std::string brief;
    std::vector<SOption> options;
    std::vector<std::string> examples;
};

SVerb VerbOf(const CLI::App& app);
/// In the order of the help.
std::vector<SVerb> VerbsOf(const CLI::App& tool);

}  // namespace ovix::app
