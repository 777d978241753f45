#include "KorvoGitService/RKTNumber.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

/// Truncated toward zero and clamped; NaN is 0.
template <class Integer>
Integer integerFromDouble(double value, double end) {
    if (std::isnan(value)) {
        return 0;
    }
    using Limits = std::numeric_limits<Integer>;
    if (value >= end) {
        return Limits::max();
    }
    if (value <= static_cast<double>(Limits::min())) {
        return Limits::min();
    }
    return static_cast<Integer>(value);
}

/// A number's value without its type: the same for all numbers that are equal, and for no others.
struct Value {
    enum class Kind : std::uint64_t { Natural, Negative, Floating };

    explicit Value(std::uint64_t value) : bits(value) {}
    explicit Value(std::int64_t value)
        : kind(value < 0 ? Kind::Negative : Kind::Natural),
          bits(static_cast<std::uint64_t>(value)) {}
    explicit Value(bool value) : Value(std::uint64_t{value}) {}
    explicit Value(double value) {
        const bool isInteger = value == std::trunc(value);
        if (isInteger && value >= 0 && value < twoTo64) {
            *this = Value(static_cast<std::uint64_t>(value));
        } else if (isInteger && value < 0 && value >= -twoTo63) {
            *this = Value(static_cast<std::int64_t>(value));
        } else {
            kind = Kind::Floating;
            bits = std::bit_cast<std::uint64_t>(
                std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value);
        }
    }

    bool operator==(const Value&) const = default;

    Kind kind = Kind::Natural;
    std::uint64_t bits = 0;
};

/// Whole numbers and those of moderate size in plain digits, so that a count that was sent as `1e5`
/// reads "100000".
std::string textFromDouble(double value) {
    const double size = std::fabs(value);
    const bool plain = size == 0 || (size >= 1e-4 && size < 1e16);
    std::array<char, 40> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   plain ? std::chars_format::fixed : std::chars_format::scientific)
                         .ptr;
    return {text.data(), end};
}

}  // namespace

RKTNumber::Type RKTNumber::type() const {
    return static_cast<Type>(value_.index());
}

bool RKTNumber::boolValue() const {
    return std::visit([](auto value) { return value != decltype(value){}; }, value_);
}

std::int64_t RKTNumber::integerValue() const {
    if (const auto* value = std::get_if<double>(&value_)) {
        return integerFromDouble<std::int64_t>(*value, twoTo63);
    }
    if (const auto* value = std::get_if<std::uint64_t>(&value_)) {
        constexpr auto most = std::numeric_limits<std::int64_t>::max();
        return std::in_range<std::int64_t>(*value) ? static_cast<std::int64_t>(*value) : most;
    }
    const auto* value = std::get_if<std::int64_t>(&value_);
    return value ? *value : std::get<bool>(value_);
}

std::uint64_t RKTNumber::unsignedIntegerValue() const {
    if (const auto* value = std::get_if<std::uint64_t>(&value_)) {
        return *value;
    }
    if (const auto* value = std::get_if<double>(&value_); value && *value > 0) {
        return integerFromDouble<std::uint64_t>(*value, twoTo64);
    }
    return static_cast<std::uint64_t>(integerValue());
}

double RKTNumber::doubleValue() const {
    return std::visit([](auto value) { return static_cast<double>(value); }, value_);
}

std::string RKTNumber::stringValue() const {
    if (const auto* value = std::get_if<double>(&value_)) {
        return textFromDouble(*value);
    }
    if (const auto* value = std::get_if<std::uint64_t>(&value_)) {
        return std::to_string(*value);
    }
    return std::to_string(integerValue());
}

std::size_t RKTNumber::hash() const {
    const auto value = std::visit([](auto held) { return Value(held); }, value_);
    return std::hash<std::uint64_t>()(value.bits ^ (static_cast<std::uint64_t>(value.kind) << 62));
}

bool RKTNumber::operator==(const RKTNumber& other) const {
    const auto valueOf = [](auto held) { return Value(held); };
    return std::visit(valueOf, value_) == std::visit(valueOf, other.value_);
}
