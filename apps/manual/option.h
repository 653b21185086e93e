#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// The verbs and options of the tool, and what is made of them: pages of a manual, completion for shells.
namespace ovix::app {

/// What a shell can offer behind an option.
struct SOptionValues {
    bool taken = false;                   ///< the option takes a value
    bool file = false;                    ///< which is the name of a file or a folder
    std::vector<std::string> words = {};  ///< which is one of these, where they can be listed
};

/// One option of a verb as a manual and a shell need it.
struct SOption {
    std::vector<std::string> names;  ///< with their dashes; none for a positional argument
    std::string type;                ///< of its value, as the help names it
    std::string help;
    std::string group;
    bool required = false;
    bool repeats = false;  ///< several may stand one behind the other
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

/// ovix.1: what the tool is, with all its verbs.
std::string ToolPage(const SVerb& tool, const std::vector<SVerb>& verbs, const std::string& version);
/// ovix-VERB.1.
std::string VerbPage(const SVerb& verb, const std::string& version);

std::string BashCompletion(const SVerb& tool, const std::vector<SVerb>& verbs);
std::string ZshCompletion(const SVerb& tool, const std::vector<SVerb>& verbs);
std::string FishCompletion(const SVerb& tool, const std::vector<SVerb>& verbs);

}  // namespace ovix::app
