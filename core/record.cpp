#include "core/record.h"

#include <charconv>
#include <cstring>

#include "core/bytes.h"
#include "core/date_time.h"
#include "core/guid.h"

namespace ovix {

namespace {

u64 Unsigned(const u8* bytes, u32 size) {
    u64 number = 0;
    for (u32 i = size; i-- > 0;) number = number << 8 | bytes[i];
    return number;
}

i64 WithSign(u64 number, u32 size) {
    const u32 unused = 64 - 8 * size;
    return static_cast<i64>(number << unused) >> unused;
}

template <class V>
std::string Shortest(V value) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

void AddHex(std::string& text, u64 number, u32 digits) {
    while (digits--) text += "0123456789ABCDEF"[number >> (4 * digits) & 15];
}

std::string IdText(const GUID& id) {
    std::string text;
    AddHex(text += '{', id.data1, 8);
    AddHex(text += '-', id.data2, 4);
    AddHex(text += '-', id.data3, 4);
    for (int i = 0; i < 8; ++i) {
        if (i == 0 || i == 2) text += '-';
        AddHex(text, id.data4[i], 2);
    }
    return text += '}';
}

/// Bytes that are no plain characters as escapes, so that no text from a file reaches a terminal as it is.
void AddEscaped(std::string& text, const u8* bytes, u32 size, bool isText) {
    while (size && bytes[size - 1] == 0) --size;
    for (const u8* at = bytes; at != bytes + size; ++at) {
        if (isText && *at >= ' ' && *at < 0x7F)
            text += static_cast<char>(*at);
        else
            AddHex(text += "\\x", *at, 2);
    }
}

std::string TimeText(i64 ticks) {
    CDateTime time;
    time.SetTimestamp(ticks);
    return time.Format(L"%Y-%m-%dT%H:%M:%S.%fZ").GetUTF8();
}

void AddParts(std::vector<SStoredPart>& parts, StoredLayout layout, u32 at, const std::string& owner) {
    for (const SStoredField& field : layout) {
        if (field.parts.empty()) parts.push_back({at + field.offset, field.size, field.name + owner, field.kind});
        for (u32 i = 0; i < field.count && !field.parts.empty(); ++i) {
            const std::string number = field.count > 1 ? ' ' + std::to_string(i) : std::string();
            AddParts(parts, field.parts, at + field.offset + i * (field.size / field.count),
                     std::string(" of ").append(field.name).append(number).append(owner));
        }
    }
}

}  // namespace

std::string SStoredPart::Text(const u8* record) const {
    const u8* bytes = record + offset;
    std::string text;
    switch (kind) {
        case EStored::Number:
            return Shortest(Unsigned(bytes, size));
        case EStored::Signed:
            return Shortest(WithSign(Unsigned(bytes, size), size));
        case EStored::Real:
            return size == sizeof(float) ? Shortest(LoadLittle<float>(bytes)) : Shortest(LoadLittle<double>(bytes));
        case EStored::Flag:
            return *bytes ? "set" : "not set";
        case EStored::Hex:
            AddHex(text += "0x", Unsigned(bytes, size), 8);
            return text;
        case EStored::Text:
            AddEscaped(text += '"', bytes, size, true);
            return text += '"';
        case EStored::Id:
            return IdText(LoadGuid(bytes));
        case EStored::Time:
            return TimeText(LoadLittle<i64>(bytes));
        case EStored::Bytes:
            break;
    }
    AddEscaped(text, bytes, size, false);
    return text.empty() ? "zeros" : text;
}

std::vector<SStoredPart> StoredParts(StoredLayout layout) {
    std::vector<SStoredPart> parts;
    AddParts(parts, layout, 0, "");
    return parts;
}

std::vector<SStoredPart> DifferingParts(StoredLayout layout, const u8* a, const u8* b) {
    std::vector<SStoredPart> parts = StoredParts(layout);
    std::erase_if(
        parts, [&](const SStoredPart& part) { return std::memcmp(a + part.offset, b + part.offset, part.size) == 0; });
    return parts;
}

bool ReadRecord(IFile& file, std::span<u8> record, u32 versionLimit) {
    const u32 size = static_cast<u32>(record.size());
    return file.ReadBytes(record.data(), size) && LoadLittle<u32>(record.data()) == size &&
           LoadLittle<u32>(record.data() + 4) < versionLimit;
}

void StartRecord(std::span<u8> record, u32 version) {
    std::fill(record.begin(), record.end(), u8{0});
    StoreLittle(record.data(), static_cast<u32>(record.size()));
    StoreLittle(record.data() + 4, version);
}

}  // namespace ovix
