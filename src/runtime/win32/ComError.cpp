#include "runtime/win32/ComError.h"

#include <cstdint>
#include <string>

#include "runtime/win32/Com.h"

namespace kestrelguard {

namespace {

constexpr std::uint32_t kRunTimeErrors = 0x800A0000U;
constexpr wchar_t kSource[] = L"Kestrelguard";

}  // namespace

HRESULT HResultOf(const RunTimeError& error) noexcept {
    const std::int32_t number = error.Number();
    if (number < 0) {
        return number;
    }
    return number == 0
               ? E_FAIL
               : static_cast<HRESULT>(kRunTimeErrors | (static_cast<std::uint32_t>(number) & 0xFFFFU));
}

RunTimeError TakeRunTimeError(HRESULT failure) {
    std::int32_t number = failure;
    if ((static_cast<std::uint32_t>(failure) & 0xFFFF0000U) == kRunTimeErrors) {
        number = static_cast<std::int32_t>(static_cast<std::uint32_t>(failure) & 0xFFFFU);
    }
    ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, info.Put()) == S_OK && info) {
        Bstr description;
        if (SUCCEEDED(info->GetDescription(description.Put())) && description.Length() > 0) {
            return RunTimeError(number, description.Text());
        }
    }
    return RunTimeError(number);
}

void LeaveErrorInfo(const RunTimeError& error) {
    ComPtr<ICreateErrorInfo> maker;
    if (FAILED(CreateErrorInfo(maker.Put()))) {
        return;
    }
    std::wstring source(kSource);
    std::wstring description(error.Description());
    maker->SetSource(source.data());
    maker->SetDescription(description.data());
    if (const auto info = maker.As<IErrorInfo>()) {
        SetErrorInfo(0, info.Get());
    }
}

void FillExceptionInfo(const RunTimeError& error, EXCEPINFO& info) {
    Bstr source(kSource);
    Bstr description(error.Description());
    info = EXCEPINFO{};
    info.scode = HResultOf(error);
    info.bstrSource = source.Detach();
    info.bstrDescription = description.Detach();
}

}  // namespace kestrelguard
