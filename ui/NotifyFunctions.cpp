#include <tessel/ui/notify.h>
#include <ui/ControlClass.h>

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <span>

namespace {

struct CodeFunction {
    unsigned int code;
    MSG_FUNCTION function;
};

// ODD-31: changing maps to FN_UPDATE and changed to FN_CHANGE, the reverse of the tree and list views.
constexpr CodeFunction kTabCodes[] = {
    {TCN_SELCHANGE, FN_CHANGE}, {TCN_SELCHANGING, FN_UPDATE}, {NM_CLICK, FN_CLICK},
    {NM_SETFOCUS, FN_SETFOCUS}, {NM_KILLFOCUS, FN_KILLFOCUS},
};

constexpr CodeFunction kListboxCodes[] = {
    {LBN_SELCHANGE, FN_CHANGE},  {LBN_DBLCLK, FN_DBLCLK},       {LBN_SELCANCEL, FN_SELCANCEL},
    {LBN_SETFOCUS, FN_SETFOCUS}, {LBN_KILLFOCUS, FN_KILLFOCUS},
};

constexpr CodeFunction kComboCodes[] = {
    {CBN_SELCHANGE, FN_CHANGE},       {CBN_DBLCLK, FN_CLICK},    {CBN_SETFOCUS, FN_SETFOCUS},
    {CBN_KILLFOCUS, FN_KILLFOCUS},    {CBN_EDITCHANGE, FN_EDIT}, {CBN_EDITUPDATE, FN_UPDATE},
    {CBN_DROPDOWN, FN_DROPDOWN},      {CBN_CLOSEUP, FN_CLOSEUP}, {CBN_SELENDOK, FN_SELENDOK},
    {CBN_SELENDCANCEL, FN_SELCANCEL},
};

constexpr unsigned int kWorkstationButtonFocus = 16;
constexpr unsigned int kWorkstationButtonClick = 17;

constexpr CodeFunction kButtonCodes[] = {
    {BN_CLICKED, FN_CLICK},       {BN_DOUBLECLICKED, FN_DBLCLK},          {BN_SETFOCUS, FN_SETFOCUS},
    {BN_KILLFOCUS, FN_KILLFOCUS}, {kWorkstationButtonFocus, FN_SETFOCUS}, {kWorkstationButtonClick, FN_CLICK},
};

constexpr CodeFunction kEditboxCodes[] = {
    {EN_SETFOCUS, FN_SETFOCUS}, {EN_KILLFOCUS, FN_KILLFOCUS}, {EN_CHANGE, FN_CHANGE},
    {EN_UPDATE, FN_UPDATE},     {EN_MAXTEXT, FN_MAXTEXT},
};

constexpr CodeFunction kSliderCodes[] = {
    {TB_LINEUP, FN_CHANGE},        {TB_LINEDOWN, FN_CHANGE},     {TB_PAGEUP, FN_CHANGE},
    {TB_PAGEDOWN, FN_CHANGE},      {TB_TOP, FN_CHANGE},          {TB_BOTTOM, FN_CHANGE},
    {TB_THUMBPOSITION, FN_UPDATE}, {TB_THUMBTRACK, FN_TRACK},    {NM_CUSTOMDRAW, FN_CUSTOMDRAW},
    {NM_SETFOCUS, FN_SETFOCUS},    {NM_KILLFOCUS, FN_KILLFOCUS},
};

constexpr CodeFunction kTreeCodes[] = {
    {NM_CLICK, FN_CLICK},
    {NM_DBLCLK, FN_DBLCLK},
    {NM_SETFOCUS, FN_SETFOCUS},
    {NM_KILLFOCUS, FN_KILLFOCUS},
    {NM_CUSTOMDRAW, FN_CUSTOMDRAW},
    {LVN_KEYDOWN, FN_CLICK},
    {LVN_ITEMCHANGING, FN_CHANGE},
    {LVN_ITEMCHANGED, FN_UPDATE},
    {LVN_BEGINLABELEDITW, FN_EDIT},
    {LVN_ENDLABELEDITW, FN_UPDATE},
    {LVN_DELETEITEM, FN_DELETEITEM},
    {LVN_COLUMNCLICK, FN_COLUMNCLICK},
    {LVN_GETDISPINFOW, FN_GETDISPINFO},
    {TVN_KEYDOWN, FN_CLICK},
    {TVN_SELCHANGINGW, FN_CHANGE},
    {TVN_SELCHANGEDW, FN_UPDATE},
    {TVN_BEGINLABELEDITW, FN_EDIT},
    {TVN_ENDLABELEDITW, FN_UPDATE},
    {TVN_ITEMEXPANDINGW, FN_EXPAND},
    {TVN_ITEMEXPANDEDW, FN_EXPAND},
    {TVN_DELETEITEMW, FN_DELETEITEM},
};

constexpr CodeFunction kHeaderCodes[] = {
    {HDN_ENDTRACKW, FN_TRACK},
    {NM_SETFOCUS, FN_SETFOCUS},
    {NM_KILLFOCUS, FN_KILLFOCUS},
};

MSG_FUNCTION Find(std::span<const CodeFunction> codes, int code) {
    const auto found = std::find_if(codes.begin(), codes.end(), [code](const CodeFunction& candidate) {
        return candidate.code == static_cast<unsigned int>(code);
    });
    return found == codes.end() ? FN_NONE : found->function;
}

} // namespace

