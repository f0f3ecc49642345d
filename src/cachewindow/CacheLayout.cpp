#include "cachewindow/CacheLayout.h"

#include <initializer_list>

namespace kestrelguard {

namespace {

constexpr std::int64_t kTwipsAnInch = 1440;

}  // namespace

std::int32_t PixelsOfTwips(std::int32_t twips, std::int32_t dpi) {
    return static_cast<std::int32_t>((std::int64_t{twips} * dpi + kTwipsAnInch / 2) / kTwipsAnInch);
}

std::int32_t TwipsOfPixels(std::int32_t pixels, std::int32_t dpi) {
    return static_cast<std::int32_t>((pixels * kTwipsAnInch + dpi / 2) / dpi);
}

std::int32_t WindowPixels(std::int32_t twips, std::int32_t dpi) {
    return static_cast<std::int32_t>(std::int64_t{twips} * dpi / kTwipsAnInch);
}

CacheLayout InitialCacheLayout() {
    CacheLayout layout;
    // The heights of the rules leave the lists these tops, and the details three lines of text.
    layout.kg_CLST = {120, 330, 0, 0};
    layout.savecLST = {0, 330, 0, 0};
    // The details end before the saved cookies at any width: the rules bring those nearest, to 7196, where
    // the window is one twip above its smallest width.
    layout.CacheDetail = {120, 0, 7065, 645};
    layout.IECacheLBL = {120, 75, 6060, 240};
    layout.IECookiesS = {0, 75, 2700, 240};
    // One column of buttons right of the list, those for the saved cookies apart.
    layout.AllCache = {0, 330, 1215, 375};
    layout.ShowCook = {0, 735, 1215, 375};
    layout.RefreshIE = {0, 1140, 1215, 375};
    layout.ClearIENow = {0, 1545, 1215, 375};
    layout.SaveC = {0, 2250, 1215, 375};
    layout.RemoveC = {0, 2655, 1215, 375};
    layout.fndLBL = {120, 0, 2520, 240};
    layout.fndTXT = {0, 0, 0, 300};
    layout.fndCache = {0, 0, 1215, 315};
    return ResizedCacheLayout(layout, kCacheWindowWidth, kCacheWindowHeight);
}

CacheLayout ResizedCacheLayout(const CacheLayout& before, std::int32_t width, std::int32_t height) {
    CacheLayout after = before;
    if (width > kCacheWindowWidth && height > kCacheWindowHeight) {
        after.width = width;
        after.height = height;
        after.kg_CLST.width = width - 4600;
    } else {
        // Kept: "at or below" snaps back, both dimensions at once, and the list gets 6060, not the 5825 of
        // the rule above.
        after.width = kCacheWindowWidth;
        after.height = kCacheWindowHeight;
        after.kg_CLST.width = 6060;
    }
    const std::int32_t listWidth = after.kg_CLST.width;
    after.kg_CLST.height = after.height - 1200 - after.CacheDetail.height;
    after.savecLST.height = after.height - 740;
    for (TwipsRect* button : {&after.SaveC, &after.RemoveC, &after.ShowCook, &after.RefreshIE,
                              &after.ClearIENow, &after.AllCache}) {
        button->left = listWidth + 135;
    }
    after.fndTXT.left = after.fndLBL.left + after.fndLBL.width - 125;
    after.fndTXT.width = listWidth - (after.fndLBL.left + after.fndLBL.width) + 205;
    after.fndCache.left = listWidth + 135;
    after.fndCache.top = after.height - 780;
    after.fndTXT.top = after.height - 780;
    after.fndLBL.top = after.height - 750;
    after.savecLST.left = listWidth + after.ClearIENow.width + 155;
    after.savecLST.width = after.width - after.savecLST.left - 150;
    after.IECookiesS.left = after.savecLST.left;
    after.CacheDetail.top = after.kg_CLST.top + after.kg_CLST.height + 55;
    return after;
}

}  // namespace kestrelguard
