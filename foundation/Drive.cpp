#include <tessel/foundation/drive.h>
#include <tessel/foundation/errormode.h>
#include <tessel/foundation/module.h>

#include <cstdlib>

unsigned short LOFROMWORD(unsigned long word) {
    return LOWORD(word);
}

int FileDelete(const wchar_t* name) {
    return DeleteFileW(name);
}

int WriteTarget(HWND target, const wchar_t* buffer, unsigned long count) {
    DWORD written = 0;
    const BOOL succeeded = WriteFile(static_cast<HANDLE>(target), buffer, count, &written, nullptr);
    return succeeded && written == count ? 0 : 1;
}

unsigned long GetVolumeSerialNumber(const wchar_t* path) {
    if (path == nullptr) { // GUARD-09
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    wchar_t root[_MAX_DRIVE + 1] = {};
    _wsplitpath(path, root, nullptr, nullptr, nullptr);
    (void)wcscat(root, L"\\"); // the drive is two characters at most
    DWORD serial = 0;
    return GetVolumeInformationW(root, nullptr, 0, &serial, nullptr, nullptr, nullptr, 0) ? serial : 0;
}

int GetDriveFreeSpace(const wchar_t* path, unsigned long long* freeToCaller, unsigned long long* total) {
    ULARGE_INTEGER callersBytes{};
    ULARGE_INTEGER allBytes{};
    BeginErrorModeFailCritical();
    const int result = GetDiskFreeSpaceExW(path, &callersBytes, &allBytes, nullptr);
    const DWORD error = GetLastError();
    EndErrorMode();
    SetLastError(error);
    if (result == 0) return result;
    if (freeToCaller != nullptr) *freeToCaller = callersBytes.QuadPart;
    if (total != nullptr) *total = allBytes.QuadPart;
    return result;
}
