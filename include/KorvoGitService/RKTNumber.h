// A boxed number: what a service reported, as the type in which it reported it.

#ifndef KORVOGITSERVICE_RKTNUMBER_H
#define KORVOGITSERVICE_RKTNUMBER_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "KorvoGitService/RKTExport.h"

/// A boolean, a signed or unsigned 64-bit integer, or a floating-point number. A record holds it in
/// a std::optional, so that "not reported" stays distinct from zero and false.
///
/// Two numbers are equal when their values are, whatever their types: true, 1 and 1.0 are equal and
/// hash alike. The comparison is exact; an integer is never rounded to a double for it. NaN equals
/// NaN, so that a number always equals its copy.
class RKT_EXPORT RKTNumber {
public:
    /// Which of the four it is. Values compare without regard to it.
    enum class Type { Boolean, Signed, Unsigned, Floating };

    /// A boolean, as JSON's true and false are. A template, so that a pointer, and with it a
    /// literal text, is no number.
    template <std::same_as<bool> T>
    RKTNumber(T value) : value_(value) {}
    /// Any signed integer, kept exactly.
    template <std::signed_integral T>
    RKTNumber(T value) : value_(static_cast<std::int64_t>(value)) {}
    /// Any unsigned integer but a boolean, kept exactly.
    template <std::unsigned_integral T>
        requires(!std::same_as<T, bool>)
    RKTNumber(T value) : value_(static_cast<std::uint64_t>(value)) {}
    /// A floating-point number; NaN and the infinities are kept too.
    RKTNumber(double value) : value_(value) {}

    /// What the number was made from: JSON's 1 is Signed, 1.0 Floating.
    Type type() const;

    /// False for zero, true for everything else (NaN included).
    bool boolValue() const;

    /// Truncated toward zero and clamped to the range; NaN is 0, true is 1.
    std::int64_t integerValue() const;

    /// Truncated toward zero and clamped to the range, except that a negative integer wraps (-1 is
    /// the largest value), which is how a negative page number becomes a very large one rather than
    /// an error.
    std::uint64_t unsignedIntegerValue() const;

    /// The nearest floating-point number; true is 1.
    double doubleValue() const;

    /// Decimal text, independent of the locale; true is "1". A floating-point number is the
    /// shortest text that reads back as the same number.
    std::string stringValue() const;

    /// Alike for numbers that are equal.
    std::size_t hash() const;

    /// By value, exactly; see above.
    bool operator==(const RKTNumber& other) const;

private:
    std::variant<bool, std::int64_t, std::uint64_t, double> value_;
};

template <>
struct std::hash<RKTNumber> {
    std::size_t operator()(const RKTNumber& number) const { return number.hash(); }
};

#endif
