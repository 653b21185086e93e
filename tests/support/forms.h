#pragma once

#include "support/pixel_buffers.h"

namespace ovix::test {

/// The selection forms: whole buffer, index list, area, scan lines, area with mask.
enum class EForm { W, L, A, S, M };
inline constexpr std::initializer_list<EForm> kForms{EForm::W, EForm::L, EForm::A, EForm::S, EForm::M};

/// One selection of each form in a small frame, and the pixels that it visits, spelled out pixel by pixel.
struct SForms {
    u16 width = 23;
    u16 height = 41;
    reduce::SArea area{2, 3, 38, 21};
    // Out of order, of one pixel, and ending before its beginning.
    TArray<reduce::SScanLine> lines{{30, 4, 20}, {7, 9, 9}, {9, 6, 5}, {0, 0, 22}};
    std::vector<u32> indices;
    std::vector<u8> mask;
    u32 stride = 31;  ///< the mask's own

    SForms() {
        std::mt19937 random(5);
        mask.resize(std::size_t{stride} * height);
        for (u8& byte : mask) byte = random() % 3 ? static_cast<u8>(random()) : u8{0};
        for (u32 i = 0; i < 50; ++i) indices.push_back(i);
        for (int i = 0; i < 1000; ++i) indices.push_back(static_cast<u32>(random() % Count()));
    }

    u32 Count() const { return u32{width} * height; }

    std::vector<u32> Visited(EForm form) const {
        std::vector<u32> visited;
        const auto add = [&](u32 row, u32 column) { visited.push_back(row * width + column); };
        if (form == EForm::L) return indices;
        for (u32 i = 0; form == EForm::W && i < Count(); ++i) visited.push_back(i);
        for (u32 i = 0; form == EForm::S && i < lines.size(); ++i)
            for (u32 x = lines[i].left; x <= lines[i].right; ++x) add(lines[i].row, x);
        if (form != EForm::A && form != EForm::M) return visited;
        for (u32 y = area.top; y <= area.bottom; ++y)
            for (u32 x = area.left; x <= area.right; ++x)
                if (form == EForm::A || mask[y * stride + x]) add(y, x);
        return visited;
    }

    /// Calls `f` with arguments of its own and those that say the form; false for a form that it does not take.
    bool Call(EForm form, const auto& f, const auto&... own) const {
        if (form == EForm::W) return Try(f, own..., Count());
        if (form == EForm::L) return Try(f, own..., indices.data(), static_cast<u32>(indices.size()));
        return CallPart(form, f, own...);
    }
    /// The same where all forms are said with the size of the frame first.
    bool CallInFrame(EForm form, const auto& f, const auto&... own) const {
        if (form == EForm::W) return Try(f, own..., width, height);
        if (form == EForm::L) return Try(f, own..., width, height, indices.data(), static_cast<u32>(indices.size()));
        return CallPart(form, f, own...);
    }

  private:
    bool CallPart(EForm form, const auto& f, const auto&... own) const {
        if (form == EForm::A) return Try(f, own..., width, height, area);
        if (form == EForm::S) return Try(f, own..., width, height, lines);
        return Try(f, own..., width, height, area, mask.data(), stride);
    }
    static bool Try(const auto& f, const auto&... arguments) {
        if constexpr (std::is_invocable_v<decltype(f), decltype(arguments)...>) return f(arguments...);
        return false;
    }
};

/// What a destination of floats holds before a conversion, and where that writes nothing.
inline constexpr int kUntouched = -12345;

/// `call(own..., destination, form arguments...)` must give `expected(frame index)` of each pixel that the form visits,
/// near to a part of its size, and no more.
template <class D>
void ExpectForm(const SForms& forms, EForm form, double part, const auto& expected, const auto& call,
                const auto&... own) {
    SCOPED_TRACE("form " + std::to_string(static_cast<int>(form)));
    const std::vector<u32> visited = forms.Visited(form);
    TGuarded<D> out(visited.size(), visited.size() % 4);
    std::fill(out.begin(), out.end(), static_cast<D>(kUntouched));
    ASSERT_TRUE(forms.Call(form, call, own..., out.Typed()));
    for (std::size_t n = 0; n < visited.size(); ++n) {
        const D value = static_cast<D>(expected(visited[n]));
        if (Same(out[n], value)) continue;
        const double near = part * std::max(100.0, std::abs(static_cast<double>(value)));
        ASSERT_NEAR(static_cast<double>(out[n]), static_cast<double>(value), near) << n << ", pixel " << visited[n];
    }
    EXPECT_TRUE(out.Untouched(visited.size()));
}

}  // namespace ovix::test
