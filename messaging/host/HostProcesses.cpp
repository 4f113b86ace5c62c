#include <foundation/Launcher.h>
#include <tessel/messaging/host.h>

#include <process.h>

#include <cwchar>
#include <memory>
#include <new>

namespace {

constexpr unsigned long kNoThread = 0xFFFFFFFF;
constexpr std::size_t kErrorTextLength = 512;

using ManagerMain = void (*)(HINSTANCE module);

HINSTANCE LoadOrShowError(const wchar_t* moduleName) {
    const HINSTANCE module = LoadLibraryW(moduleName);
    if (module != nullptr) return module;
    const auto error = static_cast<long>(GetLastError());
    wchar_t text[kErrorTextLength]{};
    (void)_snwprintf(text, kErrorTextLength - 1, L"DllName: %ls\nErrorCode:%ld",
                     moduleName == nullptr ? L"" : moduleName, error);
    (void)MessageBoxW(nullptr, text, L"LoadLibrary failed", MB_OK);
    SetLastError(static_cast<DWORD>(error));
    return nullptr;
}

/// "ConsoleApp.exe ARGUMENTS"; null: out of memory.
std::unique_ptr<wchar_t[]> MakeCommandLine(const wchar_t* arguments) {
    constexpr wchar_t kProgram[] = L"ConsoleApp.exe ";
    std::unique_ptr<wchar_t[]> line(new (std::nothrow) wchar_t[std::size(kProgram) + std::wcslen(arguments)]);
    if (line != nullptr) std::wcscat(std::wcscpy(line.get(), kProgram), arguments);
    return line;
}

} // namespace

void* OSClass::StartProcess(const wchar_t* application, const unsigned char* arguments) {
    const auto* const text = reinterpret_cast<const wchar_t*>(arguments);
    const auto line = MakeCommandLine(text == nullptr ? L"" : text);
    if (line == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    PROCESS_INFORMATION process{};
    if (line == nullptr || !tessel::StartShown(application, line.get(), process)) return nullptr;
    return process.hProcess; // ODD-62: the thread's handle is never closed
}

unsigned long OSClass::CreateThread(void (*entry)(void*)) {
    const auto thread = static_cast<unsigned long>(_beginthread(entry, 0, nullptr));
    if (thread == kNoThread) return 0;
    Sleep(0);
    return thread;
}

unsigned long OSClass::CreateThreadedManager(const wchar_t* moduleName, HINSTANCE* module) {
    const HINSTANCE loaded = LoadOrShowError(moduleName);
    if (module != nullptr) *module = loaded; // GUARD-09
    if (loaded == nullptr) return kNoThread;
    const auto thread = static_cast<unsigned long>(_beginthread(&CreateManager, 0, loaded));
    if (thread == kNoThread) (void)FreeLibrary(loaded); // loaded just now
    return thread;
}

void OSClass::CreateManager(void* module) {
    const auto manager = static_cast<HINSTANCE>(module);
    const auto main = reinterpret_cast<ManagerMain>(reinterpret_cast<void*>(GetProcAddress(manager, "ManagerMain")));
    if (main != nullptr) main(manager);
    (void)FreeLibrary(manager); // loaded for this thread
}

HINSTANCE OSClass::OpenResourceFile(const wchar_t* moduleName) {
    return LoadOrShowError(moduleName);
}

void OSClass::CloseResourceFile(HINSTANCE module) {
    (void)FreeLibrary(module); // has no result
}
