#include "FindOutlineModel.h"

#include "FindStrings.h"
#include "domains/openNode.h"

#include <QCoreApplication>

FindOutlineModel::FindOutlineModel(QObject *parent)
    : QAbstractItemModel(parent), m_root(findNode::treeFromDefDict(PropertyDictionary()))
{
}

void FindOutlineModel::resetRoot(findNodePtr root)
{
    beginResetModel();
    m_root = std::move(root);
    endResetModel();
}

findNode *FindOutlineModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<findNode *>(index.internalPointer()) : m_root.get();
}

void FindOutlineModel::redrawAll()
{
    // A layout change makes views drop what they measured, fonts included.
    emit layoutAboutToBeChanged();
    emit layoutChanged();
}

QModelIndex FindOutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    const findNode *node = nodeAt(parent);
    if (column < 0 || column > ValueColumn || row < 0 || row >= node->childCount() || parent.column() > 0)
        return {};
    return createIndex(row, column, node->childAt(row));
}

QModelIndex FindOutlineModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    findNode *parent = nodeAt(child)->nodeParent();
    if (!parent || parent == m_root.get())
        return {};
    return createIndex(int(parent->indexInParent()), 0, parent);
}

int FindOutlineModel::rowCount(const QModelIndex &parent) const
{
    return parent.column() > 0 ? 0 : int(nodeAt(parent)->childCount());
}

int FindOutlineModel::columnCount(const QModelIndex &) const
{
    return 2;
}

bool FindOutlineModel::hasChildren(const QModelIndex &parent) const
{
    return parent.column() <= 0 && nodeAt(parent)->childCount() > 0;
}

QVariant FindOutlineModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const findNode *node = nodeAt(index);
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == KeyColumn)
            return node->name();
        return node->objectValue() ? node->objectValue()->description() : QString();
    case PresentationRole:
        return static_cast<int>(node->canOpen() ? openNode::Presentation::Normal
                                                : openNode::Presentation::Disabled);
    default:
        return {};
    }
}

QVariant FindOutlineModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return QCoreApplication::translate("findController", section == KeyColumn ? "Key" : "Value");
}

Qt::ItemFlags FindOutlineModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (nodeAt(index)->childCount() == 0)
        flags |= Qt::ItemNeverHasChildren;
    return flags;
}
