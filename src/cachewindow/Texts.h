#pragma once

/// The cache window's own texts. What a walk writes into it (the counts, the details) is made with the walk.
namespace kestrelguard::cache_texts {

// Captions.
inline constexpr wchar_t kAllCache[] = L"All Cache";
inline constexpr wchar_t kFind[] = L"<- Find";
inline constexpr wchar_t kShowCook[] = L"Cookies";
inline constexpr wchar_t kRefreshIE[] = L"<- Refresh";
inline constexpr wchar_t kClearIENow[] = L"<- Clear";
inline constexpr wchar_t kRemoveC[] = L"<- Remove";
inline constexpr wchar_t kSaveC[] = L"Save ->";
inline constexpr wchar_t kCacheDetail[] = L"Cache File:";
inline constexpr wchar_t kFndLBL[] = L"Find Internet Cache Containing:";
inline constexpr wchar_t kIECookiesS[] = L"IE Saved Cookies List";
inline constexpr wchar_t kLoading[] = L"Internet Explorer Cache Files loading, please wait...";
inline constexpr wchar_t kClearing[] = L"Internet Explorer Cache Files clearing, please wait...";

// Tool tips.
inline constexpr wchar_t kAllCacheTip[] = L"Click here to show all your internet cache files.";
inline constexpr wchar_t kFindTip[] = L"Click here to find internet cache containing...";
inline constexpr wchar_t kFndTXTTip[] = L"Type the text to find in the cache here.";
inline constexpr wchar_t kShowCookTip[] = L"Click here to show only cookies in your cache.";
inline constexpr wchar_t kRefreshIETip[] = L"Click here to refresh the IE Cache...";
inline constexpr wchar_t kClearIENowTip[] = L"Click here to clear the IE Cache NOW.";
inline constexpr wchar_t kRemoveCTip[] = L"To remove a cookie, select from the list on the right...";
inline constexpr wchar_t kSaveCTip[] = L"To save a cookie, select from the list on the left...";

// While finding. The blanks at the ends are meant.
inline constexpr wchar_t kFindAfterNothing[] = L"<- Find ";
inline constexpr wchar_t kFindAgain[] = L"<- F. Again ";
inline constexpr wchar_t kFindTipForEmptyText[] = L" Find Internet Cache...";
inline constexpr wchar_t kFindTipAfterNothing[] = L" Click here to find internet cache containing...";
inline constexpr wchar_t kFindAgainTipBegin[] = L" Find \"";
inline constexpr wchar_t kFindAgainTipEnd[] = L"\" Again...";
inline constexpr wchar_t kNoMatchesBegin[] = L" No matches for \"";
inline constexpr wchar_t kNoMatchesEnd[] = L"\" found...";
inline constexpr wchar_t kNoMoreMatchesBegin[] = L" No more matches for \"";
inline constexpr wchar_t kNoMoreMatchesEnd[] = L"\" ...";

// Questions. The application's title stands on the boxes that only tell.
inline constexpr wchar_t kApplication[] = L"Kestrelguard";
inline constexpr wchar_t kConfirmCookies[] = L"Kestrelguard - Confirm Cookies Deletion!";
inline constexpr wchar_t kConfirmCache[] = L"Kestrelguard - Confirm Cache Deletion!";
inline constexpr wchar_t kAskCookies[] = L"Are you sure you want to delete your unsaved internet Cookies?";
inline constexpr wchar_t kAskCache[] = L"Are you sure you want to delete your temporary internet files?";
inline constexpr wchar_t kAskEntry[] = L"Delete this Internet Explorer Cache Entry now?\r\n";
inline constexpr wchar_t kCutMark[] = L"...";

}  // namespace kestrelguard::cache_texts
