#pragma once

#include "domains/openNode.h"

#include <QAbstractItemModel>

// The browser outline's item model over the shown openNode tree: one column,
// the row's display name, with the path as tool tip. Its items are the nodes
// themselves; the root is not a row.
//
// The model never changes the tree: openDomain changes it and announces each
// change here with exact row signals, so a selection survives a delete and
// its undo wherever it does not touch the changed rows.
class DomainOutlineModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Role {
        // The openNode::Presentation of an unselected row, as an int: Disabled
        // when the file cannot be written. The selected presentations depend
        // on the view's focus and are the delegate's to choose.
        PresentationRole = Qt::UserRole + 1,
        PathRole, // the node's full path (its name)
    };

    explicit DomainOutlineModel(QObject *parent = nullptr);

    openNode *root() const { return m_root.get(); }
    // The root for an invalid index.
    openNode *nodeAt(const QModelIndex &index) const;
    // Invalid for the root and for nodes outside the shown tree.
    QModelIndex indexOf(const openNode *node) const;
    // Whether node is the shown root or lies below it.
    bool holds(const openNode *node) const;

    // ---- announcements of openDomain's tree changes ----
    void resetRoot(const openNodePtr &root);
    void beginInsert(const openNode *parent, int row);
    void endInsert();
    void beginRemove(const openNode *parent, int row);
    void endRemove();
    // Colours or fonts changed: every shown row draws again.
    void redrawAll();

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    openNodePtr m_root;
};
