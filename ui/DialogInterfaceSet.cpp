#include <ui/DialogInterfaceCommands.h>

namespace {

constexpr LPARAM kFromTheStart = -1;
constexpr LPARAM kNothing = -1;
constexpr int kLastOwnText = -2;

} // namespace

struct DIALOG_INTERFACE::Commands::Setting {
    static int Text(DIALOG_INTERFACE& dialog, wchar_t* text) { return text == nullptr ? 0 : SetText(dialog, text); }

    static int Button(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Send(BM_SETCHECK, dialog.Index != 0);
        return Text(dialog, text);
    }

    static int Tab(DIALOG_INTERFACE& dialog, wchar_t* text) {
        TCITEMW item{};
        item.mask = text == nullptr ? TCIF_PARAM : TCIF_PARAM | TCIF_TEXT;
        item.pszText = text;
        item.lParam = dialog.Data;
        const bool set = dialog.SendData(TCM_SETITEMW, dialog.Index, &item) != 0;
        dialog.Send(TCM_SETCURSEL, dialog.Index);
        return set ? 0 : 1;
    }

    static int Item(DIALOG_INTERFACE& dialog) {
        const ListMessages& messages = Messages(dialog);
        dialog.Send(messages.setData, dialog.Index, dialog.Data);
        return dialog.Send(messages.select, dialog.Index) == LB_ERR ? 1 : 0;
    }

    static int ListBox(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (dialog.Index >= 0) return Item(dialog);
        if (text != nullptr && dialog.SendData(LB_SELECTSTRING, kFromTheStart, text) == LB_ERR) {
            dialog.Send(LB_SETCURSEL, kNothing);
        }
        return 0;
    }

    static int ComboBox(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (dialog.Index >= 0) return Item(dialog);
        if (dialog.Index >= kLastOwnText || text == nullptr) return Text(dialog, text);
        const LRESULT found = dialog.SendData(CB_FINDSTRINGEXACT, kFromTheStart, text);
        if (found != CB_ERR) dialog.Send(CB_SETCURSEL, found);
        return 0;
    }

    static int Gauge(DIALOG_INTERFACE& dialog, wchar_t*) {
        MoveGauge(dialog, dialog.Index);
        return 0;
    }

    // ODD-49: the item data is not set on a list view, only the text.
    static int ListView(DIALOG_INTERFACE& dialog, wchar_t* text) {
        if (text == nullptr) return 0; // GUARD-40
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.iItem = dialog.Y;
        item.iSubItem = dialog.X;
        item.pszText = text;
        return dialog.SendData(LVM_SETITEMW, 0, &item) != 0 ? 0 : 1;
    }
};

int DIALOG_INTERFACE::Commands::Set(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_STATIC, Setting::Text},       {FT_EDIT, Setting::Text},         {FT_RICHEDIT, Setting::Text},
        {FT_UNKNOWN, Setting::Text},      {FT_BUTTON, Setting::Button},     {FT_TAB, Setting::Tab},
        {FT_LISTBOX, Setting::ListBox},   {FT_COMBOBOX, Setting::ComboBox}, {FT_SLIDER, Setting::Gauge},
        {FT_PROGRESSBAR, Setting::Gauge}, {FT_SCROLLBAR, Setting::Gauge},   {FT_LISTVIEW, Setting::ListView},
    };
    return Run(kByType, dialog, text);
}
