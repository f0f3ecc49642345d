#include "cachewindow/CacheLayout.h"

#include <gtest/gtest.h>

#include <utility>

namespace kestrelguard {
namespace {

TEST(CacheLayout, OpensAtItsSmallestSize) {
    const CacheLayout layout = InitialCacheLayout();
    EXPECT_EQ(layout.width, 10425);
    EXPECT_EQ(layout.height, 4890);
    EXPECT_EQ(layout.kg_CLST.width, 6060);
}

TEST(CacheLayout, AtOrBelowEitherMinimumSnapsBackBoth) {
    const CacheLayout first = InitialCacheLayout();
    for (const auto& [width, height] :
         {std::pair{10425, 9000}, {20000, 4890}, {10425, 4890}, {100, 9000}, {20000, 100}, {0, 0}}) {
        const CacheLayout layout = ResizedCacheLayout(first, width, height);
        EXPECT_EQ(layout.width, 10425) << width << " x " << height;
        EXPECT_EQ(layout.height, 4890) << width << " x " << height;
        EXPECT_EQ(layout.kg_CLST.width, 6060);
    }
}

TEST(CacheLayout, OneTwipAboveBothMinimaFollowsTheRule) {
    const CacheLayout layout = ResizedCacheLayout(InitialCacheLayout(), 10426, 4891);
    EXPECT_EQ(layout.width, 10426);
    EXPECT_EQ(layout.height, 4891);
    EXPECT_EQ(layout.kg_CLST.width, 5826);
}

TEST(CacheLayout, EveryRuleOfALargeWindow) {
    const CacheLayout first = InitialCacheLayout();
    const CacheLayout layout = ResizedCacheLayout(first, 15000, 9000);
    EXPECT_EQ(layout.kg_CLST.width, 10400);
    EXPECT_EQ(layout.kg_CLST.height, 9000 - 1200 - first.CacheDetail.height);
    EXPECT_EQ(layout.savecLST.height, 8260);
    for (const TwipsRect* button : {&layout.SaveC, &layout.RemoveC, &layout.ShowCook, &layout.RefreshIE,
                                    &layout.ClearIENow, &layout.AllCache}) {
        EXPECT_EQ(button->left, 10535);
    }
    EXPECT_EQ(layout.fndTXT.left, first.fndLBL.left + first.fndLBL.width - 125);
    EXPECT_EQ(layout.fndTXT.width, 10400 - (first.fndLBL.left + first.fndLBL.width) + 205);
    EXPECT_EQ(layout.fndTXT.Right(), 10400 + 80);
    EXPECT_EQ(layout.fndCache.left, 10535);
    EXPECT_EQ(layout.fndCache.top, 8220);
    EXPECT_EQ(layout.fndTXT.top, 8220);
    EXPECT_EQ(layout.fndLBL.top, 8250);
    EXPECT_EQ(layout.savecLST.left, 10400 + first.ClearIENow.width + 155);
    EXPECT_EQ(layout.savecLST.width, 15000 - layout.savecLST.left - 150);
    EXPECT_EQ(layout.IECookiesS.left, layout.savecLST.left);
    EXPECT_EQ(layout.CacheDetail.top, layout.kg_CLST.top + layout.kg_CLST.height + 55);
}

TEST(CacheLayout, NothingOverlapsAtTheSmallestSize) {
    const CacheLayout layout = InitialCacheLayout();
    EXPECT_LE(layout.CacheDetail.top + layout.CacheDetail.height, layout.fndTXT.top);
    EXPECT_LE(layout.RemoveC.top + layout.RemoveC.height, layout.CacheDetail.top);
    EXPECT_LE(layout.AllCache.Right(), layout.savecLST.left);
    EXPECT_LE(layout.CacheDetail.Right(), layout.savecLST.left);
    EXPECT_LE(layout.IECacheLBL.top + layout.IECacheLBL.height, layout.kg_CLST.top);
}

TEST(CacheLayout, TheDetailsEndBeforeTheSavedCookiesAtAnyWidth) {
    CacheLayout layout = InitialCacheLayout();
    for (std::int32_t width = 10425; width <= 10700; ++width) {
        layout = ResizedCacheLayout(layout, width, 6000);
        ASSERT_LT(layout.CacheDetail.Right(), layout.savecLST.left) << width;
    }
}

TEST(CacheLayout, AWindowThatHasSnappedBackStaysAtAnyResolution) {
    const CacheLayout smallest = InitialCacheLayout();
    for (std::int32_t dpi = 72; dpi <= 480; ++dpi) {
        const std::int32_t width = WindowPixels(kCacheWindowWidth, dpi);
        const std::int32_t height = WindowPixels(kCacheWindowHeight, dpi);
        EXPECT_EQ(ResizedCacheLayout(smallest, TwipsOfPixels(width, dpi), TwipsOfPixels(height, dpi)),
                  smallest)
            << dpi;
        // Two dots more are what the user asked for; one may be less than a twip away from the smallest size.
        const std::int32_t wider = TwipsOfPixels(width + 2, dpi);
        const std::int32_t higher = TwipsOfPixels(height + 2, dpi);
        const CacheLayout larger = ResizedCacheLayout(smallest, wider, higher);
        EXPECT_EQ(std::pair(larger.width, larger.height), std::pair(wider, higher)) << dpi;
    }
}

TEST(CacheLayout, LengthsBecomeDotsToTheNearest) {
    EXPECT_EQ(PixelsOfTwips(6060, 96), 404);
    EXPECT_EQ(PixelsOfTwips(6060, 120), 505);
    EXPECT_EQ(PixelsOfTwips(7, 96), 0);
    EXPECT_EQ(PixelsOfTwips(8, 96), 1);
    EXPECT_EQ(WindowPixels(10425, 120), 868);
    EXPECT_EQ(TwipsOfPixels(869, 120), 10428);
    EXPECT_EQ(TwipsOfPixels(32000, 96), 480000);
}

TEST(CacheLayout, ComesBackFromALargeSizeUnchanged) {
    const CacheLayout first = InitialCacheLayout();
    EXPECT_EQ(ResizedCacheLayout(ResizedCacheLayout(first, 30000, 20000), 10425, 4890), first);
}

}  // namespace
}  // namespace kestrelguard
