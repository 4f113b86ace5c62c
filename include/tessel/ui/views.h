#pragma once

#include <fenestra/listview.h>
#include <fenestra/treeview.h>
#include <tessel/foundation/platform.h>
#include <tessel/ui/notify.h>

/// Passes the notifications in NOTIFY records to the handler of a list view.
///
/// The object is created without a control. Threads: the one that translates the messages uses it.
class TESSEL_API CListViewOrca : public CListView {
public:
    /// Refers to no control.
    CListViewOrca();

    /// Copies the base class.
    CListViewOrca(const CListViewOrca&) = default;

    /// Copies the base class.
    /// @return this object
    CListViewOrca& operator=(const CListViewOrca&) = default;

    /// Leaves the control as it is.
    ~CListViewOrca() override = default;

    using CListView::OnNotify;

    /// Passes a record of kind NK_CONTROL to CListView::OnNotify(). The header of a scroll request is null.
    /// @param notify  the record of the message being handled; null is ignored
    /// @return the result for the control; 0 for records of other kinds
    unsigned long OnNotify(const NOTIFY* notify);
};

/// Passes the notifications in NOTIFY records to the handler of a tree view.
///
/// The object is created without a control. Threads: the one that translates the messages uses it.
class TESSEL_API CTreeViewOrca : public CTreeView {
public:
    /// Refers to no control.
    CTreeViewOrca();

    /// Copies the base class.
    CTreeViewOrca(const CTreeViewOrca&) = default;

    /// Copies the base class.
    /// @return this object
    CTreeViewOrca& operator=(const CTreeViewOrca&) = default;

    /// Leaves the control as it is.
    ~CTreeViewOrca() override = default;

    using CTreeView::OnNotify;

    /// Passes a record of kind NK_CONTROL to CTreeView::OnNotify(). The header of a scroll request is null.
    /// @param notify  the record of the message being handled; null is ignored
    /// @return the result for the control; 0 for records of other kinds
    unsigned long OnNotify(const NOTIFY* notify);
};
