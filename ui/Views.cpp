#include <tessel/ui/views.h>

namespace {

/// Passes the notification of a record to the handler of a view's base class.
template <class Base> unsigned long Forward(Base& view, const NOTIFY* notify) {
    unsigned long result = 0;
    if (notify == nullptr || notify->Kind != NK_CONTROL) return result; // GUARD-54: no record, nothing to read
    // ODD-55: a scroll request has this kind, too, and its header is null.
    (void)view.Base::OnNotify(reinterpret_cast<NMHDR*>(notify->Data2),
                              result); // result is unchanged if it is not handled
    return result;
}

} // namespace

CListViewOrca::CListViewOrca() : CListView(-1, nullptr, 0, 0) {}

unsigned long CListViewOrca::OnNotify(const NOTIFY* notify) {
    return Forward<CListView>(*this, notify);
}

CTreeViewOrca::CTreeViewOrca() : CTreeView(nullptr, 0, 0) {}

unsigned long CTreeViewOrca::OnNotify(const NOTIFY* notify) {
    return Forward<CTreeView>(*this, notify);
}
