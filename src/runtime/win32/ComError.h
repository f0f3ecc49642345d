#pragma once

#include <windows.h>

#include <oleauto.h>

#include <utility>

#include "runtime/Edge.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// The failed HRESULT that stands for a run-time error: an automation error's own, 0x800A0000 and the number
/// for the others.
HRESULT HResultOf(const RunTimeError& error) noexcept;

/// The reverse: the run-time error that a failed HRESULT stands for, with the description that the failing
/// method left with the thread (taken away by this), if it left one.
RunTimeError TakeRunTimeError(HRESULT failure);

/// Throws TakeRunTimeError for a failed result.
inline void Check(HRESULT result) {
    if (FAILED(result)) {
        throw TakeRunTimeError(result);
    }
}

/// Makes a call to another object and throws its failure. What an earlier failure may have left with the
/// thread is not taken for this one's description.
template <class Call>
void CallOut(Call&& call) {
    SetErrorInfo(0, nullptr);
    Check(std::forward<Call>(call)());
}

/// Leaves an error's description with the thread, for the caller of a COM method.
void LeaveErrorInfo(const RunTimeError& error);

/// Writes an error where a dispatch call's caller looks for it. Whoever passed `info` owns its texts.
void FillExceptionInfo(const RunTimeError& error, EXCEPINFO& info);

/// The edge of a COM method: runs the action; what it throws becomes the answer and the thread's error
/// information.
template <class Action>
HRESULT AtComMethod(Action&& action) noexcept {
    HRESULT result = S_OK;
    AtEdge(
        [&] {
            result = E_FAIL;
            std::forward<Action>(action)();
            result = S_OK;
        },
        [&result](const RunTimeError& error) {
            result = HResultOf(error);
            LeaveErrorInfo(error);
        });
    return result;
}

}  // namespace kestrelguard
