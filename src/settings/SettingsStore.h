#pragma once

#include <array>
#include <string>

#include "controls/Controls.h"
#include "controls/Lists.h"
#include "runtime/LastingValues.h"
#include "runtime/System.h"
#include "runtime/TextSet.h"

namespace kestrelguard {

/// The controls and collections in which the settings live while the program runs. All belong to the main
/// window and outlive the store.
struct SettingsControls {
    /// popupMode: 0 prevent, 1 prompt, 2 allow.
    std::array<OptionButton*, 3> PTO;
    /// startMinimized.
    CheckBox& cOpenM;
    /// 0 blockSites, 1 blockTitles, 2 washCache, 3 washHistory, 4 washCookies, 5 washAuto.
    std::array<CheckBox*, 6> KG_C;
    /// blockedSites, and the same in lower case.
    ListRows& siteLST;
    TextSet& siteSet;
    /// titleKeywords, and the same piece by piece in lower case.
    TextBox& TitleBan;
    TextSet& titleKeywordSet;
    /// washInterval and washUnit.
    TextBox& wash_F;
    DropDown& wash_CMB;
};

/// The settings file, KestrelS.CFG in the program's folder: lines of a key and its values, joined by "/:/:".
class SettingsStore {
 public:
    SettingsStore(const SettingsControls& controls, LastingValues& values, ProgramFolder& folder,
                  const Locale& locale);

    /// With the mode "Read", exactly so, puts the file's settings into the controls; with any other writes
    /// the file from them. Without a file the mode becomes "WRITE".
    ///
    /// Reading never clears a box or takes a row away; each read counts as one use. Throws what the file, a
    /// control or a number out of range throws, but nothing more from the first "SS1", "SS2" or "PP4" line
    /// of a read on. Writing throws before the file has changed.
    void SettingsFile(std::wstring& mode);

 private:
    void Read();
    void Write() const;

    SettingsControls m_controls;
    LastingValues& m_values;
    ProgramFolder& m_folder;
    const Locale& m_locale;
};

}  // namespace kestrelguard
