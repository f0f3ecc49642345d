#pragma once

/// The texts of the main window, its pages and its menus.
namespace kestrelguard::texts {

inline constexpr wchar_t kProgramName[] = L"Kestrelguard";

// The form.
inline constexpr wchar_t kFormCaption[] = L"Kestrelguard v";
inline constexpr wchar_t kBrowseLBL[] = L"   Windows Internet Explorer Instances";  // kept: three blanks
inline constexpr wchar_t kHint[] = L"Right Click for more options...";
inline constexpr wchar_t kOK[] = L"OK";
inline constexpr wchar_t kCancel[] = L"Cancel";
inline constexpr wchar_t kApply[] = L"Apply";
inline constexpr wchar_t kQuestion[] = L"?";
inline constexpr wchar_t kTab1[] = L"\"Hushpane\" Technology";
inline constexpr wchar_t kTab2[] = L"Safe Surfing";
inline constexpr wchar_t kTab3[] = L"Privacy Protection";

// Page 1.
inline constexpr wchar_t kPreLBL[] = L"Prevent or Allow Internet Popups";
// The quotation marks belong to the caption.
inline constexpr wchar_t kPTO0[] = L"Prevent New Browser Windows - \"Hushpane\"";
inline constexpr wchar_t kPTO1[] = L"Prompt me for New Browser Windows";
inline constexpr wchar_t kPTO2[] = L"Enable New Browser Windows";
inline constexpr wchar_t kStartOPT[] = L"Startup Options";
inline constexpr wchar_t kCOpenM[] = L"Open Kestrelguard Minimized (in the system tray)";
inline constexpr wchar_t kStopToday[] = L"New Browsers Stopped Today:";
inline constexpr wchar_t kPOPTotal[] = L"New Browsers Stopped Total:";
inline constexpr wchar_t kZero[] = L"0";

// Page 3.
inline constexpr wchar_t kClearIEC[] = L"Clear Internet Explorer Cache Now";
inline constexpr wchar_t kClearIEH[] = L"Clear Internet Eplorer History Now";  // kept: "Eplorer"
inline constexpr wchar_t kClearIECookies[] = L"Clear Internet Explorer Cookies Now";
inline constexpr wchar_t kShowIEC[] = L"Show Cache";
inline constexpr wchar_t kShowIECookies[] = L"Show Cookies";
inline constexpr wchar_t kCheck1[] = L"Check1";  // kept: the boxes are too narrow to show it
inline constexpr wchar_t kCheck1Tip[] = L"Include in the automatic cleaning";
// What screen readers say where no text on the screen does.
inline constexpr wchar_t kTabsName[] = L"Pages of settings";
inline constexpr wchar_t kCacheBoxName[] = L"Include the cache in the automatic cleaning";
inline constexpr wchar_t kHistoryBoxName[] = L"Include the history in the automatic cleaning";
inline constexpr wchar_t kCookiesBoxName[] = L"Include the cookies in the automatic cleaning";
inline constexpr wchar_t kWash_FName[] = L"Clear automatically every: number";
inline constexpr wchar_t kWash_CMBName[] = L"Clear automatically every: unit";
inline constexpr wchar_t kKG_C5[] = L"Clear Automatically every";
inline constexpr wchar_t kWash_F[] = L"60";
inline constexpr wchar_t kMinutes[] = L"Minute/s";
inline constexpr wchar_t kHours[] = L"Hour/s";
inline constexpr wchar_t kDays[] = L"Day/s";

// The tray menu.
inline constexpr wchar_t kMnuHelp[] = L"Kestrelguard Help";
inline constexpr wchar_t kMnuPOP[] = L"Prevent Popups =";
inline constexpr wchar_t kMnuPOPBeforeCount[] = L"Prevent Popups = ";  // while the menu is open
inline constexpr wchar_t kMnuIEC[] = L"Clear Internet Cache";
inline constexpr wchar_t kMnuIECook[] = L"Clear Internet Cookies";
inline constexpr wchar_t kMnuShow[] = L"Show Kestrelguard";
inline constexpr wchar_t kMnuExit[] = L"Exit";

// The tree's menu.
inline constexpr wchar_t kMnuSB[] = L"Show this Browser Window";
inline constexpr wchar_t kMnuCB[] = L"Close this Browser Window";

// Boxes.
inline constexpr wchar_t kRunTimeError[] = L"Run-time error '";
inline constexpr wchar_t kHelpScheme[] = L"http://";
inline constexpr wchar_t kHelpPage[] = L"/KG/help";

}  // namespace kestrelguard::texts
