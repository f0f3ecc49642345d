#pragma once

#include <array>
#include <string>
#include <vector>

#include "controls/Fakes.h"
#include "settings/SettingsStore.h"

namespace kestrelguard {

/// The settings pages as they are before any file was read, with fakes for controls, and the store over them.
class SettingsWorld {
 public:
    static constexpr wchar_t kFile[] = L"KestrelS.CFG";

    SettingsWorld() { FakeOptionButton::Group({&pto[0], &pto[1], &pto[2]}); }

    std::wstring SettingsFile(std::wstring mode) {
        store.SettingsFile(mode);
        return mode;
    }

    /// Reads a file of that text.
    void Read(std::wstring text) {
        folder.files[kFile] = std::move(text);
        SettingsFile(L"Read");
    }

    const std::wstring& File() { return folder.files[kFile]; }

    void Attach(Faults* faults) {
        for (FakeOptionButton& button : pto) {
            button.faults = faults;
        }
        for (FakeCheckBox& box : kgC) {
            box.faults = faults;
        }
        LetFail(faults, openMinimized, sites, titleBan, washF, washCmb, folder, locale);
    }

    std::array<FakeOptionButton, 3> pto{FakeOptionButton(true), FakeOptionButton(), FakeOptionButton()};
    FakeCheckBox openMinimized;
    std::array<FakeCheckBox, 6> kgC;
    FakeListRows sites;
    TextSet siteSet;
    FakeTextBox titleBan{L"xxx -porn -sex"};
    TextSet titleKeywordSet;
    FakeTextBox washF{L"60"};
    FakeDropDown washCmb{{L"Minute/s", L"Hour/s", L"Day/s"}, L"Minute/s"};
    LastingValues values;
    FakeProgramFolder folder;
    FakeLocale locale;
    SettingsStore store{SettingsControls{{&pto[0], &pto[1], &pto[2]},
                                         openMinimized,
                                         {&kgC[0], &kgC[1], &kgC[2], &kgC[3], &kgC[4], &kgC[5]},
                                         sites,
                                         siteSet,
                                         titleBan,
                                         titleKeywordSet,
                                         washF,
                                         washCmb},
                        values, folder, locale};
};

/// All that a read may change, to compare.
struct SettingsState {
    explicit SettingsState(const SettingsWorld& world)
        : sites(world.sites.rows.begin(), world.sites.rows.end()),
          siteSet(world.siteSet.begin(), world.siteSet.end()),
          titleBan(world.titleBan.text),
          titleKeywordSet(world.titleKeywordSet.begin(), world.titleKeywordSet.end()),
          washF(world.washF.text),
          washCmb(world.washCmb.text),
          useCount(world.values.useCount),
          popupsStoppedTotal(world.values.popupsStoppedTotal),
          washMinutes(world.values.WashMinutes) {
        for (const FakeOptionButton& button : world.pto) {
            boxes.push_back(button.selected ? 1 : 0);
        }
        boxes.push_back(world.openMinimized.value);
        for (const FakeCheckBox& box : world.kgC) {
            boxes.push_back(box.value);
        }
    }
    bool operator==(const SettingsState&) const = default;

    /// PTO 0 to 2, cOpenM, KG_C 0 to 5.
    std::vector<int> boxes;
    std::vector<std::wstring> sites;
    std::vector<std::wstring> siteSet;
    std::wstring titleBan;
    std::vector<std::wstring> titleKeywordSet;
    std::wstring washF;
    std::wstring washCmb;
    std::int32_t useCount;
    std::int32_t popupsStoppedTotal;
    std::int32_t washMinutes;
};

/// What a number that was 77 is after a line of that text has been read.
inline std::int32_t NumberRead(std::int32_t LastingValues::*number, const std::wstring& line) {
    SettingsWorld world;
    world.values.*number = 77;
    world.Read(line);
    return world.values.*number;
}

}  // namespace kestrelguard
