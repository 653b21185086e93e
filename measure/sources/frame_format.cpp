#include "measure/sources/frame_format.h"

#include <charconv>
#include <optional>
#include <vector>

#include "measure/error.h"
#include "measure/nearest_word.h"
#include "measure/text.h"
#include "reduce/reduce.h"

namespace ovix::measure {

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

std::vector<SPixelType> AllTypes() {
    TArray<SPixelType> types;
    GetPixelTypes(types);
    return {types.data(), types.data() + types.size()};
}

/// Pixels one behind the other, which no decoder need take apart.
constexpr std::pair<GUID, const char*> kPlainTypes[] = {{rootIRType, "counts"}, {reduce::rootRGB24Type, "RGB24"}};

std::optional<GUID> FindByName(const std::string& name) {
    const CString wanted(name.c_str());
    std::optional<GUID> found;
    for (const SPixelType& type : AllTypes()) {
        if (!type.name.EqualsNoCase(wanted)) continue;
        // A generic format may bear the name of a camera's; the one with a decoder is meant.
        if (reduce::filterFactory()->IsPixelTypeHandled(type.id)) return type.id;
        if (!found) found = type.id;
    }
    return found;
}

/// The name of a type with a decoder that is not far from the text.
std::string AdviceFor(const std::string& text) {
    std::vector<std::string> names;
    for (const SPixelType& type : AllTypes()) {
        if (reduce::filterFactory()->IsPixelTypeHandled(type.id)) names.emplace_back(type.name.GetUTF8());
    }
    const std::string nearest = NearestWord(text, names);
    return nearest.empty() ? "" : "did you mean \"" + nearest + "\"?";
}

}  // namespace

std::string GuidText(const GUID& id) {
    std::string text = Say("{", Hex(id.data1, 8), "-", Hex(id.data2, 4), "-", Hex(id.data3, 4), "-");
    for (int i = 0; i < 8; ++i) text += Say(i == 2 ? "-" : "", Hex(id.data4[i], 2));
    return text + '}';
}

std::string PixelTypeName(const GUID& id) {
    if (id == rootIRType) return "rootIRType";
    if (id == rootScreenType) return "rootScreenType";
    SPixelType facts;
    return GetPixelType(id, facts) ? std::string(facts.name.GetUTF8()) : GuidText(id);
}

SFrameFormat FormatOf(const GUID& id, u16 width, u16 height, const std::string& asked) {
    for (const auto& [plain, name] : kPlainTypes) {
        if (id == plain)
            return {.filter = {}, .pixelType = id, .pixelTypeName = name, .width = width, .height = height};
    }
    const CString decoder = reduce::filterFactory()->GetPixelTypeHandler(id);
    if (decoder.IsEmpty())
        throw CError({.id = EError::NoDecoder,
                      .problem = "no decoder takes frames of \"" + PixelTypeName(id) + "\"",
                      .advice = AdviceFor(asked)});
    return {.filter = decoder.GetUTF8(),
            .pixelType = id,
            .pixelTypeName = PixelTypeName(id),
            .width = width,
            .height = height};
}

GUID FindPixelType(const std::string& pixelType) {
    auto id = ParseGuid(pixelType);
    for (const auto& [plain, name] : kPlainTypes) {
        if (!id && CString(name).EqualsNoCase(CString(pixelType.c_str()))) id = plain;
    }
    if (!id) id = FindByName(pixelType);
    if (!id)
        throw CError({.id = EError::WrongArgument,
                      .problem = "there is no pixel type \"" + pixelType + "\"",
                      .advice = AdviceFor(pixelType)});
    return *id;
}

SFrameFormat FindFormat(const std::string& pixelType, u16 width, u16 height) {
    return FormatOf(FindPixelType(pixelType), width, height, pixelType);
}

}  // namespace ovix::measure
