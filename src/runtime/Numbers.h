#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelguard {

/// The number that a text holds as a whole: blanks at either end, a sign, digits with a decimal point, an
/// exponent ("1e3"). Nothing when the text is anything else.
std::optional<double> NumberOf(std::wstring_view text);

/// Whether NumberOf finds a number.
bool IsNumeric(std::wstring_view text);

/// The number that a text begins with; blanks are passed over, the first character that cannot belong to
/// the number ends it. 0 when there is none.
double LeadingNumber(std::wstring_view text);

/// The nearest 32-bit integer, halves to the even neighbour. Throws kOverflow when it does not fit.
std::int32_t RoundToInteger(double value);

/// Sum and difference in 32 bits. Throw kOverflow instead of wrapping.
std::int32_t CheckedAdd(std::int32_t a, std::int32_t b);
std::int32_t CheckedSubtract(std::int32_t a, std::int32_t b);

/// Plain decimal digits, with a minus sign for a negative number.
std::wstring Decimal(std::int64_t value);

/// The patterns "###,###,##0" and "###,###,###": digits in groups of three; the second gives an empty text
/// for 0.
std::wstring Grouped(std::int32_t value, std::wstring_view separator);
std::wstring GroupedWithoutZero(std::int32_t value, std::wstring_view separator);

}  // namespace kestrelguard
