#include "apps/manual/option.h"

#include <fmt/format.h>

#include <algorithm>

namespace ovix::app {

namespace {

/// As text of a page: dashes that can be copied, and nothing that is taken for a request.
std::string Roff(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if (c == '\n')
            escaped += "\n.br\n";
        else
            escaped += c;
    }
    if (escaped.starts_with('.') || escaped.starts_with('\'')) escaped.insert(0, "\\&");
    return escaped;
}

std::string Head(const std::string& name, const std::string& brief, const std::string& version) {
    std::string title = name;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return fmt::format(".TH {} 1 \"\" \"ovix {}\" \"ovix\"\n.SH NAME\n{} \\- {}\n", Roff(title), version, Roff(name),
                       Roff(brief));
}

std::string Section(const char* title) { return fmt::format(".SH {}\n", title); }

/// "-o, --output FILE" in bold and italics.
std::string Label(const SOption& option) {
    std::string label;
    for (const std::string& name : option.names)
        label += (label.empty() ? "" : ", ") + fmt::format("\\fB{}\\fR", Roff(name));
    if (!option.type.empty()) label += (label.empty() ? "" : " ") + fmt::format("\\fI{}\\fR", Roff(option.type));
    return label;
}

std::string Synopsis(const SVerb& verb) {
    std::string text = Section("SYNOPSIS") + fmt::format(".B ovix {}\n[\\fIoptions\\fR]", Roff(verb.name));
    for (const SOption& option : verb.options) {
        if (option.IsPositional())
            text += " " + Label(option) + (option.repeats ? "..." : "");
        else if (option.required)
            text += " \\fB" + Roff(option.names.back()) + "\\fR \\fI" + Roff(option.type) + "\\fR";
    }
    return text + "\n";
}

/// The options by their groups, in the order of the help.
std::string Options(const SVerb& verb) {
    std::vector<std::string> groups;
    for (const SOption& option : verb.options) {
        if (std::find(groups.begin(), groups.end(), option.group) == groups.end()) groups.push_back(option.group);
    }
    std::string text = Section("OPTIONS");
    for (const std::string& group : groups) {
        if (groups.size() > 1) text += fmt::format(".SS {}\n", Roff(group));
        for (const SOption& option : verb.options) {
            if (option.group == group) text += fmt::format(".TP\n{}\n{}\n", Label(option), Roff(option.help));
        }
    }
    return text;
}

bool Takes(const SVerb& verb, const char* name) {
    return std::any_of(verb.options.begin(), verb.options.end(), [&](const SOption& option) {
        return std::find(option.names.begin(), option.names.end(), name) != option.names.end();
    });
}

std::string Units(const SVerb& verb) {
    const bool scene = Takes(verb, "--reflected-temp"), scale = Takes(verb, "--scale");
    if (!scene && !scale) return "";
    std::string text = Section("UNITS");
    if (scale)
        text +=
            "Temperatures are in degrees Celsius unless \\fB\\-\\-scale\\fR says otherwise: C, F, K or R. The standard "
            "deviation of "
            "temperatures is a difference and has no zero.\n";
    if (Takes(verb, "--unit"))
        text +=
            ".PP\nCounts are what the detector gave, corrected where tables are given; a signal is counts without what "
            "the "
            "scene adds; radiance is in W/(cm\\(S2 sr).\n";
    if (scene)
        text +=
            ".PP\nTemperatures of the scene bear their scale: 20C, 68F, 293.15K, 527.67R. Distances are in metres; "
            "emissivity, transmissions and humidity are shares of 1.\n";
    return text;
}

std::string Examples(const std::vector<std::string>& examples) {
    if (examples.empty()) return "";
    std::string text = Section("EXAMPLES") + ".nf\n";
    for (const std::string& example : examples) text += Roff(example) + "\n";
    return text + ".fi\n";
}

std::string ExitStatus() {
    constexpr std::pair<const char*, const char*> kStates[] = {
        {"0", "Done."},
        {"1", "The data would not do."},
        {"2", "Wrong usage."},
        {"3", "Done, but frames were skipped, or the source is damaged."},
        {"4", "A file is missing, unreadable, unwritable or of no known format."},
        {"130", "Interrupted."}};
    std::string text = Section("EXIT STATUS");
    for (const auto& [number, meaning] : kStates) text += fmt::format(".TP\n.B {}\n{}\n", number, meaning);
    return text + ".PP\nOne line on standard error says file, frame, offset, what was expected and what was found.\n";
}

}  // namespace

std::string ToolPage(const SVerb& tool, const std::vector<SVerb>& verbs, const std::string& version) {
    std::string text =
        Head("ovix", tool.brief, version) + Section("SYNOPSIS") +
        ".B ovix\n\\fIverb\\fR [\\fIoptions\\fR] [\\fIFILE\\fR]\n.br\n.B ovix\n\\fIFILE\\fR\n" +
        Section("DESCRIPTION") +
        "From the frames of thermal cameras to measurements: recordings, dumps of raw frames, plain counts and "
        "pipes are read, corrected and converted, with a status for every pixel. \\fBovix\\fR \\fIFILE\\fR is "
        "\\fBovix info\\fR \\fIFILE\\fR. Options may stand anywhere.\n" +
        Section("VERBS");
    for (const SVerb& verb : verbs)
        text += fmt::format(".TP\n.BR ovix\\-{} (1)\n{}\n", Roff(verb.name), Roff(verb.brief));
    text += Options(tool) + Examples(tool.examples) + ExitStatus() + Section("SEE ALSO");
    for (const SVerb& verb : verbs)
        text += fmt::format(".BR ovix\\-{} (1){}\n", Roff(verb.name), &verb == &verbs.back() ? "" : ",");
    return text;
}

std::string VerbPage(const SVerb& verb, const std::string& version) {
    return Head("ovix-" + verb.name, verb.brief, version) + Synopsis(verb) + Options(verb) + Units(verb) +
           Examples(verb.examples) + ExitStatus() + Section("SEE ALSO") + ".BR ovix (1)\n";
}

}  // namespace ovix::app
