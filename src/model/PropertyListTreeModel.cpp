#include "PropertyListTreeModel.h"

#include "ValueClass.h"

struct PropertyListTreeModel::Item {
    QString key;
    PropertyList value;
    Item *parent = nullptr;
    int row = 0;
    bool populated = false;
    std::vector<std::unique_ptr<Item>> children;

    qsizetype childCount() const
    {
        if (value.isArray())
            return value.arrayRef().size();
        if (value.isDictionary())
            return value.dictionaryRef().size();
        return 0;
    }
};

PropertyListTreeModel::PropertyListTreeModel(const PropertyList &root, QObject *parent)
    : QAbstractItemModel(parent), m_root(std::make_unique<Item>())
{
    if (root.isContainer()) {
        m_root->value = root;
    } else {
        // A file whose top level is a scalar still shows that value, as one row.
        m_root->value = PropertyDictionary{{tr("Root"), root}};
    }
}

PropertyListTreeModel::~PropertyListTreeModel() = default;

PropertyListTreeModel::Item *PropertyListTreeModel::itemFor(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Item *>(index.internalPointer()) : m_root.get();
}

void PropertyListTreeModel::populate(Item *item) const
{
    if (item->populated)
        return;
    item->populated = true;
    const qsizetype count = item->childCount();
    item->children.reserve(static_cast<size_t>(count));
    for (qsizetype i = 0; i < count; ++i) {
        auto child = std::make_unique<Item>();
        child->parent = item;
        child->row = static_cast<int>(i);
        if (item->value.isArray()) {
            // Array items are labelled by their one-based position.
            child->key = ValueClasses::itemLabel(i + 1);
            child->value = item->value.arrayRef().at(i);
        } else {
            child->key = item->value.dictionaryRef().keyAt(i);
            child->value = item->value.dictionaryRef().valueAt(i);
        }
        item->children.push_back(std::move(child));
    }
}

QModelIndex PropertyListTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount)
        return {};
    Item *parentItem = itemFor(parent);
    populate(parentItem);
    if (static_cast<size_t>(row) >= parentItem->children.size())
        return {};
    return createIndex(row, column, parentItem->children[static_cast<size_t>(row)].get());
}

QModelIndex PropertyListTreeModel::parent(const QModelIndex &child) const
{
    if (!child.isValid())
        return {};
    Item *parentItem = itemFor(child)->parent;
    if (!parentItem || parentItem == m_root.get())
        return {};
    return createIndex(parentItem->row, 0, parentItem);
}

int PropertyListTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    return static_cast<int>(itemFor(parent)->childCount());
}

int PropertyListTreeModel::columnCount(const QModelIndex &) const { return ColumnCount; }

bool PropertyListTreeModel::hasChildren(const QModelIndex &parent) const { return rowCount(parent) > 0; }

namespace {

QString itemCount(qsizetype count)
{
    return count == 1 ? PropertyListTreeModel::tr(" (1 item)")
                      : PropertyListTreeModel::tr(" (%1 items)").arg(count);
}

} // namespace

QString PropertyListTreeModel::displayValue(const PropertyList &value)
{
    const ValueClasses::Texts &texts = ValueClasses::texts();
    switch (value.type()) {
    case PropertyList::Type::Data:
        return texts.dataItem;
    case PropertyList::Type::Boolean:
        return value.toBool() ? texts.yes : texts.no;
    case PropertyList::Type::Array:
        return texts.array + itemCount(value.arrayRef().size());
    case PropertyList::Type::Dictionary:
        return texts.dictionary + itemCount(value.dictionaryRef().size());
    default:
        return value.description();
    }
}

QVariant PropertyListTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    const Item *item = itemFor(index);
    switch (index.column()) {
    case KeyColumn:
        return item->key;
    case ClassColumn:
        return ValueClasses::titleOf(item->value);
    case ValueColumn:
        if (role == Qt::ToolTipRole && item->value.isData())
            return item->value.description().left(4096);
        return displayValue(item->value);
    default:
        return {};
    }
}

QVariant PropertyListTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
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
