#include "settings/SettingsStore.h"

#include <initializer_list>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "runtime/ErrorsIgnored.h"
#include "runtime/Numbers.h"
#include "runtime/ProgramVersion.h"
#include "runtime/RunTimeError.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr wchar_t kFileName[] = L"KestrelS.CFG";
constexpr std::wstring_view kSeparator = L"/:/:";
/// Follows every entry of a list, the last one too.
constexpr std::wstring_view kEntryEnd = L" -";

struct Unit {
    wchar_t letter;
    const wchar_t* item;
    int minutes;
};
constexpr Unit kUnits[] = {{L'm', L"Minute/s", 1}, {L'h', L"Hour/s", 60}, {L'd', L"Day/s", 1440}};

/// The first four fields of a line; no key has more.
class Fields {
 public:
    explicit Fields(std::wstring_view line) {
        while (m_count < m_fields.size()) {
            const auto end = line.find(kSeparator);
            m_fields[m_count++] = line.substr(0, end);
            if (end == std::wstring_view::npos) {
                break;
            }
            line.remove_prefix(end + kSeparator.size());
        }
    }

    std::size_t Count() const noexcept { return m_count; }

    /// Throws kSubscriptOutOfRange.
    std::wstring_view operator[](std::size_t index) const {
        if (index >= m_count) {
            throw RunTimeError(RunTimeError::kSubscriptOutOfRange);
        }
        return m_fields[index];
    }

 private:
    std::array<std::wstring_view, 4> m_fields;
    std::size_t m_count = 0;
};

/// Whether the field is that letter, capital or not.
bool IsLetter(std::wstring_view field, wchar_t lowerCase) noexcept {
    return field.size() == 1 && LowerCase(field.front()) == lowerCase;
}

template <class Action>
void ForEachPiece(std::wstring_view list, Action&& action) {
    for (auto end = list.find(kEntryEnd); end != std::wstring_view::npos; end = list.find(kEntryEnd)) {
        action(list.substr(0, end));
        list.remove_prefix(end + kEntryEnd.size());
    }
    action(list);
}

/// One read of the file, line by line.
class Reading {
 public:
    Reading(const SettingsControls& controls, LastingValues& values)
        : m_controls(controls), m_values(values) {}

    void Line(std::wstring_view line) {
        const Fields fields(line);
        if (fields.Count() < 2) {
            return;  // the header, an empty line
        }
        const std::wstring key = UpperCase(fields[0].substr(0, kLongerThanAnyKey));
        for (const Handler& handler : kHandlers) {
            if (key == handler.key) {
                (this->*handler.act)(fields);
            }
        }
    }

    /// Whether a line of this read has switched errors off.
    bool ErrorsAreIgnored() const noexcept { return m_errorsIgnored; }

 private:
    struct Handler {
        std::wstring_view key;
        void (Reading::*act)(const Fields&);
    };
    static const Handler kHandlers[10];
    static constexpr std::size_t kLongerThanAnyKey = 4;

    /// Runs one step; its error counts only while errors are not ignored.
    template <class Action>
    void Step(Action&& action) {
        if (m_errorsIgnored) {
            ErrorsIgnored(std::forward<Action>(action));
        } else {
            std::forward<Action>(action)();
        }
    }

    void CheckIfYes(const Fields& fields, std::size_t box) {
        Step([&] {
            if (IsLetter(fields[1], L'y')) {
                m_controls.KG_C[box]->SetValue(1);
            }
        });
    }

    /// The field, or an empty text when taking it fails.
    std::wstring_view FieldOrNothing(const Fields& fields, std::size_t index) {
        std::wstring_view field;
        Step([&] { field = fields[index]; });
        return field;
    }

    /// A piece that is there already is refused without a word.
    void AddLowerCase(TextSet& set, std::wstring_view piece) {
        Step([&] { set.TryAdd(LowerCase(piece)); });
    }

    void Minimized(const Fields& fields) {
        Step([&] {
            // Kept: the one comparison that minds the case.
            if (fields[1] == L"y") {
                m_controls.cOpenM.SetValue(1);
            }
        });
    }

    void PopupMode(const Fields& fields) {
        Step([&] {
            constexpr std::wstring_view kModes[] = {L"0", L"1", L"2"};
            for (std::size_t mode = 0; mode < m_controls.PTO.size(); ++mode) {
                if (fields[1] == kModes[mode]) {
                    m_controls.PTO[mode]->Select(true);
                }
            }
        });
    }

    void Sites(const Fields& fields) {
        m_errorsIgnored = true;
        const std::wstring_view list = FieldOrNothing(fields, 2);
        CheckIfYes(fields, 0);
        if (!Contains(list, kEntryEnd)) {
            return;  // kept: an entry without its end is dropped
        }
        const ListFill fill(m_controls.siteLST);
        // Kept: the empty piece behind the last end becomes a row, and rows are added to those that are
        // there.
        ForEachPiece(list, [this](std::wstring_view piece) {
            Step([&] { m_controls.siteLST.Append(std::wstring(piece)); });
            AddLowerCase(m_controls.siteSet, piece);
        });
    }

    void TitleKeywords(const Fields& fields) {
        m_errorsIgnored = true;
        const std::wstring_view list = FieldOrNothing(fields, 2);
        CheckIfYes(fields, 1);
        if (!Contains(list, kEntryEnd)) {
            return;  // kept: a keyword saved alone is lost
        }
        ForEachPiece(list,
                     [this](std::wstring_view piece) { AddLowerCase(m_controls.titleKeywordSet, piece); });
        // The pieces with their ends, less the last end: that is the list itself.
        Step([&] { m_controls.TitleBan.SetText(std::wstring(list)); });
    }

