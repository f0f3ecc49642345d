#include "runtime/Numbers.h"

#include <cmath>
#include <limits>

#include "runtime/RunTimeError.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

bool IsDigit(wchar_t character) noexcept {
    return character >= L'0' && character <= L'9';
}

/// Reads the number at the beginning of the text and moves the text behind it. Nothing when there is no
/// digit before anything else. The C library's own parser follows the locale; this one must not.
std::optional<double> TakeNumber(std::wstring_view& text) {
    std::string digits;
    std::size_t at = 0;
    const auto here = [&] { return at < text.size() ? text[at] : L'\0'; };
    if (here() == L'+' || here() == L'-') {
        digits += static_cast<char>(text[at++]);
    }
    bool any = false;
    const auto takeDigits = [&] {
        for (; IsDigit(here()); ++at) {
            digits += static_cast<char>(here());
            any = true;
        }
    };
    takeDigits();
    if (here() == L'.') {
        digits += '.';
        ++at;
        takeDigits();
    }
    if (!any) {
        return std::nullopt;
    }
    if (here() == L'e' || here() == L'E') {
        const std::size_t mark = at++;
        std::string exponent = "e";
        if (here() == L'+' || here() == L'-') {
            exponent += static_cast<char>(text[at++]);
        }
        if (IsDigit(here())) {
            for (; IsDigit(here()); ++at) {
                exponent += static_cast<char>(here());
            }
            digits += exponent;
        } else {
            at = mark;
        }
    }
    text.remove_prefix(at);
    // The program never sets a C locale, so the decimal point is a point.
    return std::strtod(digits.c_str(), nullptr);
}

std::wstring GroupDigits(std::wstring digits, std::wstring_view separator) {
    for (std::size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, separator);
    }
    return digits;
}

}  // namespace

std::optional<double> NumberOf(std::wstring_view text) {
    text = Trim(text);
    const std::optional<double> number = TakeNumber(text);
    if (!text.empty() || (number && !std::isfinite(*number))) {
        return std::nullopt;
    }
    return number;
}

bool IsNumeric(std::wstring_view text) {
    return NumberOf(text).has_value();
}

double LeadingNumber(std::wstring_view text) {
    std::wstring packed;
    for (const wchar_t character : text) {
        if (character == L' ' || character == L'\t') {
            continue;
        }
        if (!IsDigit(character) && std::wstring_view(L"+-.eE").find(character) == std::wstring_view::npos) {
            break;
        }
        packed += character;
    }
    std::wstring_view rest = packed;
    return TakeNumber(rest).value_or(0.0);
}

std::int32_t RoundToInteger(double value) {
    // The default rounding mode is to the nearest, halves to even.
    const double rounded = std::nearbyint(value);
    if (!(rounded >= std::numeric_limits<std::int32_t>::min() &&
          rounded <= std::numeric_limits<std::int32_t>::max())) {
        throw RunTimeError(RunTimeError::kOverflow);
    }
    return static_cast<std::int32_t>(rounded);
}

std::int32_t CheckedAdd(std::int32_t a, std::int32_t b) {
    std::int32_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) {
        throw RunTimeError(RunTimeError::kOverflow);
    }
    return sum;
}

std::int32_t CheckedSubtract(std::int32_t a, std::int32_t b) {
    std::int32_t difference = 0;
    if (__builtin_sub_overflow(a, b, &difference)) {
        throw RunTimeError(RunTimeError::kOverflow);
    }
    return difference;
}

std::wstring Decimal(std::int32_t value) {
    return std::to_wstring(value);
}

std::wstring Grouped(std::int32_t value, std::wstring_view separator) {
    const std::int64_t wide = value;
    const std::wstring digits = GroupDigits(std::to_wstring(wide < 0 ? -wide : wide), separator);
    return wide < 0 ? L"-" + digits : digits;
}

std::wstring GroupedWithoutZero(std::int32_t value, std::wstring_view separator) {
    return value == 0 ? std::wstring() : Grouped(value, separator);
}

}  // namespace kestrelguard
