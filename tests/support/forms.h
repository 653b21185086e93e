#pragma once

#include <random>
#include <vector>

#include "core/typed_data.h"

namespace ovix::test {

/// The selection forms: whole buffer, index list, area, scan lines, area with mask.
enum class EForm { W, L, A, S, M };
inline constexpr EForm kForms[] = {EForm::W, EForm::L, EForm::A, EForm::S, EForm::M};

/// One selection of each form in a small frame, and the pixels that it visits, spelled out pixel by pixel.
struct SForms {
    u16 width = 23;
    u16 height = 41;
    reduce::SArea area{2, 3, 38, 21};
    TArray<reduce::SScanLine> lines;
    std::vector<u32> indices;
    std::vector<u8> mask;
    u32 stride = 31;  ///< the mask's own

    SForms() {
        std::mt19937 random(5);
        mask.resize(std::size_t{stride} * height);
        for (u8& byte : mask) byte = random() % 3 ? static_cast<u8>(random()) : u8{0};
        for (u32 i = 0; i < 50; ++i) indices.push_back(i);
        for (int i = 0; i < 1000; ++i) indices.push_back(static_cast<u32>(random() % Count()));
        // Out of order, of one pixel, and ending before its beginning.
        for (const reduce::SScanLine line : {reduce::SScanLine{30, 4, 20}, {7, 9, 9}, {9, 6, 5}, {0, 0, 22}}) {
            lines.Add(line);
        }
    }

    u32 Count() const { return u32{width} * height; }

    std::vector<u32> Visited(EForm form) const {
        std::vector<u32> visited;
        const auto add = [&](u32 row, u32 column) { visited.push_back(row * width + column); };
        if (form == EForm::L) return indices;
        for (u32 i = 0; form == EForm::W && i < Count(); ++i) visited.push_back(i);
        for (u32 i = 0; form == EForm::S && i < lines.size(); ++i) {
            for (u32 x = lines[i].left; x <= lines[i].right; ++x) add(lines[i].row, x);
        }
        if (form != EForm::A && form != EForm::M) return visited;
        for (u32 y = area.top; y <= area.bottom; ++y) {
            for (u32 x = area.left; x <= area.right; ++x) {
                if (form == EForm::A || mask[y * stride + x]) add(y, x);
            }
        }
        return visited;
    }

    /// Calls `f` with the arguments that say the form.
    template <class F>
    bool Call(EForm form, F&& f) const {
        if (form == EForm::W) return f(Count());
        if (form == EForm::L) return f(indices.data(), static_cast<u32>(indices.size()));
        return CallPart(form, f);
    }
    /// The same where all forms are said with the size of the frame first.
    template <class F>
    bool CallInFrame(EForm form, F&& f) const {
        if (form == EForm::W) return f(width, height);
        if (form == EForm::L) return f(width, height, indices.data(), static_cast<u32>(indices.size()));
        return CallPart(form, f);
    }

  private:
    bool CallPart(EForm form, const auto& f) const {
        if (form == EForm::A) return f(width, height, area);
        if (form == EForm::S) return f(width, height, lines);
        return f(width, height, area, static_cast<const u8*>(mask.data()), stride);
    }
};

}  // namespace ovix::test
