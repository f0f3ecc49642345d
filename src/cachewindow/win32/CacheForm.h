#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "cachewindow/CacheBrowser.h"
#include "cachewindow/CacheLayout.h"
#include "cachewindow/SavedCookies.h"
#include "controls/win32/PlatformMessageBoxes.h"
#include "controls/win32/ToolTips.h"
#include "controls/win32/Win32Controls.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// The window `KG_Cache`: browses the cache and edits the list of saved cookies. Create makes it hidden and
/// empty; Form_Load fills it. Whoever holds it lets go in `unloaded`; handlers that are still running keep
/// it alive until they return.
class CacheForm final : public std::enable_shared_from_this<CacheForm> {
 public:
    /// All of it outlives the window.
    struct Parts {
        /// The main window's icon, which is this window's too.
        HICON icon;
        /// The caption, by which others find the window.
        const char* caption;
        CacheListing& listing;
        CacheEntries& cache;
        MessageLoop& messages;
        TextSet& savedCookies;
        SavedCookiesStore& savedCookiesFile;
        bool& ShowCookiesOnly;
        /// Tells the user of an error that left a handler.
        std::function<void(HWND, const RunTimeError&)> showError;
        /// The window is gone.
        std::function<void()> unloaded;
    };

    /// Throws RunTimeError when the system refuses a window.
    static std::shared_ptr<CacheForm> Create(const Parts& parts);
    explicit CacheForm(const Parts& parts);
    ~CacheForm();
    CacheForm(const CacheForm&) = delete;
    CacheForm& operator=(const CacheForm&) = delete;

    /// Lists the cache and the saved cookies.
    void Form_Load();
    /// Shows the window in front of the others; does not wait for it.
    void Show();
    /// Writes the saved cookies if they changed and destroys the window. Throws what writing throws, after
    /// the window is gone.
    void Unload();

    // What a walk works on.
    ListBoxControl& Entries() { return m_entries; }
    VisibleControl& EntriesVisibility() { return m_entriesVisibility; }
    CaptionControl& CountLabel() { return m_countLabel; }
    CaptionControl& DetailsLabel() { return m_detailsLabel; }

 private:
    enum Id : int;
    struct ControlRow;
    struct Command;
    static const ControlRow kControls[];
    static const Command kCommands[];

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void CreateWindows();
    void Form_Resize();
    void ApplyLayout();
    void OnCommand(int id, int notification);
    int ToPixels(std::int32_t twips) const { return PixelsOfTwips(twips, m_dpi); }
    HWND Control(int id) const { return GetDlgItem(m_window, id); }

    Parts m_parts;
    HWND m_window = nullptr;
    HWND m_lastFocus = nullptr;
    int m_dpi = 96;
    Font m_font;
    CacheLayout m_layout = InitialCacheLayout();
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
