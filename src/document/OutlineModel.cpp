#include "OutlineModel.h"

namespace {

// Enough rows for every screen and every persistent index a view keeps.
constexpr qsizetype kMaxRowHints = 1 << 14;

} // namespace

OutlineModel::OutlineModel(QObject *parent) : QAbstractItemModel(parent), m_root(PListNode::make()) {}

void OutlineModel::setRenditionSettings(const RenditionSettings &settings)
{
    m_settings = settings;
    redrawAll();
}

PListNode *OutlineModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<PListNode *>(index.internalPointer()) : m_root.get();
}

bool OutlineModel::holds(const PListNode *node) const
{
    while (node && node->nodeParent())
        node = node->nodeParent();
    return node && node == m_root.get();
}

int OutlineModel::rowOf(const PListNode *node) const
{
    const PListNode *parent = node->nodeParent();
    if (!parent)
        return -1;
    const auto hint = m_rowHints.constFind(node);
    if (hint != m_rowHints.cend()) {
        const PListNodePtr there = parent->childAtIndex(*hint);
        if (there.get() == node)
            return *hint;
    }
    const int row = parent->indexOfChildIdenticalTo(node);
    if (m_rowHints.size() >= kMaxRowHints)
        m_rowHints.clear();
    m_rowHints.insert(node, row);
    return row;
}

QModelIndex OutlineModel::indexOf(const PListNode *node, int column) const
{
    if (!node || node == m_root.get() || !holds(node))
        return {};
    return createIndex(rowOf(node), column, const_cast<PListNode *>(node));
}

// ---- announcements ---------------------------------------------------------

void OutlineModel::resetRoot(const PListNodePtr &root)
{
    beginResetModel();
    m_root = root ? root : PListNode::make();
    m_rowHints.clear();
    endResetModel();
}

void OutlineModel::beginInsert(const PListNode *parent, int first, int last)
{
    beginInsertRows(indexOf(parent), first, last);
}

void OutlineModel::endInsert(const PListNode *parent, int last)
{
    endInsertRows();
    childrenChanged(parent, parent->isArray() ? last + 1 : parent->numberOfChildren());
}

void OutlineModel::beginRemove(const PListNode *parent, int first, int last)
{
    beginRemoveRows(indexOf(parent), first, last);
}

void OutlineModel::endRemove(const PListNode *parent, int first)
{
    endRemoveRows();
    childrenChanged(parent, parent->isArray() ? first : parent->numberOfChildren());
}

void OutlineModel::childrenChanged(const PListNode *parent, int first)
{
    const int count = parent->numberOfChildren();
    if (first < count) {
        const QModelIndex parentIndex = indexOf(parent);
        emit dataChanged(index(first, KeyColumn, parentIndex), index(count - 1, KeyColumn, parentIndex),
                         {Qt::DisplayRole});
    }
    const QModelIndex counted = indexOf(parent, ValueColumn);
    if (counted.isValid())
        emit dataChanged(counted, counted, {Qt::DisplayRole});
}

void OutlineModel::nodeChanged(const PListNode *node)
{
    const QModelIndex first = indexOf(node, KeyColumn);
    if (first.isValid())
        emit dataChanged(first, first.siblingAtColumn(ValueColumn));
}

void OutlineModel::beginSort() { emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint); }

void OutlineModel::endSort()
{
    // Nodes keep their identity through a sort; only their rows move.
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex &index : before)
        after.append(indexOf(nodeAt(index), index.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void OutlineModel::redrawAll()
{
    emit layoutAboutToBeChanged();
    emit layoutChanged();
}

// ---- the model's answers -------------------------------------------------------

QModelIndex OutlineModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column < 0 || column >= ColumnCount || (parent.isValid() && parent.column() != KeyColumn))
        return {};
    const PListNodePtr child = nodeAt(parent)->childAtIndex(row);
    return child ? createIndex(row, column, child.get()) : QModelIndex();
}

QModelIndex OutlineModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    return indexOf(nodeAt(child)->nodeParent());
}

int OutlineModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid() && parent.column() != KeyColumn)
        return 0;
    return nodeAt(parent)->numberOfChildren();
}

int OutlineModel::columnCount(const QModelIndex &) const { return ColumnCount; }

bool OutlineModel::hasChildren(const QModelIndex &parent) const
{
    // Every group can be opened, even an empty one, so that a new key can go in.
    if (parent.isValid() && parent.column() != KeyColumn)
        return false;
    return !parent.isValid() ? m_root->numberOfChildren() > 0 : nodeAt(parent)->isGroup();
}

QString OutlineModel::keyText(const PListNode &node, int row) const
{
    // An array item's label is its position. A shown item is at its row, so
    // a long list need not be searched for it on every paint; a filtered copy
    // is labelled by its real item's position, which the hints keep.
    const PListNode *real = node.searchReference() ? node.searchReference() : &node;
    const PListNode *parent = real->nodeParent();
    if (!parent || !parent->isArray())
        return node.displayName();
    return ValueClasses::itemLabel((real == &node ? row : rowOf(real)) + 1);
}

QVariant OutlineModel::displayText(const PListNode &node, const QModelIndex &index) const
{
    switch (index.column()) {
    case KeyColumn:
        return keyText(node, index.row());
    case ClassColumn:
        return node.displayMenu();
    case ValueColumn:
        return node.value().isContainer() ? node.countedText() : node.displayValue();
    default:
        return {};
    }
}

QVariant OutlineModel::styleData(const PListNode &node, int column, int role) const
{
    // Item counts are never edited in place, so they are drawn as disabled.
    const bool itemCount = column == ValueColumn && node.value().isContainer();
    const RenditionStyle style = node.style(Rendition::Normal, m_settings, itemCount);
    switch (role) {
    case ColourRole:
        return int(style.colour);
    case CustomColourRole:
        return style.customColor;
    case FontNameRole:
        return style.fontName;
    case FontSizeRole:
        return style.fontSize;
    default:
        return {};
    }
}

QVariant OutlineModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const PListNode &node = *nodeAt(index);
    switch (role) {
    case Qt::DisplayRole:
        return displayText(node, index);
    case Qt::EditRole:
        if (index.column() == ClassColumn)
            return node.menu();
        return index.column() == KeyColumn ? node.name() : node.stringValue();
    case Qt::ToolTipRole:
        // Long values and data do not fit a cell.
        if (index.column() == ValueColumn && node.isLeaf())
            return node.value().isData() ? node.value().description().left(4096) : node.displayValue().left(4096);
        return {};
    case ColourRole:
    case CustomColourRole:
    case FontNameRole:
    case FontSizeRole:
        return styleData(node, index.column(), role);
    case ValueIsBoolRole:
        return node.valueIsBool();
    case ArrayElementRole:
        return node.nodeParent() && node.nodeParent()->isArray();
    default:
        return {};
    }
}

bool OutlineModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || !m_editHandler)
        return false;
    return m_editHandler(nodeAt(index), index.column(), value);
}

Qt::ItemFlags OutlineModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    // Whether an edit may start is asked of the document when it starts:
    // refusing beeps, and a boolean toggles instead. Every row may be dragged;
    // where a drop may land is the document's answer during the drag.
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
}

QVariant OutlineModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case KeyColumn:
        return tr("Key");
    case ClassColumn:
        return tr("Class");
    case ValueColumn:
        return tr("Value");
    default:
        return {};
    }
}
