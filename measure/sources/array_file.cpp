#include "measure/sources/array_file.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "measure/error.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr u64 kMostPixels = 0x4000'0000;

[[noreturn]] void Refuse(const IBytes& bytes, const char* kind, std::string expected, std::string found) {
    throw CError({.id = EError::UnknownFormat,
                  .file = bytes.Name(),
                  .problem = kind,
                  .expected = std::move(expected),
                  .found = std::move(found)});
}

SFrameFormat CountsOf(u64 width, u64 height, bool bigEndian) {
    return {.filter = {},
            .pixelType = rootIRType,
            .pixelTypeName = bigEndian ? "counts-be" : "counts",
            .width = static_cast<u16>(width),
            .height = static_cast<u16>(height)};
}

bool IsSize(u64 width, u64 height) {
    return width && height && width <= 65535 && height <= 65535 && width * height <= kMostPixels;
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
    if (start.size() < 12) Refuse(bytes, "a NumPy file", "a header", "its end");
    const u64 length = isShort ? LoadLittle<u16>(start.data() + 8) : LoadLittle<u32>(start.data() + 8);
    const u64 data = (isShort ? 10 : 12) + length;
    if (data > start.size()) Refuse(bytes, "a NumPy file", "a header of at most 64 KiB", Say(length, " bytes"));
    const std::string_view header(reinterpret_cast<const char*>(start.data()), data);
    const std::string type(ValueOf(header, "'descr'").substr(0, 5));
    std::vector<u64> shape = ShapeOf(ValueOf(header, "'shape'"));
    if (shape.size() == 2) shape.insert(shape.begin(), 1);
    const bool rowsFirst = ValueOf(header, "'fortran_order'").starts_with("False");
    if ((type != "'<u2'" && type != "'>u2'") || !rowsFirst || shape.size() != 3 || !IsSize(shape[2], shape[1]))
        Refuse(bytes, "a NumPy file", "16-bit unsigned numbers of shape (frames, height, width) or (height, width)",
               std::string(header.substr(isShort ? 10 : 12, 80)));
    SArrayFile array{.format = CountsOf(shape[2], shape[1], type[1] == '>'), .frames = {}, .stated = shape[0]};
    const u64 size = shape[1] * shape[2] * 2;
    const u64 there = bytes.Size() > data ? (bytes.Size() - data) / size : 0;
    for (u64 n = 0; n < std::min(shape[0], there); ++n) array.frames.push_back({data + n * size, size});
    return array;
}

/// The directories of a TIFF, by TIFF 6.0 and the description of BigTIFF.
class CTiffPages {
  public:
    CTiffPages(const IBytes& bytes, bool bigEndian, bool big) : bytes_(bytes), bigEndian_(bigEndian), big_(big) {}

    SArrayFile Find() const {
        SArrayFile array;
        for (u64 at = Number(big_ ? 8 : 4, Word()); at; ++array.stated) {
            const Tags tags = TagsAt(at);
            const SExtent frame = FrameOf(tags, array);
            // Directories may lead back to one another: there are no more pages than the file has room for.
            if (array.stated > bytes_.Size() / frame.size)
                Refuse(bytes_, "a TIFF", "pages that come to an end", Say(array.stated));
            if (frame.offset > bytes_.Size() || frame.size > bytes_.Size() - frame.offset) continue;
            array.frames.push_back(frame);
        }
        return array;
    }

  private:
    struct STag {
        u16 type = 0;
        u64 count = 0;
        u64 at = 0;  ///< of its first value
    };
    using Tags = std::map<u16, STag>;

    u64 Word() const { return big_ ? 8 : 4; }
    u64 Number(u64 at, u64 size) const {
        u8 buffer[8] = {};
        if (at > bytes_.Size() || size > bytes_.Size() - at)
            Refuse(bytes_, "a TIFF", Say(size, " bytes at ", at), "the end of the file");
        bytes_.ReadAllAt(at, std::span(buffer, size));
        u64 number = 0;
        for (u64 i = 0; i < size; ++i) number |= u64{buffer[bigEndian_ ? size - 1 - i : i]} << 8 * i;
        return number;
    }
    static u64 SizeOf(u16 type) { return type == 3 ? 2 : type == 4 ? 4 : type == 16 ? 8 : 1; }

