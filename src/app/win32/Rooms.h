#pragma once

// The socket library's header stands before that of Windows.
#include "controls/win32/WinsockControl.h"
//
#include "app/SettingsPages.h"
#include "app/TrayIcon.h"
#include "app/win32/CacheWindowHost.h"
#include "app/win32/FormEvents.h"
#include "app/win32/FormWindow.h"
#include "app/win32/PlatformTray.h"
#include "app/win32/UpdateHost.h"
#include "blocking/SiteBlocking.h"
#include "blocking/TitleBlocking.h"
#include "browsertree/BrowserTree.h"
#include "browsertree/win32/PlatformBrowserWindows.h"
#include "controls/win32/ListDisplayControl.h"
#include "controls/win32/MenuControls.h"
#include "controls/win32/PlatformMessageBoxes.h"
#include "controls/win32/PlatformMessageLoop.h"
#include "controls/win32/TimerControl.h"
#include "controls/win32/TreeViewControl.h"
#include "controls/win32/Win32Controls.h"
#include "monitoring/win32/IEEvents.h"
#include "popup/PopupPolicy.h"
#include "popup/win32/AsyncKeyboard.h"
#include "privacy/KG_IECache.h"
#include "privacy/Washer.h"
#include "privacy/win32/ComUrlHistory.h"
#include "privacy/win32/PatientCacheWalk.h"
#include "privacy/win32/WinInetCache.h"
#include "runtime/LastingValues.h"
#include "runtime/TextSet.h"
#include "runtime/win32/Win32Locale.h"
#include "runtime/win32/Win32ProgramFolder.h"
#include "settings/SettingsStore.h"
#include "update/UpdateCheck.h"
#include "update/win32/UpdatePlatform.h"

namespace kestrelguard {

/// The controls of the form, each tied to its window.
struct FormControls {
    explicit FormControls(FormWindow& form);

    std::vector<HWND> optionGroup;
    std::array<OptionButtonControl, 3> PTO;
    CheckBoxControl cOpenM;
    std::array<CheckBoxControl, 6> KG_C;
    CaptionControl popsToday;
    CaptionControl popStopsT;
    TextBoxControl SiteTXT;
    ListDisplayControl siteLST;
    TextBoxControl TitleBan;
    TextBoxControl wash_F;
    DropDownControl wash_CMB;
    EnabledControl ApplyCmd;
    ImageList KG_IMGL;
    TreeViewControl tvBrowsers;
    MenuCheckMark mnuPOP;
    MenuCaption mnuPOPCaption;
    /// One tick a minute.
    TimerControl WasherTimer{1, 60000};
    /// A shell that has just started may not have its list of windows yet: how long it gets.
    TimerControl WatchAnewTimer{2, 2000};
};

/// The subsystems and how they are tied together. What a row names stands above it.
struct Rooms {
    explicit Rooms(FormWindow& form);

    FormControls controls;

    // What is shared.
    LastingValues lasting;
    SiteList siteList;
    TextSet siteSet;
    TextSet titleKeywordSet;
    Win32Locale locale;
    Win32ProgramFolder folder;
    PlatformMessageLoop messages;
    PlatformMessageBoxes boxes;

    // Settings.
    SettingsStore settings;

    // Browser windows view.
    TreeEventsControl treeEvents;
    PlatformBrowserWindows browserWindows;
    BrowserTree browserTree;
    TreeNodes nodes;

    // Popup control.
    AsyncKeyboard keyboard;
    PlatformTray tray;
    PopupState popupState;
    TrayIcon trayIcon;
    PopupPolicy popupPolicy;

    // Site and keyword blocking.
    SiteBlocking siteBlocking;
    TitleBlocking titleBlocking;

    // Privacy cleaning, the cache window and its saved cookies.
    bool ShowCookiesOnly = false;
    TextSet savedCookies;
    SavedCookiesStore savedCookiesFile;
    WinInetCache cache;
    KernelMemory memory;
    KernelText text;
    DesktopCacheWindows cacheWindows;
    KG_IECache ieCache;
    PatientCacheWalk cacheWalk;
    ComUrlHistory history;
    CacheWindowHost cacheWindow;
    Washer washer;

    // The settings pages.
    SettingsPages pages;

    // Update check.
    PlatformMessageBoxes formBoxes;
    PlatformClock clock;
    UpdateHost updateHost;
    WinsockControl zev;
    WinsockControl ZEV_PLI;
    UpdateCheck updateCheck;

    // Monitoring, last: nothing is heard before everything that acts on it is there, and nothing after.
    FormEvents events;
    IEEvents IEEvents1;
};

}  // namespace kestrelguard
