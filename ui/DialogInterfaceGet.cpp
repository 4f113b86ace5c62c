#include <ui/DialogInterfaceCommands.h>

#include <cwchar>

namespace {

constexpr int kNone = -1;
constexpr int kOwnText = -2;

/// Puts a text into the caller's buffer, cut to fit; a control may have answered with a pointer to its own text.
void CopyCut(wchar_t* buffer, int room, const wchar_t* text) {
    if (buffer == nullptr || text == nullptr || text == buffer || text == LPSTR_TEXTCALLBACKW) return;
    const std::size_t length = wcsnlen(text, static_cast<std::size_t>(room) - 1);
    std::wmemcpy(buffer, text, length);
    buffer[length] = L'\0';
}

} // namespace

struct DIALOG_INTERFACE::Commands::Getting {
    static int WindowText(DIALOG_INTERFACE& dialog, wchar_t* text) {
        const Kept kept(dialog);
        if (text != nullptr) GetWindowTextW(dialog.hCtrl, text, dialog.BufferLen);
        return 0;
    }

    static int Text(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Data = GetWindowLongPtrW(dialog.hCtrl, GWLP_USERDATA);
        return WindowText(dialog, text);
    }

    static int Button(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Index = static_cast<int>(dialog.Send(BM_GETCHECK));
        return Text(dialog, text);
    }

    static int Tab(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (dialog.Index <= kNone) dialog.Index = static_cast<int>(dialog.Send(TCM_GETCURSEL));
        TCITEMW item{};
        item.mask = text == nullptr ? TCIF_PARAM : TCIF_PARAM | TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = dialog.BufferLen;
        if (dialog.SendData(TCM_GETITEMW, dialog.Index, &item) == 0) return 1;
        dialog.Data = item.lParam;
        CopyCut(text, dialog.BufferLen, item.pszText);
        return 0;
    }

    static bool Item(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Data = dialog.Send(Messages(dialog).getData, dialog.Index);
        const std::size_t room = TextRoom(dialog, dialog.Index);
        if (room == 0) return false;
        if (room <= static_cast<std::size_t>(dialog.BufferLen)) return ReadText(dialog, dialog.Index, text, room);
        const auto item = ItemText(dialog, dialog.Index);
        CopyCut(text, dialog.BufferLen, item.get());
        return item != nullptr;
    }

    static int ListBox(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (dialog.Index <= kNone) dialog.Index = static_cast<int>(dialog.Send(LB_GETCURSEL));
        if (dialog.Index == LB_ERR) {
            dialog.Data = dialog.Send(LB_GETCOUNT); // ODD-46: no selection gives the number of items as data
            return WindowText(dialog, text);
        }
        if (Item(dialog, text)) return 0;
        dialog.Index = kNone;
        return 1;
    }

    static int ComboBox(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (dialog.Index == kOwnText) return WindowText(dialog, text);
        if (dialog.Index == kNone) dialog.Index = static_cast<int>(dialog.Send(CB_GETCURSEL));
        if (dialog.Index == CB_ERR) return 0;
        return Item(dialog, text) ? 0 : 1;
    }

    static int Gauge(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Index = ReadGauge(dialog);
        return 0;
    }

    static int ListView(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (dialog.Index <= kNone) {
            dialog.Index = static_cast<int>(dialog.Send(LVM_GETNEXTITEM, kNone, LVNI_SELECTED));
        }
        LVITEMW item{};
        item.mask = text == nullptr ? LVIF_PARAM : LVIF_PARAM | LVIF_TEXT;
        item.iItem = dialog.Index;
        item.iSubItem = dialog.X;
        item.pszText = text;
        item.cchTextMax = dialog.BufferLen;
        if (dialog.SendData(LVM_GETITEMW, 0, &item) == 0) return 1;
        dialog.Data = item.lParam;
        CopyCut(text, dialog.BufferLen, item.pszText);
        return 0;
    }
};

int DIALOG_INTERFACE::Commands::Get(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_STATIC, Getting::Text},       {FT_EDIT, Getting::Text},         {FT_RICHEDIT, Getting::Text},
        {FT_UNKNOWN, Getting::Text},      {FT_BUTTON, Getting::Button},     {FT_TAB, Getting::Tab},
        {FT_LISTBOX, Getting::ListBox},   {FT_COMBOBOX, Getting::ComboBox}, {FT_SLIDER, Getting::Gauge},
        {FT_PROGRESSBAR, Getting::Gauge}, {FT_SCROLLBAR, Getting::Gauge},   {FT_LISTVIEW, Getting::ListView},
    };
    return Run(kByType, dialog, text);
}
