#include "measure/archive/reference_text.h"

#include <bit>

#include "measure/text.h"

namespace ovix::measure {

namespace {

static_assert(std::endian::native == std::endian::little, "columns are written as they lie in memory");

std::string Base64(std::span<const std::byte> bytes) {
    constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](std::size_t at) { return at < bytes.size() ? std::to_integer<u32>(bytes[at]) : 0u; };
        const u32 three = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
        for (unsigned digit = 0; digit < 4; ++digit)
            text += i + digit > bytes.size() ? '=' : kDigits[three >> (18 - 6 * digit) & 63];
    }
    return text;
}

const char* TypeOf(const SPixelPlace& pixels) { return pixels.bigEndian ? ">u2" : "<u2"; }

std::string Attributes(const SFrameFormat& format, const std::string& quotedType) {
    return Say(",\"units\":\"1\",\"long_name\":\"counts as recorded\",\"width\":", format.width,
               ",\"height\":", format.height, ",\"pixel_type\":", quotedType);
}

}  // namespace

CReferenceText::CReferenceText() : text_("{\"version\":1,\"refs\":{\".zgroup\":\"{\\\"zarr_format\\\":2}\"") {}

std::string CReferenceText::Finish() && { return std::move(text_) + "}}\n"; }

std::string CReferenceText::Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const u8 code = static_cast<u8>(c);
        if (c == '"' || c == '\\')
            quoted += {'\\', c};
        else if (code < 0x20)
            quoted += "\\u" + Hex(code, 4);
        else
            quoted += c;
    }
    return quoted + '"';
}

void CReferenceText::Add(const std::string& key, const std::string& value) {
    text_ += ",\n" + Quoted(key) + ':' + value;
}

void CReferenceText::AddReference(const std::string& key, const std::string& url, u64 offset, u64 size) {
    Add(key, '[' + Quoted(url) + Say(",", offset, ",", size, "]"));
}

void CReferenceText::AddArray(const std::string& name, const std::string& shape, const std::string& chunks,
                              const std::string& type, const std::string& attributes) {
    Add(name + "/.zarray", Quoted(Say("{\"shape\":[", shape, "],\"chunks\":[", chunks, "],\"dtype\":", type,
                                      ",\"compressor\":null,\"filters\":null,\"fill_value\":null,\"order\":\"C\","
                                      "\"zarr_format\":2}")));
    Add(name + "/.zattrs", Quoted('{' + attributes + '}'));
}

void CReferenceText::AddCounts(u64 frames, const SFrameFormat& format, const SPixelPlace& pixels) {
    const std::string plane = Say(format.height, ",", format.width);
    AddArray("counts", Say(frames, ",", plane), "1," + plane, Quoted(TypeOf(pixels)),
             "\"_ARRAY_DIMENSIONS\":[\"time\",\"y\",\"x\"]" + Attributes(format, Quoted(format.pixelTypeName)));
}

void CReferenceText::AddFrames(u64 frames, u64 together, const SFrameFormat& format, const SPixelPlace& pixels,
                               u64 step) {
    const u64 behind = step - pixels.offset - u64{2} * format.PixelCount();
    std::string type = "[";
    if (pixels.offset) type += Say("[\"before\",\"|V", pixels.offset, "\"],");
    type += Say("[\"pixels\",\"", TypeOf(pixels), "\",[", format.height, ",", format.width, "]]");
    if (behind) type += Say(",[\"behind\",\"|V", behind, "\"]");
    AddArray("frames", Say(frames), Say(together), type + ']',
             "\"_ARRAY_DIMENSIONS\":[\"time\"]" + Attributes(format, Quoted(format.pixelTypeName)));
}

void CReferenceText::AddTime(std::span<const i64> times, bool timed) {
    const char* attributes = timed ? ",\"units\":\"nanoseconds since 1970-01-01\",\"calendar\":\"proleptic_gregorian\","
                                     "\"standard_name\":\"time\""
                                   : ",\"long_name\":\"number of the frame; frames carry no time\"";
    AddColumn("time", std::as_bytes(times), sizeof(i64), attributes);
}

void CReferenceText::AddColumn(const std::string& name, std::span<const std::byte> bytes, std::size_t width,
                               const std::string& attributes) {
    const std::string count = Say(bytes.size() / width);
    AddArray(name, count, count, Say("\"<i", width, "\""), "\"_ARRAY_DIMENSIONS\":[\"time\"]" + attributes);
    Add(name + "/0", "\"base64:" + Base64(bytes) + '"');
}

}  // namespace ovix::measure
