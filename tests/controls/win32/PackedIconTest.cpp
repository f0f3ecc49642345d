#include "controls/win32/PackedIcon.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "resource.h"

namespace kestrelguard {
namespace {

/// The product, as a file that holds resources.
class Product {
 public:
    Product() {
        char path[MAX_PATH] = "";
        GetModuleFileNameA(nullptr, path, sizeof path);
        std::string file = path;
        file = file.substr(0, file.rfind('\\')) + "\\kestrelguard.exe";
        m_module.Reset(LoadLibraryExA(file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    }
    HMODULE Get() const { return m_module.Get(); }

 private:
    Library m_module;
};

/// The picture's width, and how many colours it shows where nothing shines through; 0 when it is none.
struct Seen {
    int width = 0;
    std::size_t colours = 0;
};

Seen Look(const Icon& icon) {
    ICONINFO info = {};
    if (!icon || !GetIconInfo(icon.Get(), &info)) {
        return {};
    }
    BITMAP bitmap = {};
    GetObjectA(info.hbmColor, sizeof bitmap, &bitmap);
    BITMAPINFO head = {};
    head.bmiHeader = {sizeof head.bmiHeader, bitmap.bmWidth, -bitmap.bmHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    std::vector<DWORD> pixels(static_cast<std::size_t>(bitmap.bmWidth) *
                              static_cast<std::size_t>(bitmap.bmHeight));
    const HDC screen = GetDC(nullptr);
    GetDIBits(screen, info.hbmColor, 0, static_cast<UINT>(bitmap.bmHeight), pixels.data(), &head,
              DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    std::set<DWORD> colours;
    for (const DWORD pixel : pixels) {
        colours.insert(pixel & 0xFFFFFF);
    }
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return {static_cast<int>(bitmap.bmWidth), colours.size()};
}

TEST(PackedIconTest, EveryPictureOfThePagesCanBeLoadedAtAnySize) {
    const Product product;
    ASSERT_NE(nullptr, product.Get());
    for (const int resource : {IDI_POPUP, IDI_STARTUP, IDI_GEAR, IDI_BROOM, IDI_WEBFOLDER, IDI_HISTORY}) {
        for (const int size : {16, 32, 40, 48, 64}) {
            const Seen seen = Look(LoadPackedIcon(product.Get(), resource, size));
            EXPECT_EQ(size, seen.width) << resource;
            EXPECT_GT(seen.colours, 4u) << resource << " at " << size;
        }
    }
}

TEST(PackedIconTest, WhatIsNotThereIsNoIcon) {
    const Product product;
    EXPECT_FALSE(LoadPackedIcon(product.Get(), 9999, 32));
    EXPECT_FALSE(LoadPackedIcon(product.Get(), IDI_KESTRELGUARD, 32));  // an icon as Windows knows it
    EXPECT_FALSE(LoadPackedIcon(nullptr, IDI_POPUP, 32));
}

}  // namespace
}  // namespace kestrelguard
