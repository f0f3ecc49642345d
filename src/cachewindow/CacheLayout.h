#pragma once

#include <cstdint>

namespace kestrelguard {

/// A place in the cache window, in twips (1440 an inch).
struct TwipsRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    std::int32_t Right() const { return left + width; }
    bool operator==(const TwipsRect&) const = default;
};

/// The size of the cache window, frame included, and the places of its controls inside it.
struct CacheLayout {
    std::int32_t width = 0;
    std::int32_t height = 0;
    TwipsRect kg_CLST;
    TwipsRect savecLST;
    TwipsRect AllCache;
    TwipsRect ShowCook;
    TwipsRect RefreshIE;
    TwipsRect ClearIENow;
    TwipsRect SaveC;
    TwipsRect RemoveC;
    TwipsRect fndLBL;
    TwipsRect fndTXT;
    TwipsRect fndCache;
    TwipsRect CacheDetail;
    TwipsRect IECookiesS;
    TwipsRect IECacheLBL;

    bool operator==(const CacheLayout&) const = default;
};

/// The smallest size of the window: at or below either the window snaps back to both.
inline constexpr std::int32_t kCacheWindowWidth = 10425;
inline constexpr std::int32_t kCacheWindowHeight = 4890;

/// A length in dots of a screen that has `dpi` of them an inch, and back; to the nearest.
std::int32_t PixelsOfTwips(std::int32_t twips, std::int32_t dpi);
std::int32_t TwipsOfPixels(std::int32_t pixels, std::int32_t dpi);

/// As many whole dots as a window of that outer size has. Rounded down: a window that has snapped back to the
/// smallest size still counts as not above it.
std::int32_t WindowPixels(std::int32_t twips, std::int32_t dpi);

/// The window as it opens.
CacheLayout InitialCacheLayout();

/// `Form_Resize`: where everything goes once the window has the outer size `width` by `height`. What the
/// rules do not place stays where it is in `before`. The answer's size differs from the given one where the
/// window must snap back.
CacheLayout ResizedCacheLayout(const CacheLayout& before, std::int32_t width, std::int32_t height);

}  // namespace kestrelguard
