// Measures reading and writing the settings file with many blocked sites, in the program's own controls,
// against the least that such a read and write take, and reports ratios. The competitors take turns, round by
// round.
//
//   SettingsBench [--quick] [--rounds N] [--report FILE]

#include <windows.h>

#include <array>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "Report.h"
#include "SiteWorkload.h"
#include "blocking/SiteList.h"
#include "controls/win32/ListDisplayControl.h"
#include "controls/win32/Win32Controls.h"
#include "runtime/win32/AnsiText.h"
#include "runtime/win32/Owners.h"
#include "runtime/win32/Win32Locale.h"
#include "runtime/win32/Win32ProgramFolder.h"
#include "settings/SettingsStore.h"

namespace kestrelguard::bench {
namespace {

constexpr char kSitesBegin[] = "SS1/:/:y/:/:";
constexpr char kEntryEnd[] = " -";

// --- the least

std::string ReadBytes(const std::string& path) {
    const File file(
        CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    std::string bytes(file ? GetFileSize(file.Get(), nullptr) : 0, '\0');
    DWORD got = 0;
    if (!file || !ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr) ||
        got != bytes.size()) {
        Fail("cannot read " + path);
    }
    return bytes;
}

/// The platform calls of a file that is replaced as a whole.
void ReplaceBytes(const std::string& path, const std::string& bytes) {
    const std::string temporary = path + ".tmp";
    {
        const File file(CreateFileA(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD written = 0;
        if (!file ||
            !WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            !FlushFileBuffers(file.Get())) {
            Fail("cannot write " + temporary);
        }
    }
    if (!MoveFileExA(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        Fail("cannot write " + path);
    }
}

/// The file read as a whole, cut, and put into a list and a set.
struct PlainSites {
    std::vector<std::wstring> rows;
    std::unordered_set<std::wstring> lowerCased;

    void Read(const std::string& path) {
        const std::string bytes = ReadBytes(path);
        const std::wstring text(bytes.begin(), bytes.end());
        const std::wstring begin(std::begin(kSitesBegin), std::end(kSitesBegin) - 1);
        std::size_t at = text.find(begin) + begin.size();
        const std::size_t last = text.find(L"\r\n", at);
        for (std::size_t end = text.find(L" -", at); end < last; end = text.find(L" -", at)) {
            rows.push_back(text.substr(at, end - at));
            at = end + 2;
        }
        rows.push_back(text.substr(at, last - at));
        for (std::wstring lower : rows) {
            for (wchar_t& letter : lower) {
                letter = letter >= L'A' && letter <= L'Z' ? static_cast<wchar_t>(letter + 32) : letter;
            }
            lowerCased.insert(std::move(lower));
        }
    }

    void Write(const std::string& path) const {
        std::wstring text(std::begin(kSitesBegin), std::end(kSitesBegin) - 1);
        for (const std::wstring& row : rows) {
            text.append(row).append(L" -");
        }
        ReplaceBytes(path, std::string(text.begin(), text.end()) + "\r\n");
    }
};

// --- the program's own

/// A hidden form with the controls of the settings.
class Form {
 public:
    Form() : m_window(Make("STATIC", WS_OVERLAPPEDWINDOW, nullptr)) {
        for (std::size_t mode = 0; mode < PTO.size(); ++mode) {
            m_group.push_back(Make("BUTTON", BS_AUTORADIOBUTTON, m_window));
        }
        for (std::size_t mode = 0; mode < PTO.size(); ++mode) {
            PTO[mode].Attach(m_group[mode], m_group);
        }
        for (CheckBoxControl& box : KG_C) {
            box.Attach(Make("BUTTON", BS_AUTOCHECKBOX, m_window));
        }
        cOpenM.Attach(Make("BUTTON", BS_AUTOCHECKBOX, m_window));
        siteLST.Attach(Make("LISTBOX", LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL, m_window));
        TitleBan.Attach(Make("EDIT", ES_AUTOHSCROLL, m_window));
        wash_F.Attach(Make("EDIT", ES_AUTOHSCROLL, m_window));
        wash_CMB.Attach(Make("COMBOBOX", CBS_DROPDOWNLIST, m_window));
    }
    ~Form() { DestroyWindow(m_window); }
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    std::array<OptionButtonControl, 3> PTO;
    std::array<CheckBoxControl, 6> KG_C;
    CheckBoxControl cOpenM;
    ListDisplayControl siteLST;
    TextBoxControl TitleBan;
    TextBoxControl wash_F;
    DropDownControl wash_CMB;

 private:
    static HWND Make(const char* kind, DWORD style, HWND parent) {
        return CreateWindowExA(0, kind, "", style | (parent != nullptr ? WS_CHILD | WS_VISIBLE : 0), 0, 0,
                               200, 100, parent, nullptr, nullptr, nullptr);
    }

    HWND m_window;
    std::vector<HWND> m_group;
};

/// The settings as a program that has just started has them.
class Program {
 public:
    explicit Program(const std::string& folder)
        : m_folder(FromAnsi(folder)),
          m_store({{&m_form.PTO[0], &m_form.PTO[1], &m_form.PTO[2]},
                   m_form.cOpenM,
                   {&m_form.KG_C[0], &m_form.KG_C[1], &m_form.KG_C[2], &m_form.KG_C[3], &m_form.KG_C[4],
                    &m_form.KG_C[5]},
                   m_siteList,
                   m_siteSet,
                   m_form.TitleBan,
                   m_titleKeywordSet,
                   m_form.wash_F,
                   m_form.wash_CMB},
                  m_lasting, m_folder, m_locale) {}

    void SettingsFile(std::wstring mode) { m_store.SettingsFile(mode); }
    std::size_t Rows() const { return static_cast<std::size_t>(m_siteList.Count()); }

 private:
    Form m_form;
    LastingValues m_lasting;
    SiteList m_siteList{m_form.siteLST};
    TextSet m_siteSet;
    TextSet m_titleKeywordSet;
    Win32Locale m_locale;
    Win32ProgramFolder m_folder;
    SettingsStore m_store;
};

struct Times {
    Values read;
    Values plainRead;
    Values write;
    Values plainWrite;
};

Times Measure(const std::string& folder, std::size_t sites, std::size_t rounds) {
    const std::string path = folder + "\\KestrelS.CFG";
    std::string settings = std::string("PT1/:/:1\r\n") + kSitesBegin;
    for (const std::string& site : SiteWorkload::Entries(sites)) {
        settings += site + kEntryEnd;
    }
    settings += "\r\nPST/:/:17\r\n";

    std::unique_ptr<Program> program;
    std::unique_ptr<PlainSites> plain;
    // What the last round has left goes before the clock runs.
    const auto read = [&] {
        ReplaceBytes(path, settings);
        program = std::make_unique<Program>(folder);
        return Milliseconds([&] { program->SettingsFile(L"Read"); });
    };
    const auto plainRead = [&] {
        ReplaceBytes(path, settings);
        plain = std::make_unique<PlainSites>();
        return Milliseconds([&] { plain->Read(path); });
    };
    const auto write = [&] { return Milliseconds([&] { program->SettingsFile(L"Write"); }); };
    const auto plainWrite = [&] { return Milliseconds([&] { plain->Write(path); }); };
    std::vector<Values> reads = Turns(rounds, {read, plainRead});
    // The empty piece behind the last end is a row.
    if (program->Rows() != sites + 1 || plain->rows.size() != sites + 1) {
        Fail("a read does not give the sites of the file");
    }
    std::vector<Values> writes = Turns(rounds, {write, plainWrite});
    return {reads[0], reads[1], writes[0], writes[1]};
}

void Run(const Options& options) {
    const std::size_t rounds = options.RoundsOr(15, 5);
    Report report(options);
    char temporary[MAX_PATH];
    GetTempPathA(MAX_PATH, temporary);
    const std::string folder = std::string(temporary) + "settings";
    CreateDirectoryA(folder.c_str(), nullptr);
    std::vector<Times> all;
    const std::vector<std::size_t> sizes = {1000, 10000, 100000};
    for (const std::size_t sites : sizes) {
        const Times times = Measure(folder, sites, rounds);
        const bool largest = sites == sizes.back();
        const std::string with = " with " + std::to_string(sites) + " sites";
        report.Compare("reading the settings" + with, "ms", times.read, "reading, cutting, a list and a set",
                       times.plainRead, largest ? 1.3 : Report::kNoGoal);
        report.Compare("writing the settings" + with, "ms", times.write, "one buffer, the same file calls",
                       times.plainWrite, largest ? 1.5 : Report::kNoGoal);
        const auto x = static_cast<double>(sites);
        report.Point("settings", "read", x, Median(times.read));
        report.Point("settings", "least read", x, Median(times.plainRead));
        report.Point("settings", "write", x, Median(times.write));
        report.Point("settings", "least write", x, Median(times.plainWrite));
        all.push_back(times);
    }
    report.Compare("reading the settings with 100000 sites", "ms", all[2].read, "with 10000", all[1].read,
                   25);
    report.Compare("writing the settings with 100000 sites", "ms", all[2].write, "with 10000", all[1].write,
                   25);
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    kestrelguard::bench::Run(kestrelguard::bench::Options(count, arguments));
    return 0;
}
