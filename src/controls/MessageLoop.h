#pragma once

namespace kestrelguard {

/// The run of pending window messages ("let the user interface process pending events").
class MessageLoop {
 public:
    virtual ~MessageLoop() = default;

    virtual void DoEvents() = 0;
};

}  // namespace kestrelguard
