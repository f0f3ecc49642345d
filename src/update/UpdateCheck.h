#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "controls/MessageBoxes.h"
#include "controls/MessageLoop.h"
#include "controls/Winsock.h"
#include "runtime/System.h"
#include "update/WindowsVersion.h"

namespace kestrelguard {

/// The wall clock of the look-up's throttle.
class UpdateClock {
 public:
    virtual ~UpdateClock() = default;
    /// Whole seconds since the zero date-time (30 December 1899, midnight).
    virtual std::int64_t Now() const = 0;
};

/// What the update check has to know of the program around it, and the two things it may ask of it.
class UpdateProgram {
 public:
    virtual ~UpdateProgram() = default;
    /// The live value of the settings' use count.
    virtual std::int32_t UseCount() const = 0;
    /// The main window's caption.
    virtual std::wstring MainWindowText() const = 0;
    /// Writes the settings file.
    virtual void WriteSettings() = 0;
    /// Starts ZEVUpdate.exe of the program's folder, with a normal window.
    virtual void StartUpdater(const std::wstring& arguments) = 0;
};

/// The members of the main window that the update check works on.
struct UpdateData {
    /// Major, minor and revision, joined by ".".
    std::wstring versionText;
    std::wstring windowsCode;
    /// When the last look-up was started, in seconds of UpdateClock.
    std::int64_t lastLookupTime = 0;
    /// Kept: neither of the two is cleared after start-up; a second look-up appends.
    std::wstring lookupBuffer;
    std::int32_t lookupBytes = 0;
    std::int32_t lookupLength = 0;
    std::wstring updateServer;
    /// The maker's test switch; always false in the product.
    bool useTestServer = false;
    /// A check is under way.
    bool checkBusy = false;
    /// A version reply was received in this run: no further check starts.
    bool updateOffered = false;
};

/// Asks the maker's servers, once an hour at most, whether there is a newer version, and tells the user.
///
/// Everything is driven by the events of the two sockets; but for the notice nothing waits. A failure is
/// silent: the socket is closed and the check is idle again.
class UpdateCheck {
 public:
    /// All of it outlives the check.
    struct Parts {
        Winsock& zev;      // its events belong to ZevEvents()
        Winsock& ZEV_PLI;  // its events belong to ZevPliEvents()
        const UpdateClock& clock;
        const Locale& locale;
        MessageLoop& messages;
        MessageBoxes& boxes;
        UpdateProgram& program;
    };

    UpdateCheck(const Parts& parts, UpdateData data);
    UpdateCheck(const UpdateCheck&) = delete;
    UpdateCheck& operator=(const UpdateCheck&) = delete;

    /// Fills `windowsCode`; called once, at start-up.
    void WinVersion(const WindowsVersionSource& system);

    /// A browser has finished loading the address.
    void DocumentComplete(const std::wstring& address);

    /// Starts the first leg, unless the last one was started within the hour.
    void LookupUpdateServer();
    /// Reads the server's address from `lookupBuffer` and starts the second leg.
    void ParseLookupReply();
    /// Starts the second leg.
    void ConnectUpdateServer();

    WinsockEvents& ZevEvents() noexcept { return m_zevEvents; }
    WinsockEvents& ZevPliEvents() noexcept { return m_zevPliEvents; }

    const UpdateData& Data() const noexcept { return m_data; }

    /// What one exchange may bring before its socket is closed: no answer of the maker's servers comes near.
    static constexpr std::size_t kTolerance = 0x100000;
    /// What the notice shows of an offered version.
    static constexpr std::size_t kShownVersion = 64;

 private:
    struct Zev final : WinsockEvents {
        explicit Zev(UpdateCheck& owner) : check(owner) {}
        void OnConnect() override { check.zev_Connect(); }
        void OnDataArrival(std::int32_t bytesTotal) override { check.zev_DataArrival(bytesTotal); }
        void OnError(std::int32_t /*number*/, const std::wstring& /*description*/) override {
            check.Abandon(check.m_zev);
        }
        void OnClose() override { check.zev_Close(); }
        UpdateCheck& check;
    };
    struct ZevPli final : WinsockEvents {
        explicit ZevPli(UpdateCheck& owner) : check(owner) {}
        void OnConnect() override { check.ZEV_PLI_Connect(); }
        void OnDataArrival(std::int32_t bytesTotal) override { check.ZEV_PLI_DataArrival(bytesTotal); }
        void OnError(std::int32_t /*number*/, const std::wstring& /*description*/) override {
            check.Abandon(check.m_zevPli);
        }
        void OnClose() override { check.ZEV_PLI_Close(); }
        UpdateCheck& check;
    };

    void zev_Connect();
    void zev_DataArrival(std::int32_t bytesTotal);
    void zev_Close();
    void ZEV_PLI_Connect();
    void ZEV_PLI_DataArrival(std::int32_t bytesTotal);
    void ZEV_PLI_Close();

    /// How every failure ends: the socket is closed, no check is under way.
    void Abandon(Winsock& socket);
    void ReadHeader(const std::wstring& chunk);
    void Offer(const std::wstring& offered);

    Winsock& m_zev;
    Winsock& m_zevPli;
    const UpdateClock& m_clock;
    const Locale& m_locale;
    MessageLoop& m_messages;
    MessageBoxes& m_boxes;
    UpdateProgram& m_program;
    UpdateData m_data;
    Zev m_zevEvents{*this};
    ZevPli m_zevPliEvents{*this};
    /// Whether the connection at hand has brought anything.
    bool m_lookupAnswered = false;
    std::size_t m_replyBytes = 0;
};

}  // namespace kestrelguard
