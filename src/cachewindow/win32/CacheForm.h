#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "cachewindow/CacheBrowser.h"
#include "cachewindow/CacheLayout.h"
#include "cachewindow/SavedCookies.h"
#include "controls/win32/FormBase.h"
#include "controls/win32/PlatformMessageBoxes.h"
#include "controls/win32/ToolTips.h"
#include "controls/win32/Win32Controls.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// The window `KG_Cache`: browses the cache and edits the list of saved cookies. Create makes it hidden and
/// empty; Form_Load fills it. Whoever holds it lets go in `unloaded`; handlers that are still running keep
/// it alive until they return.
class CacheForm final : public std::enable_shared_from_this<CacheForm>, FormBase {
 public:
    /// All of it outlives the window.
    struct Parts {
        /// The main window's icons, which are this window's too.
        WindowIcons icons;
        /// The caption, by which others find the window.
        const char* caption;
        CacheListing& listing;
        CacheEntries& cache;
        MessageLoop& messages;
        TextSet& savedCookies;
        SavedCookiesStore& savedCookiesFile;
        bool& ShowCookiesOnly;
        /// Tells the user of an error that left a handler.
        ErrorReport showError;
        /// The window is gone.
        std::function<void()> unloaded;
    };

    /// Throws RunTimeError when the system refuses a window.
    static std::shared_ptr<CacheForm> Create(const Parts& parts);
    explicit CacheForm(const Parts& parts);
    ~CacheForm() override = default;

    /// Lists the cache and the saved cookies.
    void Form_Load();
    /// Shows the window in front of the others; does not wait for it.
    void Show();
    /// Writes the saved cookies if they changed and destroys the window. Throws what writing throws, after
    /// the window is gone.
    void Unload();
    /// Destroys the window and writes nothing: for one that could not be loaded.
    void Discard();

    // What a walk works on.
    ListBoxControl& Entries() { return m_entries; }
    VisibleControl& EntriesVisibility() { return m_entriesVisibility; }
    CaptionControl& CountLabel() { return m_countLabel; }
    CaptionControl& DetailsLabel() { return m_detailsLabel; }

 private:
    enum Id : int;
    struct ControlRow;
    static const ControlRow kControls[];
    static const Command<CacheForm> kCommands[];

    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnCommand(int id, int notification) override;
    int DefaultButton(HWND focus) const override;
    HWND FirstFocus() const override;
    void CreateWindows();
    void Form_Resize();
    void ApplyLayout();
    int ToPixels(std::int32_t twips) const { return PixelsOfTwips(twips, Dpi()); }
    HWND Control(int id) const { return GetDlgItem(Handle(), id); }

    Parts m_parts;
    Font m_font;
    CacheLayout m_layout = InitialCacheLayout();
    /// Every control is there and the window is not on its way out.
    bool m_complete = false;
    ToolTips m_tips;
    ListBoxControl m_entries;
    VisibleControl m_entriesVisibility;
    ListBoxControl m_saved;
    ToolTipControl m_savedTip;
    TextBoxControl m_findText;
    CaptionControl m_findButton;
    ToolTipControl m_findTip;
    CaptionControl m_countLabel;
    CaptionControl m_detailsLabel;
    PlatformMessageBoxes m_boxes;
    CacheBrowser m_browser;
    SavedCookiesEditor m_savedEditor;
};

}  // namespace kestrelguard
