#include <foundation/SharedOwners.h>
#include <ui/ControlClass.h>
#include <ui/DialogInterfaceCommands.h>
#include <ui/DialogInterfaceImages.h>

#include <algorithm>
#include <iterator>

using tessel::DialogControl;
using tessel::DialogRequest;

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
    if (hImageList != nullptr && tessel::RemoveOwner(hImageList)) tessel::HandOverImages(hImageList, hDialog);
    ShareFields(other);
    return *this;
}

DIALOG_INTERFACE::~DIALOG_INTERFACE() {
    // GUARD-44: only the last copy destroys the image list; otherwise it would be freed twice.
    if (hImageList != nullptr && tessel::RemoveOwner(hImageList)) tessel::DestroyImages(hImageList);
    // ODD-40: the first copy destroys the dialog, even if others still use it.
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
    hImageList = tessel::Share(other.hImageList);
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

/// Tree views and headers are unknown kinds: no command does anything special for them.
FIELD_TYPE DIALOG_INTERFACE::ControlType(HWND hWnd) {
    const FIELD_TYPE type = tessel::ClassifyControl(hWnd);
    return type == FT_TREEVIEW || type == FT_HEADER ? FT_UNKNOWN : type;
}

/// Whether the selected control is still the dialog's item of that identifier, and so still of its kind: a window keeps
/// its class, and its handle becomes another window's only after some 65,000 others. Searching the dialog takes ten
/// times as long as adding an item to a list box; asking the control takes a tenth of that.
bool DIALOG_INTERFACE::IsSelected(int id) const {
    return CtrlId == id && hCtrl != nullptr && GetDlgCtrlID(hCtrl) == id && GetAncestor(hCtrl, GA_PARENT) == hDialog;
}

/// Makes an item the selected control, or the dialog itself if it has no such item.
DialogControl DIALOG_INTERFACE::Select(int id) {
    if (hDialog == nullptr) return {};
    if (IsSelected(id)) return {hCtrl, CtrlType};
    CtrlId = id;
    hCtrl = GetDlgItem(hDialog, id);
    if (hCtrl == nullptr) hCtrl = hDialog;
    CtrlType = ControlType(hCtrl);
    return {hCtrl, CtrlType};
}

int DIALOG_INTERFACE::ProcessMessage(int id, COMMAND command, DialogRequest& request) {
    static constexpr tessel::DialogCommand kCommands[] = {
        tessel::commands::Position,
        tessel::commands::Display,
        tessel::commands::Set,
        tessel::commands::Get,
        tessel::commands::Add,
        tessel::commands::Delete,
        tessel::commands::Reset,
        tessel::commands::Size,
        tessel::commands::Range,
        tessel::commands::GetCount,
        tessel::commands::SetEditSelection,
        tessel::commands::TextColour,
    };
    StoreArguments(command, request);
    request.control = Select(id);
    if (request.control.hWnd == nullptr) return 1;
    request.dialog = this;
    request.images = hImageList;
    request.imageIndex = ImageIndex;
    const int result = kCommands[command](request);
    Index = request.index;
    Data = request.data;
    return result;
}

int DIALOG_INTERFACE::Run(int id, COMMAND command, DialogRequest request) {
    return ProcessMessage(id, command, request);
}

void DIALOG_INTERFACE::StoreArguments(COMMAND command, const DialogRequest& request) {
    Command = command;
    Action = request.action;
    X = request.x;
    Y = request.y;
    Index = request.index;
    BufferLen = request.bufferLen;
    Data = request.data;
    Color = request.color;
}

int tessel::RunForType(std::span<const CommandForType> parts, DialogRequest& request, int otherwise) {
    const auto found = std::find_if(parts.begin(), parts.end(), [&request](const CommandForType& part) {
        return part.type == request.control.type;
    });
    return found == parts.end() ? otherwise : found->command(request);
}
