#include "runtime/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "runtime/RunTimeError.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

bool IsDigit(wchar_t character) noexcept {
    return character >= L'0' && character <= L'9';
}

/// A decimal number on its way to a double. Holds a bounded number of digits however long the text is: the
/// C library's parser takes quadratic time.
class DecimalNumber {
 public:
    void Negate() { m_negative = true; }

    void AddDigit(wchar_t digit, bool afterPoint) {
        if (m_digits.empty() && digit == L'0') {
            m_exponent -= afterPoint ? 1 : 0;  // a leading zero
            return;
        }
        if (m_digits.size() < kDigits) {
            m_digits += static_cast<char>(digit);
            m_exponent -= afterPoint ? 1 : 0;
            return;
        }
        m_exponent += afterPoint ? 0 : 1;
        m_more = m_more || digit != L'0';
    }

    void AddExponent(std::int64_t exponent) { m_exponent += exponent; }

    double Value() const {
        if (m_digits.empty()) {
            return m_negative ? -0.0 : 0.0;
        }
        // One more digit stands for all that were dropped. The program never sets a C locale, so the text
        // needs no point.
        const std::int64_t exponent = std::clamp<std::int64_t>(m_exponent - 1, -kNoDouble, kNoDouble);
        const std::string text = m_digits + (m_more ? '1' : '0') + 'e' + std::to_string(exponent);
        // Not strtod: the compiler's run-time library brings one of its own along, of twenty kilobytes.
        const double value = std::atof(text.c_str());  // NOLINT(cert-err34-c): the text is a number
        return m_negative ? -value : value;
    }

 private:
    /// No two neighbouring doubles have a middle of more digits.
    static constexpr std::size_t kDigits = 770;
    /// With this exponent 1 to 770 digits are 0 or infinite.
    static constexpr std::int64_t kNoDouble = 5000;

    std::string m_digits;
    std::int64_t m_exponent = 0;
    bool m_negative = false;
    bool m_more = false;
};

/// Reads the number at the beginning of the text and moves the text behind it. Nothing when there is no
/// digit before anything else. The C library's own parser follows the locale; this one must not.
std::optional<double> TakeNumber(std::wstring_view& text) {
    DecimalNumber number;
    std::size_t at = 0;
    const auto here = [&] { return at < text.size() ? text[at] : L'\0'; };
    if (here() == L'+' || here() == L'-') {
        if (text[at++] == L'-') {
            number.Negate();
        }
    }
    bool any = false;
    const auto takeDigits = [&](bool afterPoint) {
        for (; IsDigit(here()); ++at) {
            number.AddDigit(here(), afterPoint);
            any = true;
        }
    };
    takeDigits(false);
    if (here() == L'.') {
        ++at;
        takeDigits(true);
    }
    if (!any) {
        return std::nullopt;
    }
    if (here() == L'e' || here() == L'E') {
        const std::size_t mark = at++;
        const bool negative = here() == L'-';
        if (negative || here() == L'+') {
            ++at;
        }
        if (IsDigit(here())) {
            constexpr std::int64_t kEnough = std::numeric_limits<std::int64_t>::max() / 100;
            std::int64_t exponent = 0;
            for (; IsDigit(here()); ++at) {
                exponent = std::min(exponent * 10 + (here() - L'0'), kEnough);
            }
            number.AddExponent(negative ? -exponent : exponent);
        } else {
            at = mark;
        }
    }
    text.remove_prefix(at);
    return number.Value();
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

std::wstring Decimal(std::int64_t value) {
    std::wstring digits;
    std::uint64_t rest = value < 0 ? -static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    do {
        digits.insert(digits.begin(), static_cast<wchar_t>(L'0' + rest % 10));
        rest /= 10;
    } while (rest != 0);
    return value < 0 ? L"-" + digits : digits;
}

std::wstring Grouped(std::int32_t value, std::wstring_view separator) {
    const std::int64_t wide = value;
    const std::wstring digits = GroupDigits(Decimal(wide < 0 ? -wide : wide), separator);
    return wide < 0 ? L"-" + digits : digits;
}

std::wstring GroupedWithoutZero(std::int32_t value, std::wstring_view separator) {
    return value == 0 ? std::wstring() : Grouped(value, separator);
}

}  // namespace kestrelguard
