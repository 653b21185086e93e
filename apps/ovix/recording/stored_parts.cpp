#include "apps/ovix/recording/stored_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "apps/ovix/input/pixel_type_names.h"

namespace ovix::app {

namespace {

using enum SStoredPart::EKind;

constexpr SStoredPart kBlockHeader[] = {
    {0, 32, "name", Text}, {32, 16, "type id", Id}, {48, 4, "version", Hex}, {52, 1, "preset"},
    {53, 8, "frame"},      {61, 4, "flags"},        {65, 8, "size"},         {73, 4, "CRC-32", Hex},
};

constexpr SStoredPart kPixelsRecord[] = {
    {0, 4, "size"},
    {4, 4, "version", Hex},
    {8, 4, "second size"},
    {12, 16, "pixel type", Id},
    {28, 2, "bytes per pixel"},
    {30, 2, "width"},
    {32, 2, "height"},
    {34, 2, "width of a frame"},
    {36, 2, "height of a frame"},
    {38, 2, "width of a packet"},
    {40, 2, "height of a packet"},
    {42, 2, "third packet value"},
    {44, 4, "frame size"},
    {48, 4, "second frame size"},
    {52, 76, "reserved bytes", Bytes},
    {144, 4, "use of frame block 0"},
    {176, 4, "use of frame block 1"},
    {208, 4, "use of frame block 2"},
    {240, 4, "use of frame block 3"},
    {272, 4, "use of frame block 4"},
    {304, 4, "use of frame block 5"},
    {336, 4, "use of frame block 6"},
    {368, 4, "use of frame block 7"},
    {384, 128, "reserved bytes", Bytes},
};

u64 LittleNumber(const u8* bytes, u32 size) {
    u64 number = 0;
    for (u32 i = size; i-- > 0;) number = number << 8 | bytes[i];
    return number;
}

std::string PartText(const SStoredPart& part, const u8* bytes) {
    switch (part.kind) {
        case Number:
            return fmt::format("{}", LittleNumber(bytes, part.size));
        case Hex:
            return fmt::format("0x{:08X}", LittleNumber(bytes, part.size));
        case Id:
            return GuidText(LoadGuid(bytes));
        case Text:
        case Bytes:
            break;
    }
    const u8* end = bytes + part.size;
    while (end != bytes && end[-1] == 0) --end;
    std::string text = part.kind == Text ? "\"" : "";
    for (const u8* at = bytes; at != end; ++at) {
        const bool plain = part.kind == Text && *at >= ' ' && *at < 0x7F;
        text += plain ? std::string(1, static_cast<char>(*at)) : fmt::format("\\x{:02X}", *at);
    }
    if (part.kind == Text) return text + '"';
    return text.empty() ? "zeros" : text;
}

}  // namespace

std::span<const SStoredPart> BlockHeaderParts() { return kBlockHeader; }
std::span<const SStoredPart> PixelsRecordParts() { return kPixelsRecord; }

void CompareParts(std::span<const SStoredPart> parts, const u8* expected, const u8* found,
                  const std::function<void(const SStoredPart&, std::string, std::string)>& report) {
    for (const SStoredPart& part : parts) {
        const u8* wanted = expected + part.offset;
        const u8* there = found + part.offset;
        if (std::memcmp(wanted, there, part.size) != 0) report(part, PartText(part, wanted), PartText(part, there));
    }
}

}  // namespace ovix::app
