#include <ui/DialogInterfaceCommands.h>

#include <algorithm>
#include <limits>
#include <new>

namespace {

/// GUARD-46: the sum stays in range instead of wrapping.
int Sum(int position, long long step) {
    constexpr long long kLeast = std::numeric_limits<int>::min();
    constexpr long long kGreatest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(position + step, kLeast, kGreatest));
}

const wchar_t* OrEmpty(const wchar_t* text) {
    return text == nullptr ? L"" : text; // GUARD-40
}

} // namespace

const DIALOG_INTERFACE::Commands::ListMessages DIALOG_INTERFACE::Commands::kListBox = {
    LB_INSERTSTRING, LB_ADDSTRING, LB_DELETESTRING, LB_RESETCONTENT, LB_GETCOUNT,  LB_SETITEMDATA,
    LB_GETITEMDATA,  LB_GETTEXT,   LB_GETTEXTLEN,   LB_SETCURSEL,    LB_GETCURSEL,
};
const DIALOG_INTERFACE::Commands::ListMessages DIALOG_INTERFACE::Commands::kComboBox = {
    CB_INSERTSTRING, CB_ADDSTRING, CB_DELETESTRING, CB_RESETCONTENT, CB_GETCOUNT,  CB_SETITEMDATA,
    CB_GETITEMDATA,  CB_GETLBTEXT, CB_GETLBTEXTLEN, CB_SETCURSEL,    CB_GETCURSEL,
};

const DIALOG_INTERFACE::Commands::ListMessages& DIALOG_INTERFACE::Commands::Messages(const DIALOG_INTERFACE& dialog) {
    return dialog.CtrlType == FT_LISTBOX ? kListBox : kComboBox;
}

int DIALOG_INTERFACE::Commands::SetText(DIALOG_INTERFACE& dialog, wchar_t* text) {
    const Kept kept(dialog);
    return SetWindowTextW(dialog.hCtrl, OrEmpty(text)) ? 0 : 1;
}

int DIALOG_INTERFACE::Commands::AddString(DIALOG_INTERFACE& dialog, UINT message, int index, const wchar_t* text) {
    const auto added = static_cast<int>(dialog.SendData(message, index, OrEmpty(text)));
    if (added >= 0) dialog.Send(Messages(dialog).setData, added, dialog.Data);
    return added;
}

int DIALOG_INTERFACE::Commands::ReadGauge(DIALOG_INTERFACE& dialog) {
    if (dialog.CtrlType != FT_PROGRESSBAR) {
        return static_cast<int>(dialog.Send(dialog.CtrlType == FT_SLIDER ? TBM_GETPOS : SBM_GETPOS));
    }
    const LRESULT position = dialog.Send(PBM_DELTAPOS, 0);
    dialog.Send(PBM_SETPOS, position);
    return static_cast<int>(position);
}

void DIALOG_INTERFACE::Commands::MoveGauge(DIALOG_INTERFACE& dialog, int position) {
    switch (dialog.CtrlType) {
    case FT_SLIDER: dialog.Send(TBM_SETPOS, TRUE, position); break;
    case FT_PROGRESSBAR: dialog.Send(PBM_SETPOS, position); break;
    default: dialog.Send(SBM_SETPOS, position, TRUE);
    }
}

// GUARD-42: the control copies a whole text whatever room there is, so it gets a buffer of that length; an item
// without a text is copied as a number.
std::size_t DIALOG_INTERFACE::Commands::TextRoom(DIALOG_INTERFACE& dialog, int index) {
    const LRESULT length = dialog.Send(Messages(dialog).getTextLength, index);
    return length < 0 ? 0 : std::max(static_cast<std::size_t>(length), sizeof(ULONG_PTR)) + 1;
}

bool DIALOG_INTERFACE::Commands::ReadText(DIALOG_INTERFACE& dialog, int index, wchar_t* text, std::size_t room) {
    std::fill_n(text, room, L'\0'); // a number brings no terminator
    return dialog.SendData(Messages(dialog).getText, index, text) >= 0;
}

std::unique_ptr<wchar_t[]> DIALOG_INTERFACE::Commands::ItemText(DIALOG_INTERFACE& dialog, int index) {
    const std::size_t room = TextRoom(dialog, index);
    if (room == 0) return nullptr;
    std::unique_ptr<wchar_t[]> text(new (std::nothrow) wchar_t[room]);
    if (text != nullptr && !ReadText(dialog, index, text.get(), room)) text.reset();
    return text;
}

