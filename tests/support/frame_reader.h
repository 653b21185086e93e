#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"

namespace ovix::test {

/// The bytes on the heap, at an odd address and with nothing behind them.
class CExact {
  public:
    explicit CExact(std::span<const u8> bytes) : memory_(new u8[bytes.size() + 1]) {
        std::copy(bytes.begin(), bytes.end(), get());
    }
    u8* get() const { return memory_.get() + 1; }

  private:
    std::unique_ptr<u8[]> memory_;
};

/// A decoder with its stream, the objects of its source, and the pixels and preset of the last frame.
struct SFrameReader {
    SFrameReader(const wchar_t* name, const GUID& pixelType, u16 columns, u16 rows)
        : decoder(name), type(pixelType), width(columns), height(rows), pixels(std::size_t{columns} * rows) {}

    const wchar_t* decoder;
    GUID type;
    u16 width, height;
    std::vector<u16> pixels;
    std::vector<u8> parsed;
    u8 preset = 99;
    reduce::CReduceObjectArray objects;
    TSharedPtr<reduce::IFilter> filter = reduce::filterFactory()->Create(decoder);

    bool Check(const std::vector<u8>& bytes, reduce::SFrameFault* fault = nullptr) const {
        return reduce::CheckFrame(decoder, CExact(bytes).get(), type, width, height, Size(bytes), fault);
    }
    /// To `pixels` unless a destination is given. `parsed` is then what became of the bytes.
    bool Parse(const std::vector<u8>& bytes, std::optional<STypedData> dest = {}) {
        const CExact exact(bytes);
        preset = 99;
        const bool done = filter->ParseFrame(exact.get(), type, width, height, Size(bytes),
                                             dest.value_or(STypedData{pixels.data(), UInt16}), objects, preset);
        parsed.assign(exact.get(), exact.get() + bytes.size());
        return done;
    }
    bool ParseMetadata(const std::vector<u8>& bytes) { return Parse(bytes, STypedData{nullptr, NoPixels}); }
    /// What the light operations answered, each of a frame of its own, and gave where they answered true.
    struct SLight {
        bool hasPreset, hasTime, hasCounter, hasAll;
        u8 preset = 99, presetOfAll = 99;
        u64 counter = 99, counterOfAll = 99;
        CDateTime time, timeOfAll;
    };
    SLight Light(const std::vector<u8>& bytes) {
        SLight r{};
        const auto call = [&](auto operation, auto&... results) {
            return (filter.ptr()->*operation)(CExact(bytes).get(), type, width, height, Size(bytes), results...);
        };
        r.hasPreset = call(&reduce::IFilter::ParsePreset, r.preset);
        r.hasTime = call(&reduce::IFilter::ParseTime, r.time);
        r.hasCounter = call(&reduce::IFilter::ParseFrameCounter, r.counter);
        r.hasAll = call(&reduce::IFilter::ParseBasicInfo, r.presetOfAll, r.counterOfAll, r.timeOfAll);
        return r;
    }
    /// What `StoreFrame` puts over bytes of 0xCC; empty when it refuses, which leaves them.
    std::vector<u8> Store(const std::vector<u8>& buffer, u32 count, u32 index, std::size_t room) const {
        const std::vector<u8> before(room, 0xCC);
        const CExact dest(before);
        const bool done =
            filter->StoreFrame(CExact(buffer).get(), Size(buffer), type, width, height, static_cast<u16>(count),
                               static_cast<u16>(index), dest.get(), Size(before));
        const std::vector<u8> after(dest.get(), dest.get() + room);
        return done || after != before ? after : std::vector<u8>();
    }
    /// The image that `CheckForTrigger` names, -1 for none; nothing when it refuses, and then says so of the trigger
    /// too.
    std::optional<int> Trigger(const std::vector<u8>& buffer, u16 count, u8 field = 7) const {
        bool triggered = true;
        u16 index = 9;
        if (!filter->CheckForTrigger(CExact(buffer).get(), Size(buffer), type, width, height, count, field, triggered,
                                     index)) {
            return triggered ? std::optional(-99) : std::nullopt;
        }
        return triggered ? index : -1 - index;
    }

    TSharedPtr<reduce::CFrameInfoReduceObject> Info() { return objects.GetFrameInfo(preset, false); }
    auto Camera() { return objects.Get<reduce::CCurlewCameraInfoReduceObject>(-1, false); }
    auto Cal() { return objects.Get<reduce::CCurlewFactoryCalReduceObject>(0, false); }
    /// "Name=value Kind/format, ..." of all values; Integer/int goes without saying.
    std::string Values() {
        CString all;
        for (const auto& e : Info()->extra) {
            const CString kind = CString(L" ") + e.unit + L"/" + e.type;
            all = all + e.name + L"=" + e.value + (kind == L" Integer/int" ? L"" : kind.c_str()) + L", ";
        }
        return all.GetUTF8();
    }

    static u32 Size(const std::vector<u8>& bytes) { return static_cast<u32>(bytes.size()); }
};

}  // namespace ovix::test
