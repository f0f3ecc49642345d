#pragma once

#include "desktop/Com.h"

namespace kestrelguard::desktop {

/// What the window list hands out for a browser of another process: the same browser, but handing it on takes
/// no word with its process, which may be stopped.
///
/// The system's own proxy has a few references to share with whoever gets the browser next, and asks the
/// process for more when they are used up. This one has a stock of them, asked for while the process answers.
/// The object itself when it gives none.
ComPtr<IDispatch> HandOut(const ComPtr<IDispatch>& browser);

/// The other side: packs `count` references to an object for other processes, one after the other, each led
/// by its size. An array of bytes; VT_EMPTY when there is no memory.
Variant PackReferences(IDispatch* object, int count);

}  // namespace kestrelguard::desktop
