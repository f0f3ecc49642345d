#pragma once

#include <windows.h>

#include <commctrl.h>

#include "app/Texts.h"
#include "app/win32/ControlIds.h"
#include "blocking/Texts.h"
#include "resource.h"

/// What lies where on the form Kestrelguard.
namespace kestrelguard::form_layout {

/// The size of the form's inside at 96 dpi.
inline constexpr int kFormWidth = 788;
inline constexpr int kFormHeight = 452;

/// Where the three pages lie in the form.
inline constexpr RECT kPageArea = {284, 36, 776, 392};

/// Where a control lives.
enum Place { kOnForm = -1, kPage1, kPage2, kPage3 };
inline constexpr int kPages = 3;

inline constexpr ControlId PageId(int page) {
    return static_cast<ControlId>(static_cast<int>(kKG_F0) + page);
}

struct ControlRow {
    ControlId id;
    Place place;
    const char* windowClass;
    const wchar_t* text;
    DWORD style;
    int x, y, width, height;
    bool bold = false;
};

inline constexpr DWORD kLabel = SS_LEFT | SS_NOPREFIX;
inline constexpr DWORD kRule = SS_ETCHEDHORZ;
inline constexpr DWORD kPicture = SS_ICON | SS_REALSIZEIMAGE;
inline constexpr DWORD kOption = BS_AUTORADIOBUTTON;
inline constexpr DWORD kBox = BS_AUTOCHECKBOX | WS_TABSTOP;
inline constexpr DWORD kButton = BS_PUSHBUTTON | WS_TABSTOP;
inline constexpr DWORD kEdit = ES_AUTOHSCROLL | WS_TABSTOP;

/// Every control in the order of its creation, which is the tab order and the order of reading. Positions are
/// pixels at 96 dpi.
inline constexpr ControlRow kControls[] = {
    {kWinInstImg, kOnForm, "Static", L"", kPicture, 12, 12, 16, 16},
    {kBrowseLBL, kOnForm, "Static", texts::kBrowseLBL, kLabel, 30, 13, 244, 16, true},
    {kTvBrowsers, kOnForm, WC_TREEVIEWA, L"",
     WS_TABSTOP | WS_BORDER | TVS_HASLINES | TVS_LINESATROOT | TVS_HASBUTTONS | TVS_SHOWSELALWAYS, 12, 34,
     262, 338},
    {kHintLBL, kOnForm, "Static", texts::kHint, kLabel, 12, 376, 262, 16},
    // The strip alone: the pages below it are windows of their own, so that Tab goes from the strip into the
    // page.
    {kKGTabs, kOnForm, WC_TABCONTROLA, L"", WS_TABSTOP, 284, 12, 492, 24},

    {kPopPIC, kPage1, "Static", L"", kPicture, 14, 14, 32, 32},
    {kPreLBL, kPage1, "Static", texts::kPreLBL, kLabel, 58, 22, 400, 18, true},
    {kPTO0, kPage1, "Button", texts::kPTO0, kOption | WS_GROUP | WS_TABSTOP, 58, 46, 400, 20},
    {kPTO1, kPage1, "Button", texts::kPTO1, kOption, 58, 70, 400, 20},
    {kPTO2, kPage1, "Button", texts::kPTO2, kOption, 58, 94, 400, 20},
    {kLine, kPage1, "Static", L"", kRule | WS_GROUP, 14, 130, 452, 2},
    {kImage1, kPage1, "Static", L"", kPicture, 14, 146, 32, 32},
    {kStartOPT, kPage1, "Static", texts::kStartOPT, kLabel, 58, 154, 400, 18, true},
    {kCOpenM, kPage1, "Button", texts::kCOpenM, kBox, 58, 178, 400, 20},
    {kLine, kPage1, "Static", L"", kRule, 14, 214, 452, 2},
    {kStopToday, kPage1, "Static", texts::kStopToday, kLabel, 58, 234, 220, 18},
    {kPopsToday, kPage1, "Static", texts::kZero, kLabel, 282, 234, 150, 18, true},
    {kPOPTotal, kPage1, "Static", texts::kPOPTotal, kLabel, 58, 260, 220, 18},
    {kPopStopsT, kPage1, "Static", texts::kZero, kLabel, 282, 260, 150, 18, true},

    {kKG_C0, kPage2, "Button", blocking_texts::kBlockSitesCaption, kBox | BS_MULTILINE, 14, 12, 454, 20},
    {kSiteTXT, kPage2, "Edit", L"", kEdit, 32, 40, 334, 22},
    {kAddSite, kPage2, "Button", blocking_texts::kAddSiteCaption, kButton, 376, 38, 92, 26},
    {kSiteLST, kPage2, "ListBox", L"",
     LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | LBS_HASSTRINGS | WS_VSCROLL | WS_HSCROLL | WS_TABSTOP, 32, 70, 334,
     144},
    {kRemoveSite, kPage2, "Button", blocking_texts::kRemoveSiteCaption, kButton, 376, 70, 92, 26},
    {kSsGearImg, kPage2, "Static", L"", kPicture, 406, 178, 32, 32},
    {kLine, kPage2, "Static", L"", kRule, 14, 230, 452, 2},
    {kKG_C1, kPage2, "Button", blocking_texts::kBlockTitlesCaption, kBox | BS_MULTILINE | BS_TOP, 14, 244,
     454, 38},
    {kTitleBan, kPage2, "Edit", blocking_texts::kTitleBanDefault, kEdit, 32, 288, 434, 22},

    {kImage2, kPage3, "Static", L"", kPicture, 14, 16, 32, 32},
    {kClearIEC, kPage3, "Button", texts::kClearIEC, kButton, 58, 18, 240, 28},
    {kKG_C2, kPage3, "Button", texts::kCheck1, kBox, 310, 24, 15, 16},
    {kShowIEC, kPage3, "Button", texts::kShowIEC, kButton, 340, 18, 128, 28},
    {kIE_Hist, kPage3, "Static", L"", kPicture, 14, 62, 32, 32},
    {kClearIEH, kPage3, "Button", texts::kClearIEH, kButton, 58, 64, 240, 28},
    {kKG_C3, kPage3, "Button", texts::kCheck1, kBox, 310, 70, 15, 16},
    {kIE_WbFold, kPage3, "Static", L"", kPicture, 14, 108, 32, 32},
    {kClearIECookies, kPage3, "Button", texts::kClearIECookies, kButton, 58, 110, 240, 28},
    {kKG_C4, kPage3, "Button", texts::kCheck1, kBox, 310, 116, 15, 16},
    {kShowIECookies, kPage3, "Button", texts::kShowIECookies, kButton, 340, 110, 128, 28},
    {kLine, kPage3, "Static", L"", kRule, 14, 158, 452, 2},
    {kKG_C5, kPage3, "Button", texts::kKG_C5, kBox, 58, 178, 166, 20},
    {kWash_F, kPage3, "Edit", texts::kWash_F, kEdit, 228, 177, 60, 22},
    {kWash_CMB, kPage3, "ComboBox", L"", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 296, 176, 110, 120},

    {kQuestB, kOnForm, "Button", texts::kQuestion, kButton, 12, 410, 30, 28},
    {kOKcmd, kOnForm, "Button", texts::kOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 512, 410, 82, 28},
    {kCancelcmd, kOnForm, "Button", texts::kCancel, kButton, 603, 410, 82, 28},
    {kApplyCmd, kOnForm, "Button", texts::kApply, kButton, 694, 410, 82, 28},
};

inline constexpr const wchar_t* kTabs[] = {texts::kTab1, texts::kTab2, texts::kTab3};

inline constexpr const wchar_t* kWashUnits[] = {texts::kMinutes, texts::kHours, texts::kDays};

struct PictureRow {
    ControlId id;
    int resource;
    int size;  // pixels at 96 dpi
};

inline constexpr PictureRow kPictureRows[] = {
    {kWinInstImg, IDI_WINDOWS, 16},  {kPopPIC, IDI_POPUP, 32}, {kImage1, IDI_STARTUP, 32},
    {kSsGearImg, IDI_GEAR, 32},      {kImage2, IDI_BROOM, 32}, {kIE_Hist, IDI_HISTORY, 32},
    {kIE_WbFold, IDI_WEBFOLDER, 32},
};

struct TipRow {
    ControlId id;
    const wchar_t* text;
};

inline constexpr TipRow kTipRows[] = {{kSiteTXT, blocking_texts::kSiteTxtHint},
                                      {kKG_C2, texts::kCheck1Tip},
                                      {kKG_C3, texts::kCheck1Tip},
                                      {kKG_C4, texts::kCheck1Tip}};

struct NameRow {
    ControlId id;
    const wchar_t* name;
};

/// For screen readers: whatever has no text of its own and no label right before it.
inline constexpr NameRow kNameRows[] = {{kKGTabs, texts::kTabsName},
                                        {kSiteTXT, blocking_texts::kSiteTxtHint},
                                        {kSiteLST, blocking_texts::kSiteLstName},
                                        {kTitleBan, blocking_texts::kTitleBanName},
                                        {kKG_C2, texts::kCacheBoxName},
                                        {kKG_C3, texts::kHistoryBoxName},
                                        {kKG_C4, texts::kCookiesBoxName},
                                        {kWash_F, texts::kWash_FName},
                                        {kWash_CMB, texts::kWash_CMBName}};

}  // namespace kestrelguard::form_layout