FIELD_TYPE FormatSysMsg::ControlType(HWND hWnd) {
    return tessel::ClassifyControl(hWnd);
}

MSG_FUNCTION FormatSysMsg::GetFunctionID(HWND hCtrl, int code) {
    static constexpr struct {
        FIELD_TYPE type;
        MSG_FUNCTION (FormatSysMsg::*getFunction)(int code);
    } kMappers[] = {
        {FT_TAB, &FormatSysMsg::GetTabFunction},
        {FT_LISTBOX, &FormatSysMsg::GetListboxFunction},
        {FT_COMBOBOX, &FormatSysMsg::GetComboFunction},
        {FT_BUTTON, &FormatSysMsg::GetButtonFunction},
        {FT_EDIT, &FormatSysMsg::GetEditboxFunction},
        {FT_STATIC, &FormatSysMsg::GetStaticFunction},
        {FT_SLIDER, &FormatSysMsg::GetSliderFunction},
        {FT_PROGRESSBAR, &FormatSysMsg::GetProgressBarFunction},
        {FT_SCROLLBAR, &FormatSysMsg::GetScrollBarFunction},
        {FT_TREEVIEW, &FormatSysMsg::GetTreeFunction},
        {FT_LISTVIEW, &FormatSysMsg::GetTreeFunction},
        {FT_HEADER, &FormatSysMsg::GetHeaderFunction},
    };
    const FIELD_TYPE type = ControlType(hCtrl);
    const auto mapper = std::find_if(std::begin(kMappers), std::end(kMappers),
                                     [type](const auto& candidate) { return candidate.type == type; });
    return mapper == std::end(kMappers) ? FN_NONE : (this->*mapper->getFunction)(code);
}

MSG_FUNCTION FormatSysMsg::GetTabFunction(int code) {
    return Find(kTabCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetListboxFunction(int code) {
    return Find(kListboxCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetComboFunction(int code) {
    return Find(kComboCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetButtonFunction(int code) {
    return Find(kButtonCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetEditboxFunction(int code) {
    return Find(kEditboxCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetStaticFunction(int code) {
    return Find({}, code);
}

MSG_FUNCTION FormatSysMsg::GetSliderFunction(int code) {
    return Find(kSliderCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetProgressBarFunction(int code) {
    return Find({}, code);
}

MSG_FUNCTION FormatSysMsg::GetScrollBarFunction(int code) {
    return Find({}, code);
}

MSG_FUNCTION FormatSysMsg::GetTreeFunction(int code) {
    return Find(kTreeCodes, code);
}

MSG_FUNCTION FormatSysMsg::GetHeaderFunction(int code) {
    return Find(kHeaderCodes, code);
}
