#pragma once

#include <fmt/format.h>

#include <string>

#include "apps/ovix/fault.h"
#include "apps/ovix/json.h"

namespace ovix::app {

/// The document in a file that people write or read, "-" for the standard input. Throws `CFault` for one that is none.
Json ReadJson(const std::string& file, const char* expected);

/// One value of a document, which knows its way from the root. Everything throws `CFault` that names the file and the
/// value's place, for what is not as it has to be.
class CField {
  public:
    CField(const std::string& file, const Json& value, std::string path)
        : file_(file), value_(value), path_(std::move(path)) {}

    bool Has(const char* key) const { return value_.is_object() && value_.contains(key); }
    CField operator[](const char* key) const {
        if (!value_.is_object()) Fail("an object");
        if (!value_.contains(key)) throw CFault({.file = file_, .problem = Sub(key) + " is missing"});
        return {file_, value_[key], Sub(key)};
    }
    void RequireText(const char* text) const {
        if (value_ != text) Fail(std::string("\"") + text + '"');
    }
    double Number() const {
        if (!value_.is_number()) Fail("a number");
        return value_.get<double>();
    }
    int Integer(int low, int high) const {
        // As double, a number beyond 64 bits is not taken for its remainder.
        if (!value_.is_number_integer() || value_.get<double>() < low || value_.get<double>() > high)
            Fail(low == high ? fmt::format("{}", low) : fmt::format("a whole number from {} to {}", low, high));
        return value_.get<int>();
    }
    TArray<double> Numbers() const {
        TArray<double> numbers;
        ForEach([&](const CField& item) { numbers.Add(item.Number()); });
        return numbers;
    }
    template <class F>
    void ForEach(const F& f) const {
        if (!value_.is_array()) Fail("a list");
        for (std::size_t i = 0; i < value_.size(); ++i) f(CField(file_, value_[i], fmt::format("{}[{}]", path_, i)));
    }
    /// The calibration did not take what was read here.
    void Require(bool taken, const char* expected) const {
        if (!taken) throw CFault({.file = file_, .problem = path_, .expected = expected});
    }

    std::string Text() const {
        if (!value_.is_string()) Fail("a text");
        return value_.get<std::string>();
    }
    [[noreturn]] void Fail(std::string expected) const;

  private:
    std::string Sub(const char* key) const { return path_.empty() ? key : path_ + '.' + key; }

    const std::string& file_;
    const Json& value_;
    std::string path_;
};

}  // namespace ovix::app
