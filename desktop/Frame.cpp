#include "desktop/Frame.h"

#include <string>

#include "desktop/BrowserObject.h"

namespace kestrelguard::desktop {

namespace {

constexpr wchar_t kClass[] = L"IEFrame";
constexpr UINT kChanged = WM_APP + 2;

/// What a window keeps of its browser.
struct View {
    std::shared_ptr<BrowserObject> browser;
};

View* ViewOf(HWND window) {
    return reinterpret_cast<View*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

std::wstring Caption(const BrowserObject& browser) {
    const std::wstring title = browser.Title();
    return title.empty() ? L"Microsoft Internet Explorer" : title + L" - Microsoft Internet Explorer";
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    View* view = ViewOf(window);
    switch (message) {
        case WM_NCCREATE: {
            const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
            break;
        }
        case kChanged:
            if (view != nullptr) {
                SetWindowTextW(window, Caption(*view->browser).c_str());
            }
            return 0;
        case WM_CLOSE:
            // The browser closes from its own thread: this one never calls out.
            if (view != nullptr) {
                view->browser->Quit();
            }
            return 0;
        case WM_NCDESTROY: {
            const std::unique_ptr<View> last(view);
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            break;
        }
        default:
            break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

HWND CreateFrame(const std::shared_ptr<BrowserObject>& browser) {
    WNDCLASSW type{};
    type.lpfnWndProc = Procedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    type.lpszClassName = kClass;
    RegisterClassW(&type);
    auto view = std::make_unique<View>(View{browser});
    const DWORD visible = browser->Options().shown ? WS_VISIBLE : 0;
    const HWND window =
        CreateWindowExW(0, kClass, Caption(*browser).c_str(), WS_OVERLAPPEDWINDOW | visible, CW_USEDEFAULT,
                        CW_USEDEFAULT, 640, 420, nullptr, nullptr, type.hInstance, view.get());
    if (window != nullptr) {
        view.release();  // WM_NCDESTROY takes it back
    }
    return window;
}

void FrameChanged(HWND window) {
    if (window != nullptr) {
        PostMessageW(window, kChanged, 0, 0);
    }
}

}  // namespace kestrelguard::desktop
