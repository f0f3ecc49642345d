#include "runtime/win32/FrameAnswers.h"

namespace kestrelguard {

bool FrameAnswers(HWND frame, UINT patience) {
    DWORD_PTR result = 0;
    SetLastError(ERROR_SUCCESS);
    if (SendMessageTimeoutA(frame, WM_NULL, 0, 0, SMTO_ABORTIFHUNG | SMTO_BLOCK, patience, &result) != 0) {
        return true;
    }
    const DWORD error = GetLastError();
    return error != ERROR_SUCCESS && error != ERROR_TIMEOUT;
}

}  // namespace kestrelguard
