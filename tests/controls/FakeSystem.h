#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Faults.h"
#include "controls/MessageBoxes.h"
#include "controls/MessageLoop.h"
#include "runtime/Browser.h"
#include "runtime/LineSplitter.h"
#include "runtime/RunTimeError.h"
#include "runtime/System.h"

namespace kestrelguard {

class FakeMessageBoxes : public MessageBoxes, public Fallible {
 public:
    struct Box {
        std::wstring text;
        std::wstring caption;
        std::uint32_t style;
    };
    int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t style) override {
        Call();
        shown.push_back(Box{text, caption, style});
        if (whileShown) {
            whileShown();
        }
        return answer;
    }
    std::vector<Box> shown;
    int answer = 1;
    /// What happens while the box waits for the user.
    std::function<void()> whileShown;
};

class FakeBrowser : public Browser, public Fallible {
 public:
    explicit FakeBrowser(std::int32_t frame = 0) : handle(frame) {}
    std::int32_t Handle() const override {
        Call();
        return handle;
    }
    std::wstring LocationName() const override {
        Call();
        return locationName;
    }
    std::wstring LocationURL() const override {
        Call();
        return locationURL;
    }
    std::wstring StatusText() const override {
        Call();
        return statusText;
    }
    void Navigate(const std::wstring& address) override {
        Call();
        navigated.push_back(address);
    }
    void Navigate2(const std::wstring& address) override {
        Call();
        navigated2.push_back(address);
    }
    std::int32_t handle;
    std::wstring locationName;
    std::wstring locationURL;
    std::wstring statusText;
    std::vector<std::wstring> navigated;
    std::vector<std::wstring> navigated2;
};

class FakeLocale : public Locale, public Fallible {
 public:
    std::wstring GeneralDateNow() const override {
        Call();
        return now;
    }
    std::wstring ThousandsSeparator() const override {
        Call();
        return thousandsSeparator;
    }
    std::wstring now = L"5/17/2004 3:05:09 PM";
    std::wstring thousandsSeparator = L",";
};

/// Files as texts in memory.
class FakeProgramFolder : public ProgramFolder, public Fallible {
 public:
    bool Exists(const std::wstring& name) const override {
        ++existsCalls;
        Call();
        return files.contains(name);
    }
    void ReadLines(const std::wstring& name,
                   const std::function<void(std::wstring_view)>& line) const override {
        ++reads;
        Call();
        const auto file = files.find(name);
        if (file == files.end()) {
            throw RunTimeError(RunTimeError::kFileNotFound);
        }
        // Each line comes from a read that may fail.
        LineSplitter<wchar_t> splitter;
        const auto handOver = [&](std::wstring_view text) {
            Call();
            line(text);
        };
        splitter.Take(file->second, handOver);
        splitter.Finish(handOver);
    }
    void Write(const std::wstring& name, std::wstring_view text) override {
        ++writes;
        Call();
        files[name] = text;
    }
    std::map<std::wstring, std::wstring> files;
    mutable int existsCalls = 0;
    mutable int reads = 0;
    int writes = 0;
};

class FakeMessageLoop : public MessageLoop, public Fallible {
 public:
    void DoEvents() override {
        ++runs;
        if (pending) {
            pending();
        }
    }
    int runs = 0;
    /// What arrives during the run.
    std::function<void()> pending;
};

}  // namespace kestrelguard
