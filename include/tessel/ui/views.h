#pragma once

#include <fenestra/listview.h>
#include <fenestra/treeview.h>
#include <tessel/foundation/platform.h>
#include <tessel/ui/notify.h>

/// Hands the notifications in NOTIFY records to a list view's own handler.
///
/// It is made without a control. Threads: the one that translates the messages.
class TESSEL_API CListViewOrca : public CListView {
public:
    /// Stands for no control.
    CListViewOrca();

    /// Copies the base.
    CListViewOrca(const CListViewOrca&) = default;

    /// Copies the base.
    /// @return this object
    CListViewOrca& operator=(const CListViewOrca&) = default;

    /// Leaves the control as it is.
    ~CListViewOrca() override = default;

    using CListView::OnNotify;

    /// Passes a record of the kind NK_CONTROL on to CListView::OnNotify(), also one of a scroll request, whose header
    /// is null.
    /// @param notify  the record, while its message is being handled; null is ignored
    /// @return what the control is to be told; 0 also for records of every other kind
    unsigned long OnNotify(const NOTIFY* notify);
};

/// Hands the notifications in NOTIFY records to a tree view's own handler.
///
/// It is made without a control. Threads: the one that translates the messages.
class TESSEL_API CTreeViewOrca : public CTreeView {
public:
    /// Stands for no control.
    CTreeViewOrca();

    /// Copies the base.
    CTreeViewOrca(const CTreeViewOrca&) = default;

    /// Copies the base.
    /// @return this object
    CTreeViewOrca& operator=(const CTreeViewOrca&) = default;

    /// Leaves the control as it is.
    ~CTreeViewOrca() override = default;

    using CTreeView::OnNotify;

    /// Passes a record of the kind NK_CONTROL on to CTreeView::OnNotify(), also one of a scroll request, whose header
    /// is null.
    /// @param notify  the record, while its message is being handled; null is ignored
    /// @return what the control is to be told; 0 also for records of every other kind
    unsigned long OnNotify(const NOTIFY* notify);
};
