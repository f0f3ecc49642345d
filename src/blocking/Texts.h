#pragma once

/// Every text of the room that a user can see.
namespace kestrelguard::blocking_texts {

// Captions and first texts of the page "Safe Surfing". The spelling "Seperate" is meant.
inline constexpr wchar_t kBlockSitesCaption[] =
    L"Prevent the Following Internet Sites from loading in Internet Explorer...";
inline constexpr wchar_t kBlockTitlesCaption[] =
    L"Prevent Internet Sites with the following words in their Title from loading... Seperate multiple "
    L"keywords "
    L"by a space and a minus sign.";
inline constexpr wchar_t kSiteTxtHint[] = L"Type a new Site to prevent and click Add";
// What screen readers say where no text on the screen does.
inline constexpr wchar_t kSiteLstName[] = L"Prevented Internet Sites";
inline constexpr wchar_t kTitleBanName[] = L"Words in titles, separated by a space and a minus sign";
inline constexpr wchar_t kAddSiteCaption[] = L"Add";
inline constexpr wchar_t kRemoveSiteCaption[] = L"Remove";
inline constexpr wchar_t kTitleBanDefault[] = L"xxx -porn -sex";

inline constexpr wchar_t kAlreadyExists[] = L"Already Exists!";

// What the filters write into the tree of browsers, and the kinds of node.
inline constexpr wchar_t kAddressNode[] = L"URL : ";
inline constexpr wchar_t kAddressKind[] = L"URL";
inline constexpr wchar_t kTitleNode[] = L"Title : ";
inline constexpr wchar_t kTitleKind[] = L"TITLE";

// The page that takes the place of a blocked one; its parts stand around the product's address, the keyword,
// the address of the blocked page and the time. The attribute without quotes is meant.
inline constexpr wchar_t kPageBeforeProduct[] =
    L"about:<html><head><title>Kestrelguard - Blocked Site Access</title></head><body><a href=";
inline constexpr wchar_t kPageBeforeKeyword[] =
    L">Kestrelguard&#153;</a> Blocked access to the site due to keyword: <b><i>";
inline constexpr wchar_t kPageBeforeAddress[] = L"</i></b><BR><B>";
inline constexpr wchar_t kPageBeforeTime[] = L" at ";
inline constexpr wchar_t kPageEnd[] = L"</b></body></html>";

// The box that tells of a page that could not be replaced.
inline constexpr wchar_t kErrorBeforeNumber[] = L"Error Number: ";
inline constexpr wchar_t kErrorBeforeEmail[] = L", please report to ";
inline constexpr wchar_t kErrorAfterEmail[] = L"!\r\n";
inline constexpr wchar_t kErrorBeforeTitle[] = L" ";
inline constexpr wchar_t kErrorCaption[] = L"Kestrelguard Error!";

/// What stands between two keywords.
inline constexpr wchar_t kKeywordSeparator[] = L" -";

}  // namespace kestrelguard::blocking_texts
