// Listens to the events of every browser window that is listed when it starts and makes the calls into the
// system that no program can leave out which does what ours does: for a new window it asks for the two keys
// and counts in two labels, for a navigation it puts the address into a tree. Its window is hidden, as the
// program's is in the tray. It keeps nothing from happening.
//
//   LeastSink    writes a line when it listens; ends when its process is ended

#include <windows.h>

#include <commctrl.h>

#include <array>
#include <cstdio>

#include "NullListener.h"

namespace {

class LeastListener final : public kestrelguard::bench::NullListener {
 public:
    LeastListener() {
        InitCommonControls();
        const HWND frame = CreateWindowExA(0, "STATIC", "least", WS_OVERLAPPEDWINDOW, 0, 0, 400, 300, nullptr,
                                           nullptr, nullptr, nullptr);
        for (HWND& label : m_labels) {
            label = Child(frame, "STATIC");
        }
        m_tree = Child(frame, WC_TREEVIEWA);
        TVINSERTSTRUCTA insertion = {};
        insertion.hParent = TVI_ROOT;
        insertion.item.mask = TVIF_TEXT;
        insertion.item.pszText = const_cast<char*>("address");
        m_item = reinterpret_cast<HTREEITEM>(
            SendMessageA(m_tree, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insertion)));
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                                     EXCEPINFO*, UINT*) noexcept override {
        if (event == DISPID_NEWWINDOW2) {
            CountUnlessKeysAreHeld();
        } else if (event == DISPID_BEFORENAVIGATE2) {
            // The last but one: arguments come from the end.
            const VARIANT& address = arguments->rgvarg[arguments->cArgs - 2];
            Show(V_VT(&address) == (VT_BYREF | VT_VARIANT) ? V_BSTR(V_VARIANTREF(&address))
                                                           : V_BSTR(&address));
        }
        return S_OK;
    }

 private:
    static HWND Child(HWND frame, const char* kind) {
        return CreateWindowExA(0, kind, "", WS_CHILD | WS_VISIBLE, 0, 0, 100, 100, frame, nullptr, nullptr,
                               nullptr);
    }
    void CountUnlessKeysAreHeld() {
        if (GetAsyncKeyState(VK_CONTROL) == 0 && GetAsyncKeyState(VK_SHIFT) == 0) {
            char text[16];
            std::snprintf(text, sizeof text, "%d", ++m_count);
            for (const HWND label : m_labels) {
                SetWindowTextA(label, text);
            }
        }
    }
    void Show(BSTR address) {
        char text[512] = {};
        WideCharToMultiByte(CP_ACP, 0, address, -1, text, sizeof text - 1, nullptr, nullptr);
        TVITEMA item = {};
        item.mask = TVIF_HANDLE | TVIF_TEXT;
        item.hItem = m_item;
        item.pszText = text;
        SendMessageA(m_tree, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
    }

    std::array<HWND, 2> m_labels = {};
    HWND m_tree = nullptr;
    HTREEITEM m_item = nullptr;
    int m_count = 0;
};

}  // namespace

int main() {
    CoInitialize(nullptr);
    static LeastListener sink;
    kestrelguard::bench::RunSink(sink);
}
