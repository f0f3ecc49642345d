#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Program text as bytes, so that every build searches the same narrow texts.
///
/// A unit below 0x80 is one byte; any other is a lead byte that tells the length, and bytes 0x80 to 0xBF.
/// No unit's bytes begin within another's: one text occurs in another exactly when its bytes do. Every unit
/// has bytes, a lone surrogate and NUL too, so the text can be had back.
namespace kestrelguard::site_text {

void Append(std::string& bytes, std::wstring_view text);

std::wstring TextOf(std::string_view bytes);
/// The same behind what is there.
void AppendTextOf(std::string_view bytes, std::wstring& text);

/// Lower-cases addresses into a buffer that is used again for the next one.
class LowerCased {
 public:
    /// The bytes of the lower-cased text, valid until the next call.
    std::string_view operator()(std::wstring_view text);

 private:
    std::vector<char> m_buffer;
};

}  // namespace kestrelguard::site_text
