#include "apps/manual/option.h"

#include <algorithm>
#include <sstream>

#include "apps/ovix/output/palette.h"
#include "apps/ovix/synth/synth.h"
#include "measure/measure.h"

namespace ovix::app {

namespace {

using Words = std::vector<std::string>;

Words PixelTypeWords() {
    TArray<SPixelType> types;
    GetPixelTypes(types);
    Words words{"counts", "counts-be", "auto"};
    for (const SPixelType& type : types) {
        if (!reduce::filterFactory()->GetPixelTypeHandler(type.id).IsEmpty()) words.push_back(type.name.GetUTF8());
    }
    return words;
}

Words FamilyWords() {
    TArray<CString> names;
    reduce::filterFactory()->GetNames(names);
    Words words;
    for (const CString& name : names) words.push_back(name.GetUTF8());
    return words;
}

Words PaletteWords() {
    Words words;
    for (const SPalette& palette : Palettes()) words.push_back(palette.name);
    return words;
}

/// The alternatives of a type such as "stop|skip" or "LO,HI|off": those that are words and no placeholders.
Words Alternatives(const std::string& type) {
    Words words;
    std::istringstream stream(type);
    for (std::string word; std::getline(stream, word, '|');) {
        const bool placeholder =
            word.size() > 1 && std::none_of(word.begin(), word.end(), [](char c) { return c >= 'a' && c <= 'z'; });
        if (!placeholder && word.find('.') == std::string::npos) words.push_back(word);
    }
    return type.find('|') == std::string::npos ? Words() : words;
}

SOptionValues ValuesOf(const CLI::Option& option, const std::string& type) {
    SOptionValues values{.taken = option.get_items_expected_max() > 0};
    const std::string& name = option.get_single_name();
    if (!values.taken) return values;
    values.file = type == "FILE" || type == "FOLDER" || type == "STEM" || !option.nonpositional();
    values.words = name == "pixel-type" ? PixelTypeWords()
                   : name == "family"   ? FamilyWords()
                   : name == "palette"  ? PaletteWords()
                   : name == "unit"
                       ? Words{"counts", "signal", "radiance", "temperature", "red", "green", "blue", "average"}
                       : Alternatives(type);
    return values;
}

SOption OptionOf(const CLI::Option& option) {
    SOption made{.names = {},
                 .type = option.get_items_expected_max() > 0 ? option.get_type_name() : "",
                 .help = option.get_description(),
                 .group = option.get_group(),
                 .required = option.get_required(),
                 .repeats = option.get_items_expected_max() > 1,
                 .values = {}};
    for (const std::string& name : option.get_snames()) made.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) made.names.push_back("--" + name);
    if (made.IsPositional()) made.type = option.get_single_name();
    made.values = ValuesOf(option, made.type);
    return made;
}

/// The lines behind "Examples:" of a help.
Words ExamplesOf(const std::string& footer) {
    Words examples;
    std::istringstream stream(footer);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t start = line.find_first_not_of(' ');
        if (start != std::string::npos && line.compare(start, 5, "ovix ") == 0) examples.push_back(line.substr(start));
    }
    return examples;
}

}  // namespace

SVerb VerbOf(const CLI::App& app) {
    SVerb verb{.name = app.get_name(),
               .brief = app.get_description(),
               .options = {},
               .examples = ExamplesOf(app.get_footer())};
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) verb.options.push_back(OptionOf(*option));
    }
    return verb;
}

std::vector<SVerb> VerbsOf(const CLI::App& tool) {
    std::vector<SVerb> verbs;
    for (const CLI::App* verb : tool.get_subcommands([](const CLI::App* app) { return !app->get_group().empty(); }))
        verbs.push_back(VerbOf(*verb));
    return verbs;
}

}  // namespace ovix::app
