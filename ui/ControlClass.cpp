#include <ui/ControlClass.h>

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace {

constexpr int kNameLength = 100;

constexpr struct ControlClass {
    const wchar_t* className;
    FIELD_TYPE type;
} kControlClasses[] = {
    {L"Button", FT_BUTTON},
    {L"Edit", FT_EDIT},
    {L"ListBox", FT_LISTBOX},
    {L"ComboBox", FT_COMBOBOX},
    {L"Static", FT_STATIC},
    {L"msctls_trackbar32", FT_SLIDER},
    {L"msctls_progress32", FT_PROGRESSBAR},
    {L"ScrollBar", FT_SCROLLBAR},
    {L"SysTabControl32", FT_TAB},
    {L"SysTreeView32", FT_TREEVIEW},
    {L"SysListView32", FT_LISTVIEW},
    {L"RichEdit20W", FT_RICHEDIT},
    {L"SysHeader32", FT_HEADER},
};

} // namespace

FIELD_TYPE tessel::ClassifyControl(HWND hWnd) {
    wchar_t name[kNameLength];
    if (hWnd == nullptr || GetClassNameW(hWnd, name, kNameLength) == 0) return FT_UNKNOWN;
    const auto* const found =
        std::find_if(std::begin(kControlClasses), std::end(kControlClasses),
                     [&name](const ControlClass& candidate) { return std::wcscmp(candidate.className, name) == 0; });
    return found == std::end(kControlClasses) ? FT_UNKNOWN : found->type;
}
