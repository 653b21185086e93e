#pragma once

#include "core/string.h"
#include "reduce/objects/frame_info_reduce_object.h"

/// The values that decoders show beside a frame: a name, a text, and two words for the kind of the value and the
/// format of its text, which stand in `unit` and `type` of the entry.
namespace ovix::reduce::frame_values {

struct SKind {
    const wchar_t* kind;
    const wchar_t* format;
};
inline constexpr SKind kCounter{L"Counter", L"int"};
inline constexpr SKind kInteger{L"Integer", L"int"};
inline constexpr SKind kFloat{L"Float", L"float"};
inline constexpr SKind kFlag{L"Flag", L"ascii"};
inline constexpr SKind kText{L"Text", L"ascii"};
inline constexpr SKind kBitfield{L"Bitfield", L"int"};

/// What a decoder sets of every frame before it adds values of its own; the time is left to it.
inline void StartFrame(CFrameInfoReduceObject& info, u8 preset, u64 frameNumber) {
    info.frameFilled = true;
    info.preset = preset;
    info.frameNumber = frameNumber;
    info.extra.Clear();
}

inline void Add(CFrameInfoExtra& extra, const wchar_t* name, const SKind& kind, const wchar_t* text) {
    extra.Add(name, text, kind.kind, kind.format);
}
constexpr const wchar_t* FlagText(bool set) { return set ? L"T" : L"F"; }
inline void AddFlag(CFrameInfoExtra& extra, const wchar_t* name, bool set) { Add(extra, name, kFlag, FlagText(set)); }

}  // namespace ovix::reduce::frame_values
