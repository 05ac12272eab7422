#include "DomainOutlineModel.h"

#include <QFileInfo>

DomainOutlineModel::DomainOutlineModel(QObject *parent) : QAbstractItemModel(parent) {}

openNode *DomainOutlineModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<openNode *>(index.internalPointer()) : m_root.get();
}

bool DomainOutlineModel::holds(const openNode *node) const
{
    for (; node; node = node->nodeParent()) {
        if (node == m_root.get())
            return true;
    }
    return false;
}

QModelIndex DomainOutlineModel::indexOf(const openNode *node) const
{
    if (!node || node == m_root.get() || !holds(node))
        return {};
    return createIndex(node->nodeParent()->indexOfChild(node), 0, const_cast<openNode *>(node));
}

void DomainOutlineModel::resetRoot(const openNodePtr &root)
{
    beginResetModel();
    m_root = root;
    endResetModel();
}

void DomainOutlineModel::beginInsert(const openNode *parent, int row)
{
    beginInsertRows(indexOf(parent), row, row);
}

void DomainOutlineModel::endInsert() { endInsertRows(); }

void DomainOutlineModel::beginRemove(const openNode *parent, int row)
{
    beginRemoveRows(indexOf(parent), row, row);
}

void DomainOutlineModel::endRemove() { endRemoveRows(); }

void DomainOutlineModel::redrawAll()
{
    // A layout change makes views drop what they measured, fonts included.
    emit layoutAboutToBeChanged();
    emit layoutChanged();
}

QModelIndex DomainOutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    const openNode *node = nodeAt(parent);
    if (column != 0 || !node || row < 0 || row >= node->numberOfChildren())
        return {};
    return createIndex(row, 0, node->children().at(row).get());
}

QModelIndex DomainOutlineModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    return indexOf(nodeAt(child)->nodeParent());
}

int DomainOutlineModel::rowCount(const QModelIndex &parent) const
{
    const openNode *node = nodeAt(parent);
    return node && parent.column() <= 0 ? node->numberOfChildren() : 0;
}

int DomainOutlineModel::columnCount(const QModelIndex &) const { return 1; }

bool DomainOutlineModel::hasChildren(const QModelIndex &parent) const
{
    const openNode *node = nodeAt(parent);
    return node && node->isGroup();
}

QVariant DomainOutlineModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const openNode *node = nodeAt(index);
    switch (role) {
    case Qt::DisplayRole:
        return node->displayName();
    case Qt::ToolTipRole:
    case PathRole:
        return node->name();
    case PresentationRole: {
        // Asked while painting, so asked of the disk each time: a file made
        // read-only meanwhile greys out at the next repaint.
        const bool writable = QFileInfo(node->name()).isWritable();
        return static_cast<int>(openNode::presentation(false, false, writable));
    }
    default:
        return {};
    }
}

Qt::ItemFlags DomainOutlineModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (!nodeAt(index)->isGroup())
        flags |= Qt::ItemNeverHasChildren;
    return flags;
}
