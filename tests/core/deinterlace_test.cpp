#include "core/pixel_types.h"

#include <gtest/gtest.h>

#include <string>

namespace ovix {
namespace {

TEST(Deinterlace, PutsTheLinesOfTwoFieldsInTheirPlaces) {
    const struct {
        int width, height, bytes;
        const char* source;
        const char* expected;
    } cases[] = {
        {2, 5, 1, "aabbccddee", "aaddbbeecc"},
        {1, 4, 3, "aaabbbcccddd", "aaacccbbbddd"},
        {3, 1, 1, "abc", "abc"},
        {0, 4, 1, "", ""},
        {4, 0, 1, "", ""},
        {-1, -1, -1, "", ""},
    };
    for (const auto& [width, height, bytes, source, expected] : cases) {
        std::string dest(std::char_traits<char>::length(expected), '#');
        deinterlace(dest.data(), source, width, height, bytes, -1, -1);
        EXPECT_EQ(dest, expected);
    }
}

}  // namespace
}  // namespace ovix
