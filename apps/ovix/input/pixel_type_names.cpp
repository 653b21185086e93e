#include "apps/ovix/input/pixel_type_names.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <vector>

#include "apps/ovix/cli/suggestion.h"
#include "apps/ovix/fault.h"
#include "core/core.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace {

std::optional<GUID> ParseGuid(std::string_view text) {
    if (text.starts_with('{') && text.ends_with('}')) text = text.substr(1, text.size() - 2);
    if (text.size() != 36) return {};
    u8 bytes[16];
    std::size_t at = 0;
    for (u8& byte : bytes) {
        if (at == 8 || at == 13 || at == 18 || at == 23) {
            if (text[at++] != '-') return {};
        }
        const char* digits = text.data() + at;
        if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) return {};
        at += 2;
    }
    GUID id{.data1 = LoadBig<u32>(bytes), .data2 = LoadBig<u16>(bytes + 4), .data3 = LoadBig<u16>(bytes + 6)};
    for (int i = 0; i < 8; ++i) id.data4[i] = bytes[8 + i];
    return id;
}

std::optional<GUID> FindByName(const std::string& name) {
    TArray<SPixelType> types;
    GetPixelTypes(types);
    const CString wanted(name.c_str());
    std::optional<GUID> found;
    for (const SPixelType& type : types) {
        if (!type.name.EqualsNoCase(wanted)) continue;
        // A generic format may bear the name of a camera's; the one with a decoder is meant.
        if (reduce::filterFactory()->IsPixelTypeHandled(type.id)) return type.id;
        if (!found) found = type.id;
    }
    return found;
}

std::vector<std::string> DecodedNames() {
    TArray<SPixelType> types;
    GetPixelTypes(types);
    std::vector<std::string> names;
    for (const SPixelType& type : types) {
        if (reduce::filterFactory()->IsPixelTypeHandled(type.id)) names.emplace_back(type.name.GetUTF8());
    }
    return names;
}

}  // namespace

std::string GuidText(const GUID& id) {
    std::string text = fmt::format("{{{:08X}-{:04X}-{:04X}-", id.data1, id.data2, id.data3);
    for (int i = 0; i < 8; ++i) text += fmt::format("{}{:02X}", i == 2 ? "-" : "", id.data4[i]);
    return text + '}';
}

std::string PixelTypeName(const GUID& id) {
    if (id == rootIRType) return "rootIRType";
    if (id == rootScreenType) return "rootScreenType";
    SPixelType facts;
    return GetPixelType(id, facts) ? std::string(facts.name.GetUTF8()) : GuidText(id);
}

GUID FindPixelType(const std::string& pixelType) {
    auto id = ParseGuid(pixelType);
    if (!id) id = FindByName(pixelType);
    if (!id)
        throw UsageFault("--pixel-type: there is no pixel type \"" + pixelType + "\"" +
                         DidYouMean(pixelType, DecodedNames()) + " (\"ovix formats\" lists them)");
    return *id;
}

SFrameFormat FindFormat(const std::string& pixelType, u16 width, u16 height) {
    const GUID id = FindPixelType(pixelType);
    const CString decoder = reduce::filterFactory()->GetPixelTypeHandler(id);
    if (decoder.IsEmpty())
        throw UsageFault("--pixel-type: no decoder takes frames of \"" + PixelTypeName(id) + "\"" +
                         DidYouMean(pixelType, DecodedNames()) + " (\"ovix formats\" lists those that one takes)");
    return {.filter = decoder.GetUTF8(),
            .pixelType = id,
            .pixelTypeName = PixelTypeName(id),
            .width = width,
            .height = height};
}

}  // namespace ovix::app
