#pragma once

#include <memory>

namespace kestrelguard {

/// Calls `call(what)`; what that throws passes.
void CallOutOfSight(void (*call)(void*), void* what);

/// Runs a step that may throw from a function that the compiler does not see while it compiles the caller.
///
/// GCC 12 is mistaken about a variable of a class type that a throwing call was to replace (`field = Take()`)
/// when the call, the variable and the handler have come together in one function: it drops the variable's
/// first value as overwritten, and whoever reads the variable after the handler reads what happened to lie
/// there. Out of the compiler's sight the step may read the variable, so the first value stays.
template <class Step>
void OutOfSight(Step& step) {
    CallOutOfSight([](void* what) { (*static_cast<Step*>(what))(); },
                   const_cast<void*>(static_cast<const void*>(std::addressof(step))));
}

}  // namespace kestrelguard
