#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "reduce/filters/describe_frame.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "support/byte_writer.h"

namespace ovix::test {

/// A decoder with its stream, the objects of its source, and the pixels and preset of the last frame. Every frame
/// stands in a heap buffer of exactly its size.
class CFrameReader {
  public:
    CFrameReader(const wchar_t* decoder, const GUID& pixelType, u16 columns, u16 rows)
        : filter(reduce::filterFactory()->Create(decoder)),
          type(pixelType),
          width(columns),
          height(rows),
          pixels(std::size_t{columns} * rows),
          decoder_(decoder) {}

    bool Parse(const std::vector<u8>& bytes) {
        const auto frame = Exact(bytes);
        return filter->ParseFrame(frame.get(), type, width, height, static_cast<u32>(bytes.size()),
                                  {pixels.data(), UInt16}, objects, preset);
    }
    bool Check(const std::vector<u8>& bytes) const {
        const auto frame = Exact(bytes);
        return reduce::CheckFrame(decoder_, frame.get(), type, width, height, static_cast<u32>(bytes.size()));
    }

    /// The results of the light operations, which are only looked at where they answered true.
    struct SLight {
        bool hasPreset, hasTime, hasCounter, hasAll;
        u8 preset = 0, presetOfAll = 0;
        u64 counter = 0, counterOfAll = 0;
        CDateTime time, timeOfAll;
    };
    SLight Light(const std::vector<u8>& bytes) {
        const auto frame = Exact(bytes);
        const u32 size = static_cast<u32>(bytes.size());
        SLight r{};
        r.hasPreset = filter->ParsePreset(frame.get(), type, width, height, size, r.preset);
        r.hasTime = filter->ParseTime(frame.get(), type, width, height, size, r.time);
        r.hasCounter = filter->ParseFrameCounter(frame.get(), type, width, height, size, r.counter);
        r.hasAll =
            filter->ParseBasicInfo(frame.get(), type, width, height, size, r.presetOfAll, r.counterOfAll, r.timeOfAll);
        return r;
    }

    TSharedPtr<reduce::CFrameInfoReduceObject> Info() { return objects.GetFrameInfo(preset, false); }
    /// "Name=value (kind, format)" of each value, a line each.
    std::string Values() {
        std::string lines;
        for (const auto& entry : Info()->extra) {
            lines += std::string(entry.name.GetUTF8()) + "=" + entry.value.GetUTF8() + " (" + entry.unit.GetUTF8() +
                     ", " + entry.type.GetUTF8() + ")\n";
        }
        return lines;
    }
    /// "offset+size name=value" of each field that the decoder tells of the frame, a line each.
    std::string Description(const std::vector<u8>& bytes) const {
        const auto frame = Exact(bytes);
        TArray<reduce::SFrameField> fields;
        EXPECT_TRUE(
            reduce::DescribeFrame(decoder_, frame.get(), type, width, height, static_cast<u32>(bytes.size()), fields));
        std::string lines;
        for (const auto& field : fields) {
            lines += std::to_string(field.offset) + "+" + std::to_string(field.size) + " " + field.name.GetUTF8() +
                     "=" + field.value.GetUTF8() + "\n";
        }
        return lines;
    }

    static std::unique_ptr<u8[]> Exact(const std::vector<u8>& bytes) {
        auto frame = std::make_unique<u8[]>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), frame.get());
        return frame;
    }

    TSharedPtr<reduce::IFilter> filter;
    GUID type;
    u16 width, height;
    reduce::CReduceObjectArray objects;
    std::vector<u16> pixels;
    u8 preset = 99;

  private:
    const wchar_t* decoder_;
};

}  // namespace ovix::test
