#include <ui/DialogInterfaceCommands.h>

#include <cwchar>
#include <new>

namespace {

constexpr int kColumnWidth = 100;

} // namespace

struct DIALOG_INTERFACE::Commands::Resetting {
    using AddPart = void (*)(DIALOG_INTERFACE& dialog, int position, wchar_t* part);

    static void AddTab(DIALOG_INTERFACE& dialog, int position, wchar_t* part) {
        TCITEMW item{};
        item.mask = TCIF_TEXT | TCIF_PARAM;
        item.pszText = part;
        item.lParam = position;
        dialog.SendData(TCM_INSERTITEMW, position, &item);
    }

    static void AddToList(DIALOG_INTERFACE& dialog, int, wchar_t* part) {
        dialog.SendData(Messages(dialog).append, 0, part);
    }

    static void AddColumn(DIALOG_INTERFACE& dialog, int position, wchar_t* part) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.cx = kColumnWidth;
        column.pszText = part;
        dialog.SendData(LVM_INSERTCOLUMNW, position, &column);
    }

    /// Adds each part of a text that commas separate; empty ones are skipped.
    static int AddParts(DIALOG_INTERFACE& dialog, const wchar_t* text, AddPart add) {
        if (text == nullptr) return 0;
        const std::size_t size = std::wcslen(text) + 1;
        const std::unique_ptr<wchar_t[]> copy(new (std::nothrow) wchar_t[size]);
        if (copy == nullptr) return 1;
        wchar_t* part = std::wmemcpy(copy.get(), text, size);
        for (int position = 0; *(part += std::wcsspn(part, L",")) != L'\0'; ++position) {
            wchar_t* const end = part + std::wcscspn(part, L",");
            wchar_t* const next = *end == L'\0' ? end : end + 1;
            *end = L'\0';
            add(dialog, position, part);
            part = next;
        }
        return 0;
    }

    static int Tab(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Send(TCM_DELETEALLITEMS);
        return AddParts(dialog, text, AddTab);
    }

    static int List(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Send(Messages(dialog).clear);
        return AddParts(dialog, text, AddToList);
    }

    static int ListView(DIALOG_INTERFACE& dialog, wchar_t* text) {
        dialog.Send(LVM_DELETEALLITEMS);
        while (dialog.X == 1 && dialog.Send(LVM_DELETECOLUMN, 0) != 0) {
        }
        return AddParts(dialog, text, AddColumn);
    }

    static int Gauge(DIALOG_INTERFACE& dialog, wchar_t*) {
        MoveGauge(dialog, 0);
        return 0;
    }
};

struct DIALOG_INTERFACE::Commands::Ranging {
    static LPARAM Limits(const DIALOG_INTERFACE& dialog) { return MAKELPARAM(dialog.X, dialog.Y); }

    static int Slider(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Send(TBM_SETRANGE, TRUE, Limits(dialog));
        // ODD-44: the position argument is the distance of ticks and the page size, and the position is 0.
        dialog.Send(TBM_SETTICFREQ, dialog.Index);
        dialog.Send(TBM_SETPOS, TRUE, 0);
        dialog.Send(TBM_SETPAGESIZE, 0, dialog.Index);
        return 0;
    }

    static int Progress(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Send(PBM_SETRANGE, 0, Limits(dialog));
        dialog.Send(PBM_SETSTEP, 1);
        dialog.Send(PBM_SETPOS, dialog.Index);
        return 0;
    }

    static int ScrollBar(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Send(SBM_SETRANGE, dialog.X, dialog.Y);
        dialog.Send(SBM_SETPOS, dialog.Index, TRUE);
        return 0;
    }
};

int DIALOG_INTERFACE::Commands::Reset(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_STATIC, SetText},
        {FT_BUTTON, SetText},
        {FT_EDIT, SetText},
        {FT_RICHEDIT, SetText},
        {FT_UNKNOWN, SetText},
        {FT_TAB, Resetting::Tab},
        {FT_LISTBOX, Resetting::List},
        {FT_COMBOBOX, Resetting::List},
        {FT_LISTVIEW, Resetting::ListView},
        {FT_SLIDER, Resetting::Gauge},
        {FT_PROGRESSBAR, Resetting::Gauge},
        {FT_SCROLLBAR, Resetting::Gauge},
    };
    return Run(kByType, dialog, text);
}

int DIALOG_INTERFACE::Commands::Range(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_SLIDER, Ranging::Slider},
        {FT_PROGRESSBAR, Ranging::Progress},
        {FT_SCROLLBAR, Ranging::ScrollBar},
    };
    return Run(kByType, dialog, text, 1);
}
