#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "runtime/Numbers.h"
#include "runtime/RunTimeError.h"
#include "runtime/Text.h"
#include "settings/SettingsWorld.h"

namespace kestrelguard {

/// Every piece of a text, by copying what is left of it: slow and plain.
inline std::vector<std::wstring> PiecesByDefinition(std::wstring text, const std::wstring& separator) {
    std::vector<std::wstring> pieces;
    if (text.empty()) {
        return pieces;
    }
    for (auto at = text.find(separator); at != std::wstring::npos; at = text.find(separator)) {
        pieces.push_back(text.substr(0, at));
        text = text.substr(at + separator.size());
    }
    pieces.push_back(text);
    return pieces;
}

inline std::vector<std::wstring> LinesByDefinition(const std::wstring& file) {
    std::vector<std::wstring> lines(1);
    for (std::size_t at = 0; at < file.size(); ++at) {
        if (file[at] == L'\r' || file[at] == L'\n') {
            lines.emplace_back();
            at += file.substr(at, 2) == L"\r\n" ? 1 : 0;
        } else {
            lines.back() += file[at];
        }
    }
    return lines;
}

/// What a read of the settings file does to the state, written down a second time as plainly as can be, to
/// compare with. Answers the number of the error that ends it, or 0.
inline std::int32_t ReadByDefinition(const std::wstring& file, SettingsState& state) {
    constexpr std::size_t kOpenM = 3;
    constexpr std::size_t kBoxes = 4;
    const auto rounds = [](double value) { return value >= -2147483648.5 && value < 2147483647.5; };
    const auto addOnce = [](std::vector<std::wstring>& set, const std::wstring& text) {
        if (std::find(set.begin(), set.end(), text) == set.end()) {
            set.push_back(text);
        }
    };
    bool errorsIgnored = false;
    for (const std::wstring& line : LinesByDefinition(file)) {
        const std::vector<std::wstring> fields = PiecesByDefinition(line, L"/:/:");
        if (fields.size() < 2) {
            continue;
        }
        std::wstring key;
        for (const wchar_t letter : fields[0]) {
            key += letter >= L'a' && letter <= L'z' ? static_cast<wchar_t>(letter - L'a' + L'A') : letter;
        }
        const bool yes = fields[1] == L"y" || fields[1] == L"Y";
        if (key == L"MIN" && fields[1] == L"y") {
            state.boxes[kOpenM] = 1;
        } else if (key == L"PT1" && (fields[1] == L"0" || fields[1] == L"1" || fields[1] == L"2")) {
            state.boxes[0] = state.boxes[1] = state.boxes[2] = 0;
            state.boxes[static_cast<std::size_t>(fields[1][0] - L'0')] = 1;
        } else if (key == L"PP1" && yes) {
            state.boxes[kBoxes + 2] = 1;
        } else if (key == L"PP2" && yes) {
            state.boxes[kBoxes + 3] = 1;
        } else if (key == L"PP3" && yes) {
            state.boxes[kBoxes + 4] = 1;
        } else if (key == L"SS1" || key == L"SS2") {
            errorsIgnored = true;
            if (yes) {
                state.boxes[kBoxes + (key == L"SS1" ? 0 : 1)] = 1;
            }
            const auto pieces = PiecesByDefinition(fields.size() > 2 ? fields[2] : std::wstring(), L" -");
            if (pieces.size() < 2) {
                continue;
            }
            if (key == L"SS2") {
                state.titleBan.clear();
            }
            for (const std::wstring& piece : pieces) {
                if (key == L"SS1") {
                    state.sites.push_back(piece);
                    addOnce(state.siteSet, LowerCase(piece));
                } else {
                    addOnce(state.titleKeywordSet, LowerCase(piece));
                    state.titleBan += piece + L" -";
                }
            }
            if (key == L"SS2") {
                state.titleBan.resize(state.titleBan.size() - 2);
            }
        } else if (key == L"PP4") {
            errorsIgnored = true;
            if (yes) {
                state.boxes[kBoxes + 5] = 1;
            }
            if (fields.size() < 3) {
                continue;
            }
            const auto number = NumberOf(fields[2]);
            state.washF = number ? std::wstring(Trim(fields[2])) : L"60";
            if (!number) {
                state.washMinutes = 60;
            } else if (rounds(*number)) {
                state.washMinutes = RoundToInteger(*number);
            }
            const std::wstring unit = fields.size() > 3 ? fields[3] : std::wstring();
            double factor = 1;
            if (unit == L"m" || unit == L"M") {
                state.washCmb = L"Minute/s";
            } else if (unit == L"h" || unit == L"H") {
                state.washCmb = L"Hour/s";
                factor = 60;
            } else if (unit == L"d" || unit == L"D") {
                state.washCmb = L"Day/s";
                factor = 1440;
            }
            if (rounds(state.washMinutes * factor)) {
                state.washMinutes = static_cast<std::int32_t>(state.washMinutes * factor);
            }
        } else if (key == L"USE" || key == L"PST") {
            const auto number = NumberOf(fields[1]);
            const double value = (number ? *number : 0) + (key == L"USE" ? 1 : 0);
            std::int32_t& counter = key == L"USE" ? state.useCount : state.popupsStoppedTotal;
            if (rounds(value)) {
                counter = RoundToInteger(value);
            } else if (!errorsIgnored) {
                return RunTimeError::kOverflow;
            }
        }
    }
    return 0;
}

}  // namespace kestrelguard
