#pragma once

#include <cstring>
#include <new>
#include <utility>

#include "capi/ovix.h"
#include "measure/measure.h"

/// What all functions of the C interface share: nothing is thrown through them, and structures of any age are taken.
namespace ovix::capi {

using measure::CError;
using measure::EError;

/// Keeps the failure for `ovix_last_error`, and answers its number.
int Fail(const CError& error) noexcept;
int FailWithoutMemory() noexcept;

/// Runs the body of a function; answers what it answers, or the number of what it throws.
template <class Body>
int Guard(const Body& body) noexcept {
    try {
        try {
            return body();
        } catch (const CError& error) {
            return Fail(error);
        } catch (const std::bad_alloc&) {
            return FailWithoutMemory();
        } catch (const std::exception& error) {
            return Fail(CError({.id = EError::SystemFailed, .problem = error.what()}));
        }
    } catch (...) {
        return FailWithoutMemory();  // for the error itself
    }
}

inline CError WrongArgument(std::string problem) {
    return CError({.id = EError::WrongArgument, .problem = std::move(problem)});
}

template <class Handle>
Handle& Require(Handle* handle, const char* what) {
    if (!handle) throw WrongArgument(std::string(what) + " is null");
    return *handle;
}

template <class Struct>
std::size_t CheckedSize(const Struct* given, const char* what) {
    const std::size_t size = Require(given, what).size;
    constexpr std::size_t kMost = 1 << 16;  // no structure will ever be as large
    if (size < sizeof size || size > kMost) throw WrongArgument(std::string(what) + ": its size is not set");
    return size;
}

/// The caller's structure as of this version. Members that it does not have are 0; those that are not known here and
/// not 0 ask for what this version cannot do.
template <class Struct>
Struct Take(const Struct* given, const char* what) {
    Struct taken{};
    if (!given) return taken;
    const std::size_t size = CheckedSize(given, what);
    std::memcpy(&taken, given, std::min(size, sizeof taken));
    const auto* bytes = reinterpret_cast<const unsigned char*>(given);
    for (std::size_t i = sizeof taken; i < size; ++i) {
        if (bytes[i]) throw WrongArgument(std::string(what) + ": asks for what this version does not know");
    }
    return taken;
}

/// Fills the caller's structure as far as it goes.
template <class Struct>
void Give(Struct* to, Struct from, std::size_t size) {
    from.size = size;
    std::memcpy(to, &from, std::min(size, sizeof from));
    auto* bytes = reinterpret_cast<unsigned char*>(to);
    for (std::size_t i = sizeof from; i < size; ++i) bytes[i] = 0;
}

/// A place in a file or the number of a frame, -1 for none.
inline std::int64_t OrNone(const std::optional<u64>& number) {
    return number ? static_cast<std::int64_t>(*number) : -1;
}

/// The caller's options in the terms of the measuring layer.
struct SAsked {
    explicit SAsked(const ovix_options* options);

    measure::SOpenOptions open;
    measure::SMeasureOptions measure;
};

}  // namespace ovix::capi