    /// Moves on to where the next directory is named.
    Tags TagsAt(u64& at) const {
        const u64 count = Number(at, big_ ? 8 : 2), entry = big_ ? 20 : 12;
        if (count > 4096) Refuse(bytes_, "a TIFF", "at most 4096 tags a page", Say(count));
        Tags tags;
        u64 place = at + (big_ ? 8 : 2);
        for (u64 i = 0; i < count; ++i, place += entry) {
            STag tag{static_cast<u16>(Number(place + 2, 2)), Number(place + 4, Word()), place + 4 + Word()};
            if (tag.count > Word() / SizeOf(tag.type)) tag.at = Number(tag.at, Word());
            tags[static_cast<u16>(Number(place, 2))] = tag;
        }
        at = Number(place, Word());
        return tags;
    }
    u64 Value(const Tags& tags, u16 tag, u64 otherwise, u64 index = 0) const {
        const auto found = tags.find(tag);
        if (found == tags.end() || index >= found->second.count) return otherwise;
        const u64 size = SizeOf(found->second.type);
        return Number(found->second.at + index * size, size);
    }

    SExtent FrameOf(const Tags& tags, SArrayFile& array) const {
        const u64 width = Value(tags, 256, 0), height = Value(tags, 257, 0), bits = Value(tags, 258, 1);
        const u64 compression = Value(tags, 259, 1), samples = Value(tags, 277, 1), kind = Value(tags, 339, 1);
        if (!IsSize(width, height) || bits != 16 || compression != 1 || samples != 1 || kind != 1)
            Refuse(bytes_, "a TIFF", "pages of 16-bit unsigned counts, one sample a pixel, not compressed",
                   Say(width, " x ", height, ", ", bits, " bits, ", samples, " samples of format ", kind,
                       ", compression ", compression));
        if (array.stated == 0) array.format = CountsOf(width, height, bigEndian_);
        if (array.format.width != width || array.format.height != height)
            Refuse(bytes_, "a TIFF", "pages of one size", Say(width, " x ", height));
        const auto strips = tags.find(273);
        const u64 count = strips == tags.end() ? 0 : strips->second.count;
        if (!count || count > height) Refuse(bytes_, "a TIFF", "strips", Say(count));
        const u64 first = Value(tags, 273, 0), size = width * height * 2;
        u64 next = first;
        for (u64 i = 0; i < count; ++i) {
            if (Value(tags, 273, 0, i) != next) Refuse(bytes_, "a TIFF", "strips one behind the other", "others");
            next += Value(tags, 279, 0, i);
        }
        if (next - first < size) Refuse(bytes_, "a TIFF", Say(size, " bytes a page"), Say(next - first));
        return {first, size};
    }

    const IBytes& bytes_;
    bool bigEndian_;
    bool big_;
};

}  // namespace

std::optional<SArrayFile> FindArray(const IBytes& bytes) {
    const std::vector<u8> start = bytes.Get(0, 8);
    const std::string_view magic(reinterpret_cast<const char*>(start.data()), start.size());
    using namespace std::string_view_literals;
    if (magic.starts_with("\x93NUMPY"sv)) return FindInNumpy(bytes);
    const bool little = magic.starts_with("II*\0"sv), big = magic.starts_with("II+\0"sv);
    const bool swapped = magic.starts_with("MM\0*"sv), bigSwapped = magic.starts_with("MM\0+"sv);
    if (!little && !big && !swapped && !bigSwapped) return {};
    return CTiffPages(bytes, swapped || bigSwapped, big || bigSwapped).Find();
}

}  // namespace ovix::measure
