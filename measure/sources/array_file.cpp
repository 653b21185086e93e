#include "measure/sources/array_file.h"

#include <algorithm>
#include <charconv>

#include "measure/error.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr u64 kMostPixels = 0x4000'0000;
/// Nothing that these files are packed by makes more of a byte.
constexpr u64 kMostUnpacked = 32768;
constexpr u64 kMostFrames = u64{1} << 24;  // whose places are kept

enum class EKind { None, Numpy, Tiff, Png };

EKind KindOf(const IBytes& bytes) {
    using namespace std::string_view_literals;
    const std::vector<u8> start = bytes.Get(0, 8);
    const auto begins = [&](std::string_view magic) {
        return std::string_view(reinterpret_cast<const char*>(start.data()), start.size()).starts_with(magic);
    };
    if (begins("\x93NUMPY"sv)) return EKind::Numpy;
    if (begins("\x89PNG\r\n\x1A\n"sv)) return EKind::Png;
    const bool tiff = begins("II*\0"sv) || begins("II+\0"sv) || begins("MM\0*"sv) || begins("MM\0+"sv);
    return tiff ? EKind::Tiff : EKind::None;
}

/// What stands behind 'key': in the dictionary of an array.
std::string_view ValueOf(std::string_view header, std::string_view key) {
    const std::size_t at = header.find(key);
    if (at == header.npos) return {};
    std::string_view rest = header.substr(at + key.size());
    while (!rest.empty() && (rest.front() == ' ' || rest.front() == ':')) rest.remove_prefix(1);
    return rest;
}

std::vector<u64> ShapeOf(std::string_view text) {
    std::vector<u64> shape;
    if (text.empty() || text.front() != '(') return shape;
    text.remove_prefix(1);
    while (!text.empty() && text.front() != ')') {
        u64 number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc{}) return {};
        shape.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        while (!text.empty() && (text.front() == ',' || text.front() == ' ')) text.remove_prefix(1);
    }
    return shape;
}

SArrayFile FindInNumpy(const IBytes& bytes) {
    constexpr u64 kMostHeader = 65536;
    const std::vector<u8> start = bytes.Get(0, kMostHeader);
    const bool isShort = start.size() > 10 && start[6] == 1;
    if (start.size() < 12) RefuseArray(bytes, "a NumPy file", "a header", "its end");
    const u64 length = isShort ? LoadLittle<u16>(start.data() + 8) : LoadLittle<u32>(start.data() + 8);
    const u64 data = (isShort ? 10 : 12) + length;
    if (data > start.size()) RefuseArray(bytes, "a NumPy file", "a header of at most 64 KiB", Say(length, " bytes"));
    const std::string_view header(reinterpret_cast<const char*>(start.data()), data);
    const std::string type(ValueOf(header, "'descr'").substr(0, 5));
    std::vector<u64> shape = ShapeOf(ValueOf(header, "'shape'"));
    if (shape.size() == 2) shape.insert(shape.begin(), 1);
    const bool rowsFirst = ValueOf(header, "'fortran_order'").starts_with("False");
    if ((type != "'<u2'" && type != "'>u2'") || !rowsFirst || shape.size() != 3)
        RefuseArray(bytes, "a NumPy file",
                    "16-bit unsigned numbers of shape (frames, height, width) or (height, width)",
                    std::string(header.substr(isShort ? 10 : 12, 80)));
    SArrayFile array{.format = CountsOf(bytes, shape[2], shape[1], type[1] == '>'), .stated = shape[0]};
    if (shape[0] > kMostFrames)
        RefuseArray(bytes, "a NumPy file", Say("at most ", kMostFrames, " frames"), Say(shape[0]));
    const u64 size = shape[1] * shape[2] * 2;
    const u64 there = bytes.Size() > data ? (bytes.Size() - data) / size : 0;
    for (u64 n = 0; n < std::min(shape[0], there); ++n) array.frames.push_back({data + n * size, size});
    return array;
}

}  // namespace

void RefuseArray(const IBytes& bytes, const char* kind, std::string expected, std::string found) {
    throw CError({.id = EError::UnknownFormat,
                  .file = bytes.Name(),
                  .problem = kind,
                  .expected = std::move(expected),
                  .found = std::move(found)});
}

SFrameFormat CountsOf(const IBytes& bytes, u64 width, u64 height, bool bigEndian) {
    const bool fits = width && height && width <= 65535 && height <= 65535 && width * height <= kMostPixels;
    if (!fits || width * height * 2 / kMostUnpacked > bytes.Size())
        RefuseArray(bytes, "an image", fits ? "no more pixels than its bytes can hold" : "1 to 65535 pixels each way",
                    Say(width, " x ", height));
    return {.filter = {},
            .pixelType = rootIRType,
            .pixelTypeName = bigEndian ? "counts-be" : "counts",
            .width = static_cast<u16>(width),
            .height = static_cast<u16>(height)};
}

bool IsArrayFile(const IBytes& bytes) { return KindOf(bytes) != EKind::None; }

std::optional<SArrayFile> FindArray(const IBytes& bytes) {
    switch (KindOf(bytes)) {
        case EKind::Numpy:
            return FindInNumpy(bytes);
        case EKind::Tiff:
            return FindInTiff(bytes);
        case EKind::Png:
            return FindInPng(bytes);
        case EKind::None:
            break;
    }
    return {};
}

}  // namespace ovix::measure
