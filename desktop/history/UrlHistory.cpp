/// The class CUrlHistory of the stand-in desktop, with the interfaces and the ownership of texts that the
/// browser's own has.
///
/// Environment variable of the program that loads it, for tests:
///   KESTRELGUARD_HISTORY_FAIL=NAME   the method of that name (EnumUrls, SetFilter, Next, ClearHistory,
///   AddUrl,
///                                    DeleteUrl) answers E_FAIL
#include <windows.h>

#include <objbase.h>
#include <shlguid.h>
#include <urlhist.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "desktop/ComObject.h"
#include "desktop/history/HistoryFile.h"

namespace kestrelguard::desktop {

template <>
bool Includes<IUrlHistoryStg2>(REFIID iid) noexcept {
    return iid == IID_IUrlHistoryStg2 || iid == IID_IUrlHistoryStg;
}

namespace {

std::atomic<long> liveObjects = 0;
HINSTANCE ownModule = nullptr;

bool ToFail(const wchar_t* method) {
    wchar_t name[32] = {};
    GetEnvironmentVariableW(L"KESTRELGUARD_HISTORY_FAIL", name, static_cast<DWORD>(std::size(name)));
    return std::wcscmp(name, method) == 0;
}

/// Runs a method; nothing that it throws gets into the caller.
template <class Action>
HRESULT Method(Action&& action) noexcept {
    try {
        return std::forward<Action>(action)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

/// Keeps the library loaded: counts as alive for as long as it lives.
class Alive {
 public:
    Alive() noexcept { ++liveObjects; }
    Alive(const Alive&) = delete;
    Alive& operator=(const Alive&) = delete;
    ~Alive() { --liveObjects; }
};

/// A copy that the caller frees with CoTaskMemFree.
LPWSTR TaskText(const std::wstring& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    auto* const copy = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::copy_n(text.c_str(), text.size() + 1, copy);
    return copy;
}

void Fill(STATURL& record, const HistoryEntry& entry, DWORD flags) {
    record = STATURL{};
    record.cbSize = sizeof record;
    record.ftLastVisited = entry.visited;
    record.ftLastUpdated = entry.updated;
    record.ftExpires = entry.expires;
    record.dwFlags = entry.flags;
    if ((flags & STATURL_QUERYFLAG_NOURL) == 0) {
        record.pwcsUrl = TaskText(entry.url);
    }
    // Pages without a title have no text at all.
    if ((flags & STATURL_QUERYFLAG_NOTITLE) == 0 && !entry.title.empty()) {
        record.pwcsTitle = TaskText(entry.title);
    }
}

/// The entries as they were when the enumeration began.
class Enumerator final : public ComObject<IEnumSTATURL> {
 public:
    explicit Enumerator(std::vector<HistoryEntry> entries) : m_entries(std::move(entries)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, LPSTATURL records, ULONG* fetched) override {
        return Method([&] {
            if (fetched != nullptr) {
                *fetched = 0;
            }
            if (records == nullptr || (fetched == nullptr && count != 1)) {
                return E_POINTER;
            }
            if (ToFail(L"Next")) {
                return E_FAIL;
            }
            ULONG done = 0;
            while (done < count && FindNext()) {
                Fill(records[done], m_entries[m_position++], m_flags);
                ++done;
                if (fetched != nullptr) {
                    *fetched = done;
                }
            }
            return done == count ? S_OK : S_FALSE;
        });
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        for (; count > 0; --count) {
            if (!FindNext()) {
                return S_FALSE;
            }
            ++m_position;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        m_position = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumSTATURL** copy) override {
        return Method([&] {
            if (copy == nullptr) {
                return E_POINTER;
            }
            ComPtr<Enumerator> made = MakeCom<Enumerator>(m_entries);
            made->m_filter = m_filter;
            made->m_flags = m_flags;
            made->m_position = m_position;
            *copy = made.Detach();
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE SetFilter(LPCOLESTR filter, DWORD flags) override {
        return Method([&] {
            if (ToFail(L"SetFilter")) {
                return E_FAIL;
            }
            m_filter = filter == nullptr ? L"" : filter;
            m_flags = flags;
            return S_OK;
        });
    }

 private:
    const Alive m_alive;

    /// Goes on to the next entry whose address begins with the filter.
    bool FindNext() {
        while (m_position < m_entries.size() &&
               m_entries[m_position].url.compare(0, m_filter.size(), m_filter) != 0) {
            ++m_position;
        }
        return m_position < m_entries.size();
    }

    std::vector<HistoryEntry> m_entries;
    std::wstring m_filter;
    DWORD m_flags = 0;
    std::size_t m_position = 0;
};

class History final : public ComObject<IUrlHistoryStg2> {
 public:
    HRESULT STDMETHODCALLTYPE AddUrl(LPCOLESTR url, LPCOLESTR title, DWORD) override {
        return Method([&] {
            if (url == nullptr) {
                return E_INVALIDARG;
            }
            if (ToFail(L"AddUrl")) {
                return E_FAIL;
            }
            std::vector<HistoryEntry> entries = HistoryFile::Read();
            auto entry = Find(entries, url);
            if (entry == entries.end()) {
                entry = entries.insert(entries.end(), HistoryEntry{url, {}, {}, {}, {}, 0});
            }
            if (title != nullptr) {
                entry->title = title;
            }
            GetSystemTimeAsFileTime(&entry->visited);
            entry->updated = entry->visited;
            constexpr ULONGLONG twentyDays = 20ULL * 24 * 60 * 60 * 10000000;
            ULARGE_INTEGER expires{};
            expires.LowPart = entry->visited.dwLowDateTime;
            expires.HighPart = entry->visited.dwHighDateTime;
            expires.QuadPart += twentyDays;
            entry->expires = FILETIME{expires.LowPart, expires.HighPart};
            return Written(entries);
        });
    }
    HRESULT STDMETHODCALLTYPE DeleteUrl(LPCOLESTR url, DWORD) override {
        return Method([&] {
            if (url == nullptr) {
                return E_INVALIDARG;
            }
            if (ToFail(L"DeleteUrl")) {
                return E_FAIL;
            }
            std::vector<HistoryEntry> entries = HistoryFile::Read();
            const auto entry = Find(entries, url);
            if (entry == entries.end()) {
                return S_OK;
            }
            entries.erase(entry);
            return Written(entries);
        });
    }
    HRESULT STDMETHODCALLTYPE QueryUrl(LPCOLESTR url, DWORD flags, LPSTATURL record) override {
        return Method([&] {
            if (url == nullptr) {
                return E_INVALIDARG;
            }
            std::vector<HistoryEntry> entries = HistoryFile::Read();
            const auto entry = Find(entries, url);
            if (entry == entries.end()) {
                return E_FAIL;
            }
            if (record != nullptr) {
                Fill(*record, *entry, flags);
            }
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE BindToObject(LPCOLESTR, REFIID, void** object) override {
        if (object != nullptr) {
            *object = nullptr;
        }
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EnumUrls(IEnumSTATURL** entries) override {
        return Method([&] {
            if (entries == nullptr) {
                return E_POINTER;
            }
            *entries = nullptr;
            if (ToFail(L"EnumUrls")) {
                return E_FAIL;
            }
            *entries = MakeCom<Enumerator>(HistoryFile::Read()).Detach();
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE AddUrlAndNotify(LPCOLESTR url, LPCOLESTR title, DWORD flags,
                                              WINBOOL writeHistory, IOleCommandTarget*, IUnknown*) override {
        return writeHistory ? AddUrl(url, title, flags) : S_OK;
    }
    HRESULT STDMETHODCALLTYPE ClearHistory() override {
        return Method([&] { return ToFail(L"ClearHistory") ? E_FAIL : Written({}); });
    }

 private:
    const Alive m_alive;

    static std::vector<HistoryEntry>::iterator Find(std::vector<HistoryEntry>& entries, LPCOLESTR url) {
        return std::find_if(entries.begin(), entries.end(),
                            [url](const HistoryEntry& entry) { return entry.url == url; });
    }
    static HRESULT Written(const std::vector<HistoryEntry>& entries) {
        return HistoryFile::Write(entries) ? S_OK : E_FAIL;
    }
};

class Factory final : public ComObject<IClassFactory> {
 public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        return Method([&]() -> HRESULT {
            if (object == nullptr) {
                return E_POINTER;
            }
            *object = nullptr;
            if (outer != nullptr) {
                return CLASS_E_NOAGGREGATION;
            }
            return MakeCom<History>()->QueryInterface(iid, object);
        });
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        liveObjects += lock ? 1 : -1;
        return S_OK;
    }

 private:
    const Alive m_alive;
};

/// Where the platform looks for the class.
constexpr wchar_t kServerKey[] = L"CLSID\\{3C374A40-BAE4-11CF-BF7D-00AA006946EE}\\InprocServer32";

HRESULT Register(const std::wstring& path) {
    HKEY key = nullptr;
    LSTATUS status =
        RegCreateKeyExW(HKEY_CLASSES_ROOT, kServerKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS) {
        return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    }
    const auto set = [key](const wchar_t* name, const std::wstring& text) {
        return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                              (text.size() + 1) * sizeof(wchar_t));
    };
    status = set(nullptr, path);
    if (status == ERROR_SUCCESS) {
        status = set(L"ThreadingModel", L"Apartment");
    }
    RegCloseKey(key);
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

}  // namespace

}  // namespace kestrelguard::desktop

using namespace kestrelguard::desktop;

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        ownModule = module;
    }
    return TRUE;
}

STDAPI DllCanUnloadNow() {
    return liveObjects == 0 ? S_OK : S_FALSE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return Method([&]() -> HRESULT {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (clsid != CLSID_CUrlHistory) {
            return CLASS_E_CLASSNOTAVAILABLE;
        }
        return MakeCom<Factory>()->QueryInterface(iid, object);
    });
}

STDAPI DllRegisterServer() {
    return Method([] {
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(ownModule, path, MAX_PATH);
        return Register(path);
    });
}

/// Puts the platform's own class back.
STDAPI DllUnregisterServer() {
    return Method([] { return Register(L"ieframe.dll"); });
}

}  // extern "C"
