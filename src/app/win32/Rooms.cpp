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
    ApplyCmd.Attach(form.Control(kApplyCmd), form.Control(kOKcmd));
    mnuPOP.Attach(form.TrayMenuHandle(), kMnuPOP);
    mnuPOPCaption.Attach(form.TrayMenuHandle(), kMnuPOP);
    WasherTimer.Attach(form.Handle());
    WatchAnewTimer.Attach(form.Handle());
}

Rooms::Rooms(FormWindow& form)
    : controls(form),
      siteList(controls.siteLST),
      folder(FolderOfProgram()),
      settings({.PTO = {&controls.PTO[0], &controls.PTO[1], &controls.PTO[2]},
                .cOpenM = controls.cOpenM,
                .KG_C = {&controls.KG_C[0], &controls.KG_C[1], &controls.KG_C[2], &controls.KG_C[3],
                         &controls.KG_C[4], &controls.KG_C[5]},
                .siteLST = siteList,
                .siteSet = siteSet,
                .TitleBan = controls.TitleBan,
                .titleKeywordSet = titleKeywordSet,
                .wash_F = controls.wash_F,
                .wash_CMB = controls.wash_CMB},
               lasting, folder, locale),
      browserTree({.tvBrowsers = controls.tvBrowsers,
                   .IEEvents1 = treeEvents,
                   .messageLoop = messages,
                   .windows = browserWindows,
                   .bMnu = form.BMnu()}),
      nodes(browserTree),
      popupState{.prevent = controls.PTO[0],
                 .prompt = controls.PTO[1],
                 .allow = controls.PTO[2],
                 .popupsStoppedTotal = lasting.popupsStoppedTotal},
      trayIcon({.state = popupState,
                .shell = tray,
                .window = form,
                .mnuM = form.MnuM(),
                .mnuPOPCaption = controls.mnuPOPCaption,
                .mnuPOP = controls.mnuPOP}),
      popupPolicy({.state = popupState,
                   .trayTip = trayIcon,
                   .mnuPOP = controls.mnuPOP,
                   .ApplyCmd = controls.ApplyCmd,
                   .popsToday = controls.popsToday,
                   .popStopsT = controls.popStopsT,
                   .keyboard = keyboard,
                   .messageBoxes = boxes,
                   .locale = locale}),
      siteBlocking({.blockSites = controls.KG_C[0],
                    .siteTXT = controls.SiteTXT,
                    .siteLST = siteList,
                    .siteSelection = controls.siteLST,
                    .siteSet = siteSet,
                    .nodes = nodes}),
      titleBlocking({.blockTitles = controls.KG_C[1],
                     .titleBan = controls.TitleBan,
                     .titleKeywordSet = titleKeywordSet,
                     .applyCmd = controls.ApplyCmd,
                     .nodes = nodes,
                     .boxes = boxes,
                     .locale = locale}),
      savedCookiesFile(folder, locale, savedCookies),
      ieCache({.cache = cache,
               .groups = cache,
               .memory = memory,
               .text = text,
               .windows = cacheWindows,
               .locale = locale,
               .savedCookies = savedCookies}),
      cacheWalk(ieCache),
      cacheWindow({.icons = form.FormIcons(),
                   .cache = cacheWalk,
                   .windows = cacheWindows,
                   .locale = locale,
                   .messages = messages,
                   .savedCookies = savedCookies,
                   .savedCookiesFile = savedCookiesFile,
                   .ShowCookiesOnly = ShowCookiesOnly,
                   .showError = ShowRunTimeError}),
      washer({.washCache = controls.KG_C[2],
              .washHistory = controls.KG_C[3],
              .washCookies = controls.KG_C[4],
              .washAuto = controls.KG_C[5],
              .wash_F = controls.wash_F,
              .wash_CMB = controls.wash_CMB,
              .timer = controls.WasherTimer,
              .ApplyCmd = controls.ApplyCmd,
              .cache = cacheWalk,
              .cacheWindows = cacheWindows,
              .cacheWindowOpener = cacheWindow,
              .history = history,
              .messages = messages,
              .WashMinutes = lasting.WashMinutes,
              .ShowCookiesOnly = ShowCookiesOnly}),
      pages({.frames = form,
             .window = form,
             .ApplyCmd = controls.ApplyCmd,
             .popsToday = controls.popsToday,
             .popStopsT = controls.popStopsT,
             .locale = locale,
             .popups = popupState,
             .titleBlocking = titleBlocking,
             .settings = settings,
             .washer = washer}),
      updateHost(form.Handle(), lasting, settings),
      zev([&form](const RunTimeError& error) { ShowRunTimeError(form.Handle(), error); }),
      ZEV_PLI([&form](const RunTimeError& error) { ShowRunTimeError(form.Handle(), error); }),
      updateCheck({.zev = zev,
                   .ZEV_PLI = ZEV_PLI,
                   .clock = clock,
                   .locale = locale,
                   .messages = messages,
                   .boxes = formBoxes,
                   .program = updateHost},
                  UpdateHost::Beginning()),
      events({.siteBlocking = siteBlocking,
              .titleBlocking = titleBlocking,
              .popupPolicy = popupPolicy,
              .browserTree = browserTree,
              .updateCheck = updateCheck}),
      IEEvents1(events) {
    treeEvents.Attach(IEEvents1);
    formBoxes.Attach(form.Handle());
    zev.SetEvents(updateCheck.ZevEvents());
    ZEV_PLI.SetEvents(updateCheck.ZevPliEvents());
}

}  // namespace kestrelguard
