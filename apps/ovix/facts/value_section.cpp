#include "apps/ovix/facts/value_section.h"

#include <fmt/format.h>

#include "apps/ovix/text/text_table.h"

namespace ovix::app {

namespace {

/// "reflectedTemperatureKelvin" as "reflected temperature", "K".
std::pair<std::string, std::string> Words(const std::string& key) {
    static constexpr std::pair<std::string_view, const char*> kUnits[] = {{"Kelvin", "K"},      {"Celsius", "°C"},
                                                                          {"Metres", "m"},      {"Micrometres", "µm"},
                                                                          {"Counts", "counts"}, {"Seconds", "s"}};
    std::string name = key;
    std::string unit;
    for (const auto& [ending, symbol] : kUnits) {
        if (!name.ends_with(ending)) continue;
        name.resize(name.size() - ending.size());
        unit = symbol;
    }
    std::string words;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool capital = name[i] >= 'A' && name[i] <= 'Z';
        const bool startsWord = capital && i + 1 < name.size() && name[i + 1] >= 'a';  // not the R of "planckR"
        if (capital && !words.empty()) words += ' ';
        words += startsWord ? static_cast<char>(name[i] + 32) : name[i];
    }
    return {words, unit};
}

}  // namespace

std::string ShownJson(const Json& value) {
    if (value.is_null()) return "none";
    if (value.is_string()) return value;
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_number_float()) return fmt::format("{}", value.get<double>());
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const Json& item : value) list += (list.empty() ? "" : ", ") + ShownJson(item);
    return list;
}

std::string ValueSection(const char* title, const Json& values) {
    if (values.is_null()) return {};
    CTextTable table({{""}, {"", CTextTable::Right}, {""}});
    for (const auto& [key, value] : values.items()) {
        const auto [words, unit] = Words(key);
        table.Row({"  " + words, ShownJson(value), unit});
    }
    return fmt::format("\n{}\n{}", title, table.Text());
}

}  // namespace ovix::app
