#include "apps/manual/option.h"

#include <fmt/format.h>

namespace ovix::app {

namespace {

/// With a backslash before each of the characters.
std::string Escaped(const std::string& text, std::string_view special) {
    std::string escaped;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) escaped += '\\';
        escaped += c;
    }
    return escaped;
}

/// Inside of single quotes of a POSIX shell.
std::string InQuotes(const std::string& text) {
    std::string quoted;
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted;
}

std::string Joined(const std::vector<std::string>& words, const char* between) {
    return fmt::format("{}", fmt::join(words, between));
}

constexpr const char* kBashHead = R"bash(# bash completion of ovix, made of its options

_ovix_offer() {
    local word
    while IFS= read -r word; do
        [[ ${word,,} == "${typed,,}"* ]] && COMPREPLY+=("$(printf %q "$word")")
    done
}

_ovix_files() {
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$typed")
}

_ovix() {
    local typed=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} verb= word
    typed=${typed#[\"\']}
    typed=${typed//\\/}
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
)bash";

void AddBashVerb(std::string& text, const SVerb& verb) {
    std::string all;
    for (const SOption& option : verb.options) {
        for (const std::string& name : option.names) all += name + '\n';
        if (option.IsPositional() || !option.values.taken) continue;
        text += fmt::format("        \"{} {}\")", verb.name,
                            Joined(option.names, fmt::format("\" | \"{} ", verb.name).c_str()));
        if (!option.values.words.empty())
            text += fmt::format(" _ovix_offer <<'END'\n{}\nEND\n            return ;;\n",
                                Joined(option.values.words, "\n"));
        else
            text += option.values.file ? " _ovix_files; return ;;\n" : " return ;;\n";
    }
    text +=
        fmt::format("        \"{} \"*)\n            [[ $typed == -* ]] && _ovix_offer <<'END'\n{}END\n            ;;\n",
                    verb.name, all);
}

}  // namespace

std::string BashCompletion(const SVerb& tool, const std::vector<SVerb>& verbs) {
    std::vector<std::string> names;
    names.reserve(verbs.size());
    for (const SVerb& verb : verbs) names.push_back(verb.name);
    std::string text = kBashHead;
    text += fmt::format("            {}) verb=$word; break ;;\n        esac\n    done\n    case \"$verb $before\" in\n",
                        Joined(names, " | "));
    for (const SVerb& verb : verbs) AddBashVerb(text, verb);
    SVerb none = tool;
    none.name.clear();
    AddBashVerb(text, none);
    text += fmt::format(
        "    esac\n    [[ $typed == -* ]] && return\n    _ovix_files\n    [[ $verb ]] || _ovix_offer "
        "<<'END'\n{}\nEND\n}}\n\n"
        "complete -F _ovix ovix\n",
        Joined(names, "\n"));
    return text;
}

namespace {

/// One argument of `_arguments`.
std::string ZshOption(const SOption& option) {
    std::vector<std::string> words;
    words.reserve(option.values.words.size());
    for (const std::string& word : option.values.words) words.push_back(Escaped(word, " ()\\:"));
    const std::string action = !words.empty() ? "(" + Joined(words, " ") + ")" : option.values.file ? "_files" : " ";
    const std::string value = option.values.taken ? ":" + Escaped(option.type, ":") + ":" + action : "";
    if (option.IsPositional()) return fmt::format(" \\\n            '*{}'", InQuotes(value));
    std::string text;
    for (const std::string& name : option.names)
        text +=
            fmt::format(" \\\n            '*{}[{}]{}'", name, InQuotes(Escaped(option.help, "[]:\\")), InQuotes(value));
    return text;
}

std::string ZshArguments(const SVerb& verb) {
    std::string text = "_arguments -s";
    for (const SOption& option : verb.options) text += ZshOption(option);
    return text;
}

}  // namespace

std::string ZshCompletion(const SVerb& tool, const std::vector<SVerb>& verbs) {
    std::string text =
        "#compdef ovix\n# zsh completion of ovix, made of its options\n\n_ovix() {\n    local -a verbs=(\n";
    for (const SVerb& verb : verbs) text += fmt::format("        '{}:{}'\n", verb.name, InQuotes(verb.brief));
    text +=
        "    )\n    if (( CURRENT == 2 )); then\n        [[ $words[2] == -* ]] || { _describe verb verbs; _files; "
        "return; }\n    fi\n    case $words[2] in\n";
    for (const SVerb& verb : verbs)
        text += fmt::format("        {})\n            shift words\n            (( CURRENT-- ))\n            {} ;;\n",
                            verb.name, ZshArguments(verb));
    return text + fmt::format("        *)\n            {} ;;\n    esac\n}}\n\n_ovix \"$@\"\n", ZshArguments(tool));
}

namespace {

std::string FishText(const std::string& text) { return "'" + Escaped(text, "'\\") + "'"; }

std::string FishOption(const std::string& when, const SOption& option) {
    if (option.IsPositional()) return "";
    std::string text = "complete -c ovix -n " + when;
    for (const std::string& name : option.names)
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    std::vector<std::string> words;
    words.reserve(option.values.words.size());
    for (const std::string& word : option.values.words) words.push_back(FishText(word));
    if (option.values.taken) text += option.values.file && words.empty() ? " -r -F" : " -x";
    if (!words.empty()) text += " -a " + FishText(Joined(words, " "));
    return text + " -d " + FishText(option.help) + "\n";
}

}  // namespace

std::string FishCompletion(const SVerb& tool, const std::vector<SVerb>& verbs) {
    std::string text = "# fish completion of ovix, made of its options\n";
    for (const SOption& option : tool.options) text += FishOption("__fish_use_subcommand", option);
    for (const SVerb& verb : verbs) {
        text += fmt::format("complete -c ovix -n __fish_use_subcommand -a {} -d {}\n", verb.name, FishText(verb.brief));
        for (const SOption& option : verb.options)
            text += FishOption(FishText("__fish_seen_subcommand_from " + verb.name), option);
    }
    return text;
}

}  // namespace ovix::app
