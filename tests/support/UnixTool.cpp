#include "UnixTool.h"

#include "Loopback.h" // Winsock, before windows.h

#include "ChildProcess.h"

std::wstring UnixPath(const std::filesystem::path& path) {
    using Converter = char*(CDECL*)(const wchar_t*);
    const auto convert = reinterpret_cast<Converter>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (convert == nullptr) return {};
    char* const converted = convert(path.c_str());
    std::wstring copy = std::filesystem::path(reinterpret_cast<const char8_t*>(converted)).wstring(); // UTF-8
    HeapFree(GetProcessHeap(), 0, converted);
    return copy;
}

// Wine neither passes its pipes to a Unix program nor waits for its end: a connection replaces both.
UnixAnswer RunUnix(const std::wstring& command) {
    const LoopbackListener loopback;
    const std::wstring port = std::to_wstring(loopback.Port());
    const ChildProcess shell(L"\\\\?\\unix\\bin\\bash -c \"exec 3<>/dev/tcp/127.0.0.1/" + port + L"; { " + command +
                             L"; } >&3 2>&1 </dev/null; printf '\\n%d' $? >&3\"");
    const SOCKET answer = loopback.Accept();
    const std::string text = ReceiveAll(answer);
    closesocket(answer);
    const std::size_t end = text.rfind('\n');
    return {text.substr(0, end), std::stoi(text.substr(end + 1))};
}
