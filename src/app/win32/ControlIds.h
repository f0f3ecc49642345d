#pragma once

namespace kestrelguard {

/// The form's controls. 1 and 2 are what Enter and Esc send; every other id starts at 100.
enum ControlId : int {
    kNone = 0,
    kOKcmd = 1,
    kCancelcmd = 2,

    kWinInstImg = 100,
    kBrowseLBL,
    kTvBrowsers,
    kHintLBL,
    kKGTabs,
    kKG_F0,
    kKG_F1,
    kKG_F2,

    kPopPIC,
    kPreLBL,
    kPTO0,
    kPTO1,
    kPTO2,
    kLine,
    kImage1,
    kStartOPT,
    kCOpenM,
    kStopToday,
    kPopsToday,
    kPOPTotal,
    kPopStopsT,

    kKG_C0,
    kSiteTXT,
    kAddSite,
    kSiteLST,
    kRemoveSite,
    kKG_C1,
    kTitleBan,
    kSsGearImg,

    kImage2,
    kClearIEC,
    kShowIEC,
    kKG_C2,
    kIE_Hist,
    kClearIEH,
    kKG_C3,
    kIE_WbFold,
    kClearIECookies,
    kShowIECookies,
    kKG_C4,
    kKG_C5,
    kWash_F,
    kWash_CMB,

    kQuestB,
    kApplyCmd,

    kMnuHelp = 300,
    kMnuPOP,
    kMnuIEC,
    kMnuIECook,
    kMnuShow,
    kMnuExit,
    kMnuSB,
    kMnuCB,
};

static_assert(kPTO2 == kPTO0 + 2 && kKG_C1 != kKG_C0);

}  // namespace kestrelguard
