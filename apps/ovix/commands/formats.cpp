#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "apps/ovix/commands/command.h"
#include "apps/ovix/synth/synth.h"
#include "apps/ovix/text/console.h"
#include "apps/ovix/text/text_table.h"
#include "measure/measure.h"

namespace ovix::app {

using measure::GuidText;
using measure::PixelTypeName;
using measure::UnitWords;

namespace {

/// The pixel type of the decoder whose frames begin with the header that `type` stands for alone; nothing for a type of
/// whole frames.
std::optional<GUID> TypeOfHeader(const std::string& filter, const GUID& type) {
    reduce::SFrameForm form;
    if (!reduce::GetFrameForm(CString(filter.c_str()), type, form) || form.wholeType == type) return {};
    return form.wholeType;
}

/// The name of an entry, and the file of the plug-in that it came from.
template <class Entry>
Json DescribeEntry(const Entry& entry) {
    const std::string origin = reduce::OriginOf(entry.create).GetUTF8();
    Json json = {{"name", entry.name.GetUTF8()}, {"plugin", !origin.empty()}};
    if (!origin.empty()) json["file"] = origin;
    return json;
}

constexpr const char* kElements[] = {"Int8",  "UInt8",  "Int16", "UInt16", "Int32",  "UInt32",
                                     "Int64", "UInt64", "Flt32", "Flt64",  "Opaque", "OpaqueWide"};

Json DescribeType(const GUID& id, const reduce::IFilter& filter, const std::string& decoder) {
    Json type = {{"name", PixelTypeName(id)}, {"guid", GuidText(id)}};
    SPixelType facts;
    if (GetPixelType(id, facts)) {
        type["bytesPerPixel"] = facts.bytesPerPixel;
        type["element"] = facts.type < std::size(kElements) ? kElements[facts.type] : "none";
        type["base"] = PixelTypeName(facts.baseType);
    }
    if (const auto whole = TypeOfHeader(decoder, id)) type["headerOf"] = PixelTypeName(*whole);
    type["time"] = filter.HasTime(id);
    type["frameCounter"] = filter.HasFrameCounter(id);
    return type;
}

Json DescribeDecoders() {
    Json decoders = Json::array();
    const auto* factory = reduce::filterFactory();
    for (u32 i = 0; i < factory->GetEntryCount(); ++i) {
        const auto& entry = factory->GetEntryAt(i);
        const auto filter = factory->Create(entry.name);
        const std::string name = entry.name.GetUTF8();
        Json types = Json::array();
        for (const GUID& id : entry.extra.pixelTypes) {
            if (filter) types.push_back(DescribeType(id, *filter, name));
        }
        decoders.push_back(DescribeEntry(entry));
        decoders.back().update({{"checksFrames", entry.extra.check != nullptr}, {"pixelTypes", std::move(types)}});
    }
    return decoders;
}

/// An array that holds one valid object of every registered class: what a converter offers on it is what it can offer.
void FillWithEverything(reduce::CReduceObjectArray& objects) {
    const auto* factory = reduce::reduceObjectFactory();
    for (u32 i = 0; i < factory->GetEntryCount(); ++i) {
        const auto object = objects.GetObjectOfType(factory->GetEntryAt(i).extra.typeID, -1, true);
        if (object) object->valid = true;
        if (const auto user = object.Cast<reduce::CRCalReduceObject>()) user->cal.SetPolynomial(0, 1, {0, 1});
    }
}

Json DescribeConverters() {
    reduce::CReduceObjectArray objects;
    FillWithEverything(objects);
    Json converters = Json::array();
    const auto* factory = reduce::converterFactory();
    for (u32 i = 0; i < factory->GetEntryCount(); ++i) {
        const auto& entry = factory->GetEntryAt(i);
        Json offers = Json::array();
        for (u32 base = Counts; base <= RGBAverage; ++base) {
            TArray<EUnit> units;
            if (!entry.extra.unitsFunc || !entry.extra.unitsFunc(units, EUnit{base}, objects) || !units.size())
                continue;
            Json words = Json::array();
            for (const EUnit unit : units) words.push_back(UnitWords(unit));
            offers.push_back({{"from", UnitWords(EUnit{base})}, {"to", std::move(words)}});
        }
        converters.push_back(DescribeEntry(entry));
        converters.back()["units"] = std::move(offers);
    }
    return converters;
}

Json PluginObjects() {
    const auto* factory = reduce::reduceObjectFactory();
    Json plugins = Json::array();
    for (u32 i = 0; i < factory->GetEntryCount(); ++i) {
        const Json entry = DescribeEntry(factory->GetEntryAt(i));
        if (entry["plugin"]) plugins.push_back({{"name", entry["name"]}, {"file", entry["file"]}});
    }
    return plugins;
}

Json DescribeSynthesis() {
    Json forms = Json::array();
    for (const SSynthFamily& family : SynthFamilies()) {
        for (const SSynthForm& form : family.forms()) {
            forms.push_back(
                {{"pixelType", PixelTypeName(form.type)}, {"form", form.form}, {"description", form.description}});
        }
    }
    return forms;
}

std::string YesOrNo(const Json& value) { return value.get<bool>() ? "yes" : "no"; }

std::string DecoderTable(const Json& decoders) {
    CTextTable table({{"Decoder"},
                      {"Pixel type"},
                      {"Bytes/pixel", CTextTable::Right},
                      {"Element"},
                      {"Base"},
                      {"Time"},
                      {"Counter"},
                      {"GUID"}});
    for (const Json& decoder : decoders) {
        std::string name = decoder["name"];
        if (decoder["plugin"]) name += " (plug-in)";
        for (const Json& type : decoder["pixelTypes"]) {
            std::string shown = type["name"];
            if (type.contains("headerOf")) shown = "header of " + type["headerOf"].get<std::string>();
            table.Row({std::exchange(name, ""), shown,
                       type.contains("bytesPerPixel") ? type["bytesPerPixel"].dump() : "", type.value("element", ""),
                       type.value("base", ""), YesOrNo(type["time"]), YesOrNo(type["frameCounter"]), type["guid"]});
        }
        if (!name.empty()) table.Row({name});
    }
    return table.Text();
}

std::string ConverterTable(const Json& converters) {
    CTextTable table({{"Converter"}, {"From"}, {"To"}});
    for (const Json& converter : converters) {
        std::string name = converter["name"];
        if (converter["plugin"]) name += " (plug-in)";
        for (const Json& offer : converter["units"]) {
            std::string words;
            for (const Json& word : offer["to"]) words += (words.empty() ? "" : ", ") + word.get<std::string>();
            table.Row({std::exchange(name, ""), offer["from"], words});
        }
        if (!name.empty()) table.Row({name});
    }
    return table.Text();
}

std::string SynthesisTable(const Json& forms) {
    CTextTable table({{"Can be made"}, {"Form"}, {"Description"}});
    std::string last;
    for (const Json& form : forms) {
        const std::string type = form["pixelType"];
        table.Row({type == last ? "" : type, form["form"], form["description"]});
        last = type;
    }
    return table.Text();
}

class CFormatsCommand final : public ICommand {
  public:
    const char* Verb() const override { return "formats"; }
    const char* Brief() const override { return "decoders, pixel types, converters and their units, plug-ins found"; }
    const char* Examples() const override { return "ovix formats\novix formats --json"; }
    void AddOptions(CLI::App& verb) override { verb.add_flag("--json", json_, "one JSON document instead of tables"); }
    EExit Run() override {
        const Json document = {{"schema", kSchemaVersion},
                               {"decoders", DescribeDecoders()},
                               {"converters", DescribeConverters()},
                               {"pluginObjects", PluginObjects()},
                               {"synthesis", DescribeSynthesis()}};
        if (json_) {
            PrintJson(document);
        } else {
            Print(DecoderTable(document["decoders"]) + '\n' + ConverterTable(document["converters"]) + '\n' +
                  SynthesisTable(document["synthesis"]) + PluginLines(document));
        }
        return ExitDone;
    }

  private:
    static std::string PluginLines(const Json& document) {
        CTextTable table({{"From a plug-in"}, {"Kind"}, {"File"}});
        bool any = false;
        for (const auto& [list, kind] : {std::pair{"decoders", "decoder"}, std::pair{"converters", "converter"},
                                         std::pair{"pluginObjects", "metadata object"}}) {
            for (const Json& entry : document[list]) {
                if (!entry.contains("file")) continue;
                table.Row({entry["name"], kind, entry["file"]});
                any = true;
            }
        }
        return any ? '\n' + table.Text() : "\nFrom plug-ins: nothing\n";
    }

    bool json_ = false;
};

}  // namespace

std::unique_ptr<ICommand> MakeFormatsCommand() { return std::make_unique<CFormatsCommand>(); }

}  // namespace ovix::app
