#pragma once

#include <sstream>

#include "core/string.h"

namespace ovix::test {

/// All values, a blank behind each, numbers in six digits: one comparison holds a whole row of them.
template <class... Ts>
std::string Text(const Ts&... values) {
    std::ostringstream s;
    const auto put = [&]<class T>(const T& value) {
        if constexpr (std::is_convertible_v<const T&, const wchar_t*>) {
            s << CString(value).GetUTF8();
        } else if constexpr (requires { +value; }) {
            s << +value;
        } else {
            s << value;
        }
        s << ' ';
    };
    (put(values), ...);
    return s.str();
}

}  // namespace ovix::test
