#include <ui/ControlClass.h>

#include <algorithm>
#include <cwchar>

namespace tessel {

FIELD_TYPE ClassifyControl(HWND hWnd, std::span<const ControlClass> classes) {
    wchar_t name[100];
    if (hWnd == nullptr || GetClassNameW(hWnd, name, 100) == 0) return FT_UNKNOWN;
    const auto found = std::find_if(classes.begin(), classes.end(), [&name](const ControlClass& candidate) {
        return std::wcscmp(candidate.className, name) == 0;
    });
    return found == classes.end() ? FT_UNKNOWN : found->type;
}

} // namespace tessel