struct DIALOG_INTERFACE::Commands::Items {
    static int AddTab(DIALOG_INTERFACE& dialog, wchar_t* text) {
        TCITEMW item{};
        item.mask = text == nullptr ? TCIF_PARAM : TCIF_PARAM | TCIF_TEXT;
        item.pszText = text;
        item.lParam = dialog.Data;
        return Added(dialog, dialog.SendData(TCM_INSERTITEMW, dialog.Index, &item));
    }

    static int AddToList(DIALOG_INTERFACE& dialog, wchar_t* text) {
        const ListMessages& messages = Messages(dialog);
        // ODD-47: index 0 appends or sorts in, only other indices insert.
        const UINT message = dialog.Index != 0 ? messages.insert : messages.append;
        return Added(dialog, AddString(dialog, message, dialog.Index, text));
    }

    static int AddListView(DIALOG_INTERFACE& dialog, wchar_t* text) {
        LVITEMW item{};
        item.iItem = dialog.Index;
        if (text != nullptr) item.mask |= LVIF_TEXT;
        if (dialog.hImageList != nullptr) item.mask |= LVIF_IMAGE;
        if (dialog.Data != 0) item.mask |= LVIF_PARAM;
        item.pszText = text;
        item.iImage = dialog.ImageIndex;
        item.lParam = dialog.Data;
        return Added(dialog, dialog.SendData(LVM_INSERTITEMW, 0, &item));
    }

    static int StepForward(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Index = Sum(ReadGauge(dialog), dialog.Index);
        MoveGauge(dialog, dialog.Index);
        return 0;
    }

    static int StepProgress(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Send(PBM_DELTAPOS, dialog.Index);
        return 0;
    }

    static int StepBack(DIALOG_INTERFACE& dialog, wchar_t*) {
        MoveGauge(dialog, Sum(ReadGauge(dialog), -static_cast<long long>(dialog.Index)));
        return 0;
    }

    template <UINT message> static int Delete(DIALOG_INTERFACE& dialog, wchar_t*) {
        const LRESULT answer = dialog.Send(message, dialog.Index);
        constexpr bool kAnswersTruth = message == TCM_DELETEITEM || message == LVM_DELETEITEM;
        return (kAnswersTruth ? answer != 0 : answer >= 0) ? 0 : 1;
    }

    /// An error answer leaves the count as it is.
    template <UINT message> static int Count(DIALOG_INTERFACE& dialog, wchar_t*) {
        dialog.Data = std::max<LRESULT>(dialog.Send(message), 0);
        return 0;
    }

private:
    static int Added(DIALOG_INTERFACE& dialog, LRESULT index) {
        dialog.Index = static_cast<int>(index);
        return dialog.Index >= 0 ? 0 : 1;
    }
};

int DIALOG_INTERFACE::Commands::Add(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_STATIC, SetText},
        {FT_BUTTON, SetText},
        {FT_EDIT, SetText},
        {FT_RICHEDIT, SetText},
        {FT_UNKNOWN, SetText},
        {FT_TAB, Items::AddTab},
        {FT_LISTBOX, Items::AddToList},
        {FT_COMBOBOX, Items::AddToList},
        {FT_SLIDER, Items::StepForward},
        {FT_SCROLLBAR, Items::StepForward},
        {FT_PROGRESSBAR, Items::StepProgress},
        {FT_LISTVIEW, Items::AddListView},
    };
    return Run(kByType, dialog, text);
}

int DIALOG_INTERFACE::Commands::Delete(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_TAB, Items::Delete<TCM_DELETEITEM>},
        {FT_LISTBOX, Items::Delete<LB_DELETESTRING>},
        {FT_COMBOBOX, Items::Delete<CB_DELETESTRING>},
        {FT_LISTVIEW, Items::Delete<LVM_DELETEITEM>},
        {FT_SLIDER, Items::StepBack},
        {FT_SCROLLBAR, Items::StepBack},
    };
    return Run(kByType, dialog, text);
}

int DIALOG_INTERFACE::Commands::GetCount(DIALOG_INTERFACE& dialog, wchar_t* text) {
    static constexpr ForType kByType[] = {
        {FT_LISTBOX, Items::Count<LB_GETCOUNT>},
        {FT_COMBOBOX, Items::Count<CB_GETCOUNT>},
        {FT_EDIT, Items::Count<WM_GETTEXTLENGTH>},
        {FT_LISTVIEW, Items::Count<LVM_GETITEMCOUNT>},
    };
    return Run(kByType, dialog, text);
}
