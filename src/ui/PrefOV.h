#pragma once

#include <QTreeView>

#include <optional>

class plistDocument;
class PListNode;

// The document's outline: a tree view over the document's outline model that
// leaves the decisions to the document. Keys go to the document first and
// reach the view only when the document passes them on; an edit started by
// the user opens only when the document agrees; a click on a boolean's value
// flips it. Tab and Shift+Tab in an editor go on to the row's next or
// previous cell (Key, Class, Value), and Alt+Down opens the class pop-up,
// so that a class changes from the keyboard as well.
class PrefOV : public QTreeView {
    Q_OBJECT
public:
    explicit PrefOV(QWidget *parent = nullptr);
    using QTreeView::edit;

    void setDocument(plistDocument *document);
    plistDocument *document() const { return m_document; }
    // The node a row shows, nullptr for an invalid index.
    PListNode *nodeAt(const QModelIndex &index) const;
    QModelIndex indexOf(const PListNode *node, int column = 0) const;
    // A cell editor is open.
    bool isEditing() const { return state() == EditingState; }
    // The rows in view as (horizontal, vertical) scroll positions and the
    // viewport's size; setting it scrolls back there once the rows are laid out.
    QRect visibleRect() const;
    void setVisibleRect(const QRect &rect);
    // Whether selected rows are drawn as the keyboard's: focused, in the active window.
    bool isKeyOutline() const { return hasFocus() && isActiveWindow(); }

public slots:
    // Whichever column the user moved to the front carries the disclosure triangles.
    void outlineViewColumnDidMove();

protected:
    bool event(QEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                 const QModelIndex &index) const override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;
    // Rows leave as the document's payload; drops go to the document, which
    // decides where they may land. A drag inside the outline moves, unless
    // Ctrl asks for a copy; any other drag copies.
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // The next cell of the row, in the direction given, whose editor may open
    // without a side effect: a boolean's value flips rather than edits, an
    // array element has no key to edit.
    QModelIndex nextEditableCell(const QModelIndex &from, int step) const;
    void openClassPopUp();
    // The rows' stripes from the colour settings.
    void applyRowColors();

    // Where a drop at a point of the viewport would go: onto a row (index -1),
    // or between the children of a row or of the top level (no item).
    struct DropSpot {
        PListNode *item = nullptr;
        int childIndex = -1;
        QRect indicator; // a line between rows, or the row's outline
    };
    DropSpot dropSpotAt(const QPoint &point) const;
    // Where the document takes the drop, with its kind set on the event, and
    // shown; nothing when it is refused there.
    std::optional<DropSpot> offerDrop(QDropEvent *event);

    plistDocument *m_document = nullptr;
    QRect m_dropIndicator;
};
