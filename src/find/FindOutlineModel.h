#pragma once

#include "findNode.h"

#include <QAbstractItemModel>

// The find window's item model over the result tree: two columns, the node's
// name ("KeyColumn") and, for a hit, its value's description ("ValueColumn").
// The items are the nodes; the root is not a row. Only domain rows present as
// enabled; every row below them is drawn in the disabled style, which the
// browser's delegate reads from the same role.
class FindOutlineModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { KeyColumn, ValueColumn };
    enum Role {
        // An openNode::Presentation as an int, for the unselected row.
        PresentationRole = Qt::UserRole + 1,
    };

    explicit FindOutlineModel(QObject *parent = nullptr);

    // Takes the tree of a new search; the old one goes.
    void resetRoot(findNodePtr root);
    findNode *root() const { return m_root.get(); }
    // The root for an invalid index.
    findNode *nodeAt(const QModelIndex &index) const;
    // Colours or fonts changed: every shown row draws again.
    void redrawAll();

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    findNodePtr m_root;
};
