#include "controls/WinsockErrors.h"

#include "runtime/NumberedText.h"
#include "runtime/Numbers.h"

namespace kestrelguard {

namespace {

constexpr NumberedText kTexts[] = {
    {winsock_errors::kInvalidPropertyValue, L"Invalid property value"},
    {winsock_errors::kBadState, L"Wrong connection state for the requested operation"},
    {winsock_errors::kInvalidArgument, L"The argument is not in the correct format or out of range"},
    {winsock_errors::kInvalidOperation, L"Invalid operation at current state"},
    {10004, L"The operation was cancelled"},
    {10013, L"The address is a broadcast address"},
    {10014, L"Invalid address"},
    {10022, L"Invalid argument"},
    {10024, L"No more sockets can be opened"},
    {10038, L"The descriptor is not a socket"},
    {10040, L"The message is too long"},
    {10043, L"The protocol is not supported"},
    {10047, L"The address family is not supported"},
    {10048, L"The address is in use"},
    {10049, L"The address is not available on this computer"},
    {10050, L"The network is down"},
    {10051, L"The network cannot be reached from here at this time"},
    {10052, L"The network dropped the connection on a reset"},
    {10053, L"The connection was aborted"},
    {10054, L"The connection was reset by the remote side"},
    {10055, L"No buffer space is available"},
    {10056, L"The socket is connected already"},
    {10057, L"The socket is not connected"},
    {10058, L"The socket has been shut down"},
    {10060, L"The attempt to connect timed out"},
    {10061, L"The connection was refused"},
    {10064, L"The host is down"},
    {10065, L"There is no route to the host"},
    {10091, L"The network is not ready"},
    {10092, L"The network library has another version"},
    {10093, L"The network library has not been initialised"},
    {11001, L"The host was not found"},
    {11002, L"The host was not found; try again"},
    {11003, L"The name service failed"},
    {11004, L"The name has no address"},
};

}  // namespace

std::wstring WinsockErrorText(std::int32_t number) {
    const wchar_t* const text = TextOf(kTexts, number);
    return text != nullptr ? text : L"Socket error " + Decimal(number);
}

RunTimeError WinsockError(std::int32_t number) {
    return RunTimeError(number, WinsockErrorText(number));
}

}  // namespace kestrelguard
