#pragma once

/// Every text of the browser tree that the user sees, and the pieces of its keys.
namespace kestrelguard::tree_texts {

inline constexpr wchar_t kAllInstances[] = L"All Instances";
inline constexpr wchar_t kWindowsBrowsers[] = L"Windows Browsers";
// Kept: a rebuild writes a trailing blank, the creation event none.
inline constexpr wchar_t kRebuiltBrowser[] = L"Browser ";
inline constexpr wchar_t kCreatedBrowser[] = L"Browser";
inline constexpr wchar_t kTitle[] = L"Title : ";
inline constexpr wchar_t kURL[] = L"URL : ";

// The root's key holds no "_", every other key does: the menu tells them apart by it.
inline constexpr wchar_t kRootKey[] = L"ROOT";
inline constexpr wchar_t kKeySeparator[] = L"_";
inline constexpr wchar_t kTitleSuffix[] = L"TITLE";
inline constexpr wchar_t kURLSuffix[] = L"URL";

}  // namespace kestrelguard::tree_texts
