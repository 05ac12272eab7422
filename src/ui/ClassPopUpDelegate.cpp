#include "ClassPopUpDelegate.h"

#include "document/OutlineModel.h"
#include "document/plistDocument.h"
#include "model/ValueClass.h"

#include <QComboBox>
#include <QStandardItemModel>
#include <QTimer>

ClassPopUpDelegate::ClassPopUpDelegate(QObject *parent) : OutlineItemDelegate(parent) {}

QWidget *ClassPopUpDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                          const QModelIndex &index) const
{
    auto *menu = new QComboBox(parent);
    menu->setObjectName(QStringLiteral("Classes"));
    menu->setAccessibleName(tr("Classes"));
    for (int tag = StringClass; tag <= DictionaryClass; ++tag)
        menu->addItem(ValueClasses::title(tag), tag);
    // Leaves move only among the scalar classes; groups and data come from files and the add commands.
    auto *items = qobject_cast<QStandardItemModel *>(menu->model());
    for (const int tag : {DataClass, ArrayClass, DictionaryClass})
        items->item(tag)->setEnabled(false);
    rememberIndex(menu, index);
    auto *self = const_cast<ClassPopUpDelegate *>(this);
    connect(menu, &QComboBox::activated, self,
            [self, menu](int row) { self->choose(menu, menu->itemData(row).toInt()); });
    // The pop-up opens with the editor, as a pop-up button's menu does on a click.
    QTimer::singleShot(0, menu, &QComboBox::showPopup);
    return menu;
}

void ClassPopUpDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *menu = qobject_cast<QComboBox *>(editor))
        menu->setCurrentIndex(menu->findData(index.data(Qt::EditRole).toInt()));
}

void ClassPopUpDelegate::setModelData(QWidget *, QAbstractItemModel *, const QModelIndex &) const {}

void ClassPopUpDelegate::choose(QWidget *editor, int tag)
{
    const QModelIndex index = indexOfEditor(editor);
    emit closeEditor(editor, QAbstractItemDelegate::NoHint);
    plistDocument *doc = document();
    if (!doc || !index.isValid())
        return;
    PListNode *node = doc->outlineModel()->nodeAt(index);
    doc->selectNodes({doc->sharedNode(node)}, false);
    doc->menuAction(tag);
}
