#include "apps/ovix/commands/hexdump.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"
#include "apps/ovix/text/text_table.h"

namespace ovix::app {

namespace {

constexpr u64 kLongestField = 64;
constexpr std::size_t kBytesPerLine = 16;

Json Row(const char* kind, u64 offset, u64 size) { return {{"offset", offset}, {"size", size}, {"kind", kind}}; }

std::string HexDigits(std::span<const u8> bytes) {
    std::string digits;
    for (const u8 byte : bytes) digits += fmt::format("{:02x}", byte);
    return digits;
}

/// Fields, and the pixels where the decoder finds them; of a frame without a field, all bytes are pixels.
std::vector<Json> KnownRows(std::span<u8> frame, const measure::SFrameFormat& format) {
    const CString decoder(format.filter.c_str());
    const GUID& type = format.pixelType;
    const u32 size = static_cast<u32>(frame.size());
    if (format.filter.empty()) return {Row("pixels", 0, size)};
    reduce::SFrameFault fault;
    if (!reduce::CheckFrame(decoder, frame.data(), type, format.width, format.height, size, &fault))
        throw CFault({.offset = fault.offset, .expected = fault.expected.GetUTF8(), .found = fault.found.GetUTF8()});
    TArray<reduce::SFrameField> fields;
    if (!reduce::DescribeFrame(decoder, frame.data(), type, format.width, format.height, size, fields))
        throw CFault({.problem = fmt::format("the decoder \"{}\" does not describe its frames", format.filter)});
    std::vector<Json> rows;
    for (const reduce::SFrameField& field : fields) {
        Json row = Row("field", field.offset, field.size);
        row["field"] = field.name.GetUTF8();
        row["value"] = field.value.GetUTF8();
        rows.push_back(std::move(row));
    }
    void* pixels = nullptr;
    i32 stride = 0;
    const auto filter = reduce::filterFactory()->Create(decoder);
    if (filter->GetPixels(frame.data(), type, format.width, format.height, size, &pixels, stride)) {
        const auto offset = static_cast<u64>(static_cast<u8*>(pixels) - frame.data());
        rows.push_back(Row("pixels", offset, static_cast<u64>(stride) * format.height));
    } else if (rows.empty()) {
        rows.push_back(Row("pixels", 0, size));
    }
    return rows;
}

std::string Spaced(std::string_view digits) {
    std::string text;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        if (i) text += ' ';
        text += digits.substr(i, 2);
    }
    return text;
}

/// How many of the digits belong to bytes that are like the first.
std::size_t AlikeDigits(std::string_view digits) {
    std::size_t length = 2;
    while (length < digits.size() && digits.substr(length, 2) == digits.substr(0, 2)) length += 2;
    return length;
}

void AddOther(CTextTable& table, u64 offset, std::string_view digits) {
    while (!digits.empty()) {
        std::size_t length = AlikeDigits(digits);
        std::string text = fmt::format("{} × {}", digits.substr(0, 2), length / 2);
        if (length <= 2 * kBytesPerLine) {
            length = std::min(2 * kBytesPerLine, digits.size());
            text = Spaced(digits.substr(0, length));
        }
        table.Row({std::to_string(offset), text});
        digits.remove_prefix(length);
        offset += length / 2;
    }
}

void AddField(CTextTable& table, const Json& row) {
    const u64 offset = row["offset"];
    if (!row.contains("bytes")) {
        table.Row(
            {std::to_string(offset), fmt::format("({} bytes)", row["size"].get<u64>()), row["field"], row["value"]});
        return;
    }
    const std::string digits = row["bytes"];
    std::string name = row["field"], value = row["value"];
    for (std::size_t i = 0; i < digits.size(); i += 2 * kBytesPerLine) {
        table.Row({std::to_string(offset + i / 2), Spaced(digits.substr(i, 2 * kBytesPerLine)), std::exchange(name, ""),
                   std::exchange(value, "")});
    }
}

}  // namespace

Json HexdumpJson(std::span<u8> frame, const measure::SFrameFormat& format) {
    std::vector<Json> known = KnownRows(frame, format);
    std::stable_sort(known.begin(), known.end(), [](const Json& a, const Json& b) {
        return std::pair(a["offset"].get<u64>(), b["size"].get<u64>()) <
               std::pair(b["offset"].get<u64>(), a["size"].get<u64>());
    });
    Json rows = Json::array();
    u64 covered = 0;
    const auto add = [&](Json row) {
        const u64 offset = row["offset"], size = row["size"];
        if (row["kind"] == "other" || (row["kind"] == "field" && size <= kLongestField))
            row["bytes"] = HexDigits(frame.subspan(offset, size));
        covered = std::max(covered, offset + size);
        rows.push_back(std::move(row));
    };
    for (Json& row : known) {
        const u64 offset = row["offset"];
        if (offset > covered) add(Row("other", covered, offset - covered));
        add(std::move(row));
    }
    if (covered < frame.size()) add(Row("other", covered, frame.size() - covered));
    return rows;
}

std::string HexdumpTable(const Json& rows) {
    CTextTable table({{"Offset", CTextTable::Right}, {"Bytes"}, {"Field"}, {"Value"}});
    for (const Json& row : rows) {
        if (row["kind"] == "field")
            AddField(table, row);
        else if (row["kind"] == "other")
            AddOther(table, row["offset"], row["bytes"].get<std::string>());
        else
            table.Row({row["offset"].dump(), fmt::format("({} bytes)", row["size"].get<u64>()), "pixels"});
    }
    return table.Text();
}

}  // namespace ovix::app