    void WashCache(const Fields& fields) { CheckIfYes(fields, 2); }
    void WashHistory(const Fields& fields) { CheckIfYes(fields, 3); }
    void WashCookies(const Fields& fields) { CheckIfYes(fields, 4); }

    void WashInterval(const Fields& fields) {
        m_errorsIgnored = true;
        CheckIfYes(fields, 5);
        Step([&] {
            const std::wstring_view count = fields[2];
            const std::optional<double> number = NumberOf(count);
            Step([&] { m_controls.wash_F.SetText(number ? std::wstring(Trim(count)) : L"60"); });
            Step([&] { m_values.WashMinutes = RoundToInteger(number.value_or(60)); });
        });
        const std::wstring_view letter = FieldOrNothing(fields, 3);
        for (const Unit& unit : kUnits) {
            if (IsLetter(letter, unit.letter)) {
                Step([&] { m_controls.wash_CMB.SetText(unit.item); });
                Step([&] {
                    m_values.WashMinutes =
                        RoundToInteger(static_cast<double>(m_values.WashMinutes) * unit.minutes);
                });
            }
        }
    }

    void UseCount(const Fields& fields) {
        Step([&] { m_values.useCount = RoundToInteger(NumberOf(fields[1]).value_or(0) + 1); });
    }

    void PopupsStopped(const Fields& fields) {
        Step([&] { m_values.popupsStoppedTotal = RoundToInteger(NumberOf(fields[1]).value_or(0)); });
    }

    const SettingsControls& m_controls;
    LastingValues& m_values;
    bool m_errorsIgnored = false;
};

const Reading::Handler Reading::kHandlers[] = {
    {L"MIN", &Reading::Minimized},     {L"PT1", &Reading::PopupMode},    {L"SS1", &Reading::Sites},
    {L"SS2", &Reading::TitleKeywords}, {L"PP1", &Reading::WashCache},    {L"PP2", &Reading::WashHistory},
    {L"PP3", &Reading::WashCookies},   {L"PP4", &Reading::WashInterval}, {L"USE", &Reading::UseCount},
    {L"PST", &Reading::PopupsStopped},
};

void AppendLine(std::wstring& text, std::initializer_list<std::wstring_view> parts) {
    for (const std::wstring_view part : parts) {
        text += part;
    }
    text += kLineEnd;
}

std::wstring_view YesOrNo(const CheckBox& box) {
    return box.Ticked() ? L"y" : L"n";
}

}  // namespace

SettingsStore::SettingsStore(const SettingsControls& controls, LastingValues& values, ProgramFolder& folder,
                             const Locale& locale)
    : m_controls(controls), m_values(values), m_folder(folder), m_locale(locale) {}

void SettingsStore::SettingsFile(std::wstring& mode) {
    if (!m_folder.Exists(kFileName)) {
        mode = L"WRITE";
    }
    if (mode == L"Read") {
        Read();
    } else {
        Write();
    }
}

void SettingsStore::Read() {
    Reading reading(m_controls, m_values);
    try {
        m_folder.ReadLines(kFileName, [&reading](std::wstring_view line) { reading.Line(line); });
    } catch (const RunTimeError&) {
        // A file that fails half-way is over.
        if (!reading.ErrorsAreIgnored()) {
            throw;
        }
    } catch (const std::bad_alloc&) {
        if (!reading.ErrorsAreIgnored()) {
            throw;
        }
    }
}

void SettingsStore::Write() const {
    std::wstring text;
    // The revision is a number field: a blank stands in the place of its sign.
    AppendLine(text, {L"'# Kestrelguard v", Decimal(kMajorVersion), L".", Decimal(kMinorVersion), L". ",
                      Decimal(kRevision)});
    AppendLine(text, {L"'# Configuration Modified: (", m_locale.GeneralDateNow(), L")"});
    AppendLine(text, {L"'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING"});
    AppendLine(text, {L"'###################"});
    for (std::size_t mode = 0; mode < m_controls.PTO.size(); ++mode) {
        if (m_controls.PTO[mode]->Selected()) {
            AppendLine(text, {L"PT1", kSeparator, Decimal(static_cast<std::int32_t>(mode))});
        }
    }
    AppendLine(text, {L"MIN", kSeparator, YesOrNo(m_controls.cOpenM)});
    text.append(L"SS1").append(kSeparator).append(YesOrNo(*m_controls.KG_C[0])).append(kSeparator);
    const std::int32_t rows = m_controls.siteLST.Count();
    for (std::int32_t row = 0; row < rows; ++row) {
        m_controls.siteLST.AppendRow(row, text);
        text.append(kEntryEnd);
    }
    AppendLine(text, {});
    AppendLine(text,
               {L"SS2", kSeparator, YesOrNo(*m_controls.KG_C[1]), kSeparator, m_controls.TitleBan.Text()});
    AppendLine(text, {L"PP1", kSeparator, YesOrNo(*m_controls.KG_C[2])});
    AppendLine(text, {L"PP2", kSeparator, YesOrNo(*m_controls.KG_C[3])});
    AppendLine(text, {L"PP3", kSeparator, YesOrNo(*m_controls.KG_C[4])});
    AppendLine(text, {L"PP4", kSeparator, YesOrNo(*m_controls.KG_C[5]), kSeparator, m_controls.wash_F.Text(),
                      kSeparator, m_controls.wash_CMB.Text().substr(0, 1)});
    AppendLine(text, {L"USE", kSeparator, Decimal(m_values.useCount)});
    AppendLine(text, {L"PST", kSeparator, Decimal(m_values.popupsStoppedTotal)});
    m_folder.Write(kFileName, text);
}

}  // namespace kestrelguard
