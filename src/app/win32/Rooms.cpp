#include "app/win32/Rooms.h"

#include "app/win32/RunTimeErrorBox.h"

namespace kestrelguard {

FormControls::FormControls(FormWindow& form)
    : optionGroup{form.Control(kPTO0), form.Control(kPTO1), form.Control(kPTO2)} {
    for (std::size_t index = 0; index < PTO.size(); ++index) {
        PTO[index].Attach(optionGroup[index], optionGroup);
    }
    constexpr ControlId boxes[] = {kKG_C0, kKG_C1, kKG_C2, kKG_C3, kKG_C4, kKG_C5};
    for (std::size_t index = 0; index < KG_C.size(); ++index) {
        KG_C[index].Attach(form.Control(boxes[index]));
    }
    cOpenM.Attach(form.Control(kCOpenM));
    popsToday.Attach(form.Control(kPopsToday));
    popStopsT.Attach(form.Control(kPopStopsT));
    SiteTXT.Attach(form.Control(kSiteTXT));
    siteLST.Attach(form.Control(kSiteLST));
    TitleBan.Attach(form.Control(kTitleBan));
    wash_F.Attach(form.Control(kWash_F));
    wash_CMB.Attach(form.Control(kWash_CMB));
    KG_IMGL = form.LoadTreeImages();
    tvBrowsers.Attach(form.Control(kTvBrowsers));
    tvBrowsers.UseImages(KG_IMGL.Get());
    ApplyCmd.Attach(form.Control(kApplyCmd));
    mnuPOP.Attach(form.TrayMenu(), kMnuPOP);
    mnuPOPCaption.Attach(form.TrayMenu(), kMnuPOP);
    WasherTimer.Attach(form.Handle());
}

Rooms::Rooms(FormWindow& form, TrayWindow& window, TrayPopup& trayMenu, BrowserMenu& browserMenu)
    : controls(form),
      siteList(controls.siteLST),
      folder(FolderOfProgram()),
      settings({{&controls.PTO[0], &controls.PTO[1], &controls.PTO[2]},
                controls.cOpenM,
                {&controls.KG_C[0], &controls.KG_C[1], &controls.KG_C[2], &controls.KG_C[3],
                 &controls.KG_C[4], &controls.KG_C[5]},
                siteList,
                siteSet,
                controls.TitleBan,
                titleKeywordSet,
                controls.wash_F,
                controls.wash_CMB},
               lasting, folder, locale),
      browserTree({controls.tvBrowsers, treeEvents, messages, browserWindows, browserMenu}),
      nodes(browserTree),
      popupState{controls.PTO[0], controls.PTO[1], controls.PTO[2], lasting.popupsStoppedTotal},
      trayIcon({popupState, tray, window, trayMenu, controls.mnuPOPCaption, controls.mnuPOP}),
      popupPolicy({popupState, trayIcon, controls.mnuPOP, controls.ApplyCmd, controls.popsToday,
                   controls.popStopsT, keyboard, boxes, locale}),
      siteBlocking({controls.KG_C[0], controls.SiteTXT, siteList, controls.siteLST, siteSet, nodes}),
      titleBlocking(
          {controls.KG_C[1], controls.TitleBan, titleKeywordSet, controls.ApplyCmd, nodes, boxes, locale}),
      savedCookiesFile(folder, locale, savedCookies),
      ieCache({cache, cache, memory, text, cacheWindows, locale, savedCookies}),
      cacheWalk(ieCache),
      cacheWindow({form.FormIcon(), cacheWalk, cacheWindows, locale, messages, savedCookies, savedCookiesFile,
                   ShowCookiesOnly, ShowRunTimeError}),
      washer({controls.KG_C[2], controls.KG_C[3], controls.KG_C[4], controls.KG_C[5], controls.wash_F,
              controls.wash_CMB, controls.WasherTimer, controls.ApplyCmd, cacheWalk, cacheWindows,
              cacheWindow, history, messages, lasting.WashMinutes, ShowCookiesOnly}),
      updateHost(form.Handle(), lasting),
      zev([&form](const RunTimeError& error) { ShowRunTimeError(form.Handle(), error); }),
      ZEV_PLI([&form](const RunTimeError& error) { ShowRunTimeError(form.Handle(), error); }),
      updateCheck(zev, ZEV_PLI, clock, locale, messages, formBoxes, updateHost, UpdateHost::Beginning()),
      events({siteBlocking, titleBlocking, popupPolicy, browserTree, updateCheck}),
      IEEvents1(events) {
    treeEvents.Attach(IEEvents1);
    formBoxes.Attach(form.Handle());
    zev.SetEvents(updateCheck.ZevEvents());
    ZEV_PLI.SetEvents(updateCheck.ZevPliEvents());
}

}  // namespace kestrelguard
