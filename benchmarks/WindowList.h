#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

/// The windows of a form, written down so that another program can make the same.
namespace kestrelguard::bench {

struct ListedWindow {
    std::string windowClass;
    bool ownClass = false;  ///< registered by the program, not by the system
    std::string text;
    std::uint32_t extendedStyle = 0;
    std::uint32_t style = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    std::size_t parent = 0;  ///< its number in the list; the form is 0
    int id = 0;
};

/// A line for each window; its fields are separated by tabs, the text comes last.
inline std::string WriteWindowList(const std::vector<ListedWindow>& windows) {
    std::string lines;
    for (const ListedWindow& window : windows) {
        lines += window.windowClass;
        for (const long long number :
             {static_cast<long long>(window.ownClass), static_cast<long long>(window.extendedStyle),
              static_cast<long long>(window.style), static_cast<long long>(window.x),
              static_cast<long long>(window.y), static_cast<long long>(window.width),
              static_cast<long long>(window.height), static_cast<long long>(window.parent),
              static_cast<long long>(window.id)}) {
            lines += '\t' + std::to_string(number);
        }
        lines += '\t' + window.text + '\n';
    }
    return lines;
}

inline std::vector<ListedWindow> ParseWindowList(const std::string& lines) {
    std::vector<ListedWindow> windows;
    for (std::size_t at = 0; at < lines.size();) {
        const std::size_t end = lines.find('\n', at);
        std::vector<std::string> fields;
        for (std::size_t tab = 0; fields.size() < 10; at = tab + 1) {
            tab = lines.find('\t', at);
            fields.push_back(lines.substr(at, tab - at));
        }
        ListedWindow window;
        window.windowClass = fields[0];
        window.ownClass = fields[1] == "1";
        const auto number = [&fields](std::size_t field) {
            return std::strtoll(fields[field].c_str(), nullptr, 10);
        };
        window.extendedStyle = static_cast<std::uint32_t>(number(2));
        window.style = static_cast<std::uint32_t>(number(3));
        window.x = static_cast<int>(number(4));
        window.y = static_cast<int>(number(5));
        window.width = static_cast<int>(number(6));
        window.height = static_cast<int>(number(7));
        window.parent = static_cast<std::size_t>(number(8));
        window.id = static_cast<int>(number(9));
        window.text = lines.substr(at, end - at);
        windows.push_back(window);
        at = end + 1;
    }
    return windows;
}

}  // namespace kestrelguard::bench
