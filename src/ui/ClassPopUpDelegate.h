#pragma once

#include "ui/OutlineItemDelegate.h"

// The class column's pop-up, titled "Classes": the eight value classes with
// their tags 0 to 7, of which Data, Array and Dictionary are shown but cannot
// be chosen. A choice selects the row and hands the tag to the document's
// class change; the model is never written through the editor.
class ClassPopUpDelegate : public OutlineItemDelegate {
    Q_OBJECT
public:
    explicit ClassPopUpDelegate(QObject *parent = nullptr);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

private:
    void choose(QWidget *editor, int tag);
};
