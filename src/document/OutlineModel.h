#pragma once

#include "model/PListNode.h"

#include <QAbstractItemModel>
#include <QHash>

#include <functional>

// The outline's item model over a document's shown tree, with the columns Key,
// Class and Value. Its items are the nodes themselves: nothing is copied or
// cached per row, so a tree of millions of nodes costs the model nothing until
// rows are shown. The root is not a row; its children are the top level.
//
// The model never changes the tree. The document's tree operations change it
// and announce each change here, with exact row signals, so the views stay
// right whoever made the edit (a command, undo, redo, the filter's mirror).
class OutlineModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { KeyColumn, ClassColumn, ValueColumn, ColumnCount };
    // What the delegate needs to draw a cell's normal rendition; the selected
    // renditions depend on the view's focus and are the delegate's choice.
    enum Role {
        ColourRole = Qt::UserRole + 1, // RenditionStyle::Colour, as an int
        CustomColourRole,              // the colour string for the custom colours
        FontNameRole,
        FontSizeRole,
        ValueIsBoolRole,
        ArrayElementRole,              // the node is a child of an array
    };
    // Applies an edit made through setData; false when it was refused.
    using EditHandler = std::function<bool(PListNode *node, int column, const QVariant &value)>;

    explicit OutlineModel(QObject *parent = nullptr);

    void setEditHandler(EditHandler handler) { m_editHandler = std::move(handler); }
    void setRenditionSettings(const RenditionSettings &settings);

    PListNode *root() const { return m_root.get(); }
    // The root for an invalid index.
    PListNode *nodeAt(const QModelIndex &index) const;
    // Invalid for the root and for nodes outside the shown tree.
    QModelIndex indexOf(const PListNode *node, int column = KeyColumn) const;
    // Whether node is the shown root or lies below it.
    bool holds(const PListNode *node) const;

    // ---- announcements of the document's tree operations ----
    void resetRoot(const PListNodePtr &root);
    void beginInsert(const PListNode *parent, int first, int last);
    void endInsert(const PListNode *parent, int last);
    void beginRemove(const PListNode *parent, int first, int last);
    void endRemove(const PListNode *parent, int first);
    void nodeChanged(const PListNode *node);
    void beginSort();
    void endSort();
    // Texts of shown rows may have changed though no shown row did: a real
    // node behind a filtered view was edited, or the settings changed.
    void redrawAll();

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    int rowOf(const PListNode *node) const;
    // A change of a child's count or an array's positions shows in the
    // parent's item count and in the labels "Item N" from first on.
    void childrenChanged(const PListNode *parent, int first);
    QString keyText(const PListNode &node, int row) const;
    QVariant displayText(const PListNode &node, const QModelIndex &index) const;
    QVariant styleData(const PListNode &node, int column, int role) const;

    PListNodePtr m_root;
    RenditionSettings m_settings;
    EditHandler m_editHandler;
    // Where each node was last found among its siblings: checked before use,
    // so a stale entry costs one search and a large dictionary is not
    // scanned on every call of parent().
    mutable QHash<const PListNode *, int> m_rowHints;
};
