#include "desktop/Threads.h"

#include <stdexcept>
#include <utility>

#include "desktop/Com.h"

namespace kestrelguard::desktop {

namespace {

constexpr UINT kRunTask = WM_APP + 1;
constexpr wchar_t kDoorClass[] = L"StandInDesktopDoor";

DWORD WINAPI RunOne(void* parameter) noexcept {
    const std::unique_ptr<Task> task(static_cast<Task*>(parameter));
    const Apartment apartment;
    (*task)();
    // What the task holds may be proxies: they go while the thread is still in its apartment.
    *task = nullptr;
    return 0;
}

LRESULT CALLBACK DoorProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == kRunTask) {
        (*reinterpret_cast<const Task*>(lParam))();
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

void RunDetached(Task task) {
    auto parameter = std::make_unique<Task>(std::move(task));
    const Handle thread(CreateThread(nullptr, 0, RunOne, parameter.get(), 0, nullptr));
    if (!thread) {
        throw std::runtime_error("no thread");
    }
    static_cast<void>(parameter.release());  // the thread owns it from here on
}

struct WorkQueue::State {
    mutable Lock lock;
    std::deque<Task> tasks;
    bool running = false;
    bool stopped = false;
    Handle idle{CreateEventW(nullptr, TRUE, TRUE, nullptr)};
};

WorkQueue::WorkQueue() : m_state(std::make_shared<State>()) {}

WorkQueue::~WorkQueue() {
    Stop();
}

void WorkQueue::Post(Task task) {
    const std::shared_ptr<State> state = m_state;
    {
        const Hold hold(state->lock);
        if (state->stopped) {
            return;
        }
        state->tasks.push_back(std::move(task));
        ResetEvent(state->idle.Get());
        if (state->running) {
            return;
        }
        state->running = true;
    }
    RunDetached([state] {
        for (;;) {
            Task next;
            {
                const Hold hold(state->lock);
                if (state->tasks.empty()) {
                    state->running = false;
                    SetEvent(state->idle.Get());
                    return;
                }
                next = std::move(state->tasks.front());
                state->tasks.pop_front();
            }
            next();
        }
    });
}

std::size_t WorkQueue::Waiting() const {
    const Hold hold(m_state->lock);
    return m_state->tasks.size();
}

bool WorkQueue::WaitIdle(DWORD limit) const {
    return WaitForSingleObject(m_state->idle.Get(), limit) == WAIT_OBJECT_0;
}

void WorkQueue::Stop() {
    std::deque<Task> dropped;
    const Hold hold(m_state->lock);
    m_state->stopped = true;
    dropped.swap(m_state->tasks);
}

UiThread::UiThread() {
    m_thread.Reset(CreateThread(nullptr, 0, &UiThread::Run, this, 0, &m_threadId));
    if (!m_thread || !m_ready.Wait(30000) || m_door == nullptr) {
        throw std::runtime_error("no thread for windows");
    }
}

UiThread::~UiThread() {
    PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
    WaitForSingleObject(m_thread.Get(), 30000);
}

void UiThread::Call(const Task& task) const {
    if (GetCurrentThreadId() == m_threadId) {
        task();
        return;
    }
    SendMessageW(m_door, kRunTask, 0, reinterpret_cast<LPARAM>(&task));
}

DWORD WINAPI UiThread::Run(void* self) noexcept {
    const Apartment apartment;
    auto& thread = *static_cast<UiThread*>(self);
    WNDCLASSW type{};
    type.lpfnWndProc = DoorProcedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.lpszClassName = kDoorClass;
    RegisterClassW(&type);
    thread.m_door = CreateWindowExW(0, kDoorClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                    type.hInstance, nullptr);
    thread.m_ready.Set();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    DestroyWindow(thread.m_door);
    return 0;
}

}  // namespace kestrelguard::desktop
