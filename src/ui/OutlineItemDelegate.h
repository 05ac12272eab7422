#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

class plistDocument;

// Draws the outline's cells in the three renditions and edits keys and values
// in line edits. A row is drawn "selected" when it is selected and the outline
// has the keyboard in the active window, "selected in the background" when it
// is selected otherwise (standard text on the inactive highlight), and normally
// in the colour the model gives. An edit ends only when the document accepts
// the text: Return, Enter, Tab (which goes on to the next cell) and leaving the field keep a refused editor
// open with a beep; Escape cancels.
class OutlineItemDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit OutlineItemDelegate(QObject *parent = nullptr);

    void setDocument(plistDocument *document) { m_document = document; }
    plistDocument *document() const { return m_document; }

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

    // The index an editor of this delegate was opened on.
    static QModelIndex indexOfEditor(const QWidget *editor);

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
    bool eventFilter(QObject *object, QEvent *event) override;

    static void rememberIndex(QWidget *editor, const QModelIndex &index);

private:
    bool mayEnd(const QWidget *editor) const;

    QPointer<plistDocument> m_document;
};
