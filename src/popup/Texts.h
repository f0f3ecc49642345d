#pragma once

/// Every text of the new-window policy that the user sees.
namespace kestrelguard::popup_texts {

inline constexpr wchar_t kQuestion[] = L"A New Browser Window is attempting to open, allow it?";
inline constexpr wchar_t kQuestionEnd[] = L"...";
inline constexpr wchar_t kQuestionCaption[] = L"Kestrelguard New Browser Window Prompt!";

// The tray tip: the product's name with its leading blank (meant), the major version, then one of three.
inline constexpr wchar_t kTipProduct[] = L" Kestrelguard v";
inline constexpr wchar_t kTipPreventing[] = L" - Preventing Popups: ";
inline constexpr wchar_t kTipPrompting[] = L" - Prompting for Popups: ";
inline constexpr wchar_t kTipAllowing[] = L" - Allowing Popups.";

}  // namespace kestrelguard::popup_texts
