#include <foundation/SharedOwners.h>
#include <ui/ControlClass.h>
#include <ui/DialogInterfaceCommands.h>
#include <ui/DialogInterfaceImages.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

struct DialogInterfaceLayout {
    static constexpr bool kOn32Bits = sizeof(void*) == 4;
    static_assert(offsetof(DIALOG_INTERFACE, hOwnDialog) == sizeof(void*));
    static_assert(offsetof(DIALOG_INTERFACE, hCtrl) == 3 * sizeof(void*));
    static_assert(offsetof(DIALOG_INTERFACE, CtrlId) == 4 * sizeof(void*));
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, Action) == 28);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, Index) == 40);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, Data) == 48);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, hImageList) == 56);
    static_assert(!kOn32Bits || offsetof(DIALOG_INTERFACE, LVSelected) == 64);
    static_assert(!kOn32Bits || sizeof(DIALOG_INTERFACE) == 80);
};

DIALOG_INTERFACE::DIALOG_INTERFACE(HWND dialog)
    : hOwnDialog(nullptr), hDialog(dialog), hCtrl(nullptr), CtrlId(0), CtrlType(FT_UNKNOWN), Command(CMD_POSITION),
      Action(DA_SHOW), X(0), Y(0), Index(0), BufferLen(0), Data(0), Color(0), hImageList(nullptr),
      ImageIndex(0), LVSelected{} {}

DIALOG_INTERFACE::DIALOG_INTERFACE(HINSTANCE instance, int dialogId, HWND parent, DLGPROC procedure, LPARAM initParam)
    : DIALOG_INTERFACE(CreateDialogParamW(instance, MAKEINTRESOURCEW(dialogId), parent, procedure, initParam)) {
    hOwnDialog = hDialog;
}

DIALOG_INTERFACE::DIALOG_INTERFACE(const DIALOG_INTERFACE& other) {
    ShareFields(other);
}

DIALOG_INTERFACE& DIALOG_INTERFACE::operator=(const DIALOG_INTERFACE& other) {
    if (this == &other) return *this;
    if (hImageList != nullptr && tessel::RemoveOwner(hImageList)) tessel::LeaveImages(hImageList, hDialog);
    ShareFields(other);
    return *this;
}

DIALOG_INTERFACE::~DIALOG_INTERFACE() {
    // GUARD-44: the last copy destroys the image list; each doing so would free it twice.
    if (hImageList != nullptr && tessel::RemoveOwner(hImageList)) tessel::DestroyImages(hImageList);
    // ODD-40: the first copy to go destroys the dialog, whoever else still uses it.
    if (IsWindow(hOwnDialog)) DestroyWindow(hOwnDialog);
}

void DIALOG_INTERFACE::ShareFields(const DIALOG_INTERFACE& other) {
    hOwnDialog = other.hOwnDialog;
    hDialog = other.hDialog;
    hCtrl = other.hCtrl;
    CtrlId = other.CtrlId;
    CtrlType = other.CtrlType;
    Command = other.Command;
    Action = other.Action;
    X = other.X;
    Y = other.Y;
    Index = other.Index;
    BufferLen = other.BufferLen;
    Data = other.Data;
    Color = other.Color;
    hImageList = other.hImageList != nullptr && tessel::AddOwner(other.hImageList) ? other.hImageList : nullptr;
    ImageIndex = other.ImageIndex;
    std::copy(std::begin(other.LVSelected), std::end(other.LVSelected), LVSelected);
}

int DIALOG_INTERFACE::RefreshWindow(HWND hWnd) {
    return InvalidateRect(hWnd, nullptr, FALSE) ? 0 : 1;
}

int DIALOG_INTERFACE::SetTargetDialog(HWND dialog) {
    hDialog = dialog;
    return 0;
}

HWND DIALOG_INTERFACE::GetHandle(int id) {
    return GetDlgItem(hDialog, id);
}

HWND DIALOG_INTERFACE::GetHandle() {
    return hDialog;
}

/// Tree views and headers count as unknown: no command has a part of its own for them.
FIELD_TYPE DIALOG_INTERFACE::ControlType(HWND hWnd) {
    const FIELD_TYPE type = tessel::ClassifyControl(hWnd);
    return type == FT_TREEVIEW || type == FT_HEADER ? FT_UNKNOWN : type;
}

/// Whether the selected control is still the dialog's item of that identifier. Searching the dialog takes longer than
/// adding an item does; asking the control takes a hundredth of that.
bool DIALOG_INTERFACE::IsSelected(int id) const {
    return CtrlId == id && hCtrl != nullptr && GetDlgCtrlID(hCtrl) == id && GetAncestor(hCtrl, GA_PARENT) == hDialog;
}

/// Makes an item the selected control, or the dialog itself when it has no such item.
/// @return false: there is no target dialog
bool DIALOG_INTERFACE::Select(int id) {
    if (hDialog == nullptr) return false;
    if (!IsSelected(id)) hCtrl = GetDlgItem(hDialog, id);
    CtrlId = id;
    if (hCtrl == nullptr) hCtrl = hDialog;
    CtrlType = ControlType(hCtrl);
    return true;
}

/// Selects an item. @return whether it is of this kind
bool DIALOG_INTERFACE::Select(int id, FIELD_TYPE type) {
    return Select(id) && CtrlType == type;
}

LRESULT DIALOG_INTERFACE::Send(UINT message, LPARAM wParam, LPARAM lParam) {
    const Commands::Kept kept(*this);
    return SendMessageW(hCtrl, message, static_cast<WPARAM>(wParam), lParam);
}

LRESULT DIALOG_INTERFACE::SendData(UINT message, LPARAM wParam, const void* data) {
    return Send(message, wParam, reinterpret_cast<LPARAM>(data));
}

int DIALOG_INTERFACE::ProcessMessage(int id, wchar_t* text) {
    static constexpr Commands::Handler kCommands[] = {
        Commands::Position,         Commands::Display,    Commands::Set,  Commands::Get,   Commands::Add,
        Commands::Delete,           Commands::Reset,      Commands::Size, Commands::Range, Commands::GetCount,
        Commands::SetEditSelection, Commands::TextColour,
    };
    return Select(id) ? kCommands[Command](*this, text) : 1;
}

int DIALOG_INTERFACE::Run(COMMAND command, int id, const wchar_t* text) {
    Command = command;
    return ProcessMessage(id, const_cast<wchar_t*>(text)); // only Get writes, and its text is the caller's buffer
}

int DIALOG_INTERFACE::Commands::Run(std::span<const ForType> table, DIALOG_INTERFACE& dialog, wchar_t* text,
                                    int otherwise) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&dialog](const ForType& entry) { return entry.type == dialog.CtrlType; });
    return found == table.end() ? otherwise : found->handler(dialog, text);
}
