#pragma once

#include "platform/PropertyList.h"

#include <QAbstractItemModel>

#include <memory>
#include <vector>

// A read-only item model over one property-list value, with the three columns
// Key, Class and Value. Rows are made the first time a view asks for them, so a
// large file opens without building every row up front. The root value itself is
// not a row: its entries are the top-level rows.
class PropertyListTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { KeyColumn, ClassColumn, ValueColumn, ColumnCount };

    explicit PropertyListTreeModel(const PropertyList &root, QObject *parent = nullptr);
    ~PropertyListTreeModel() override;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The value column's text.
    static QString displayValue(const PropertyList &value);

private:
    struct Item;
    Item *itemFor(const QModelIndex &index) const;
    void populate(Item *item) const;

    std::unique_ptr<Item> m_root;
};
