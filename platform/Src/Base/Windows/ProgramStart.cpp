// Starting programs that outlive this one.
#include "Base/NativeSystem.h"
#include "Base/Windows/NativePath.h"
#include "Base/Windows/OwnedHandle.h"
#include "Public/Base/StringEx.h"

// Behind the system's main header, which they need.
#include <objbase.h>
#include <shellapi.h>

namespace Public::Base {

namespace {

/// The shell may hand a start to components that want this of the calling thread.
class ShellApartment {
public:
    ShellApartment() : mEntered(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~ShellApartment() {
        if (SUCCEEDED(mEntered)) ::CoUninitialize();
    }
    ShellApartment(const ShellApartment&) = delete;
    ShellApartment& operator=(const ShellApartment&) = delete;

private:
    HRESULT mEntered;
};

constexpr wchar_t sLongForm[] = L"\\\\?\\";

/// The shell takes neither long paths nor the form in which other calls take them; the short name of such a file, where
/// the volume keeps short names, does as well.
std::wstring forShell(const std::wstring& native) {
    if (!native.starts_with(sLongForm)) return native;
    std::wstring shortened(native.size() + 1, L'\0');
    const DWORD length = ::GetShortPathNameW(native.c_str(), shortened.data(), static_cast<DWORD>(shortened.size()));
    if (length == 0 || length >= shortened.size()) return native;
    shortened.resize(length);
    return shortened.starts_with(sLongForm) ? shortened.substr(std::size(sLongForm) - 1) : shortened;
}

struct Command {
    std::wstring program;
    std::wstring parameters;
    int show = SW_SHOWNORMAL;
};

bool commandOf(const ProgramStart& start, Command& command) {
    if (!toNativePath(start.program, command.program)) return false;
    if (start.parameters.find('\0') != std::string::npos) return failWith(ERROR_INVALID_PARAMETER);
    command.program = forShell(command.program);
    command.parameters = StringEx::string2wstring(start.parameters);
    command.show = start.show ? SW_SHOWNORMAL : SW_HIDE;
    return true;
}

}  // namespace

bool nativeStartElevated(const ProgramStart& start) {
    Command command;
    if (!commandOf(start, command)) return false;
    const ShellApartment apartment;
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof info;
    // The host may end at once, so the start is over before the call returns; and a failure is the caller's to tell.
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
    info.lpVerb = L"runas";
    info.lpFile = command.program.c_str();
    info.lpParameters = command.parameters.c_str();
    info.nShow = command.show;
    if (!::ShellExecuteExW(&info)) return failWithLastError();
    const OwnedHandle process(info.hProcess);
    return true;
}

bool nativeStartPlain(const ProgramStart& start) {
    Command command;
    if (!commandOf(start, command)) return false;
    const ShellApartment apartment;
    return ::ShellExecuteW(nullptr, L"open", command.program.c_str(), command.parameters.c_str(), nullptr,
                           command.show) ||
           failWithLastError();
}

}  // namespace Public::Base
