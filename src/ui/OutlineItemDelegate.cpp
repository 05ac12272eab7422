#include "OutlineItemDelegate.h"

#include "document/OutlineModel.h"
#include "document/plistDocument.h"
#include "model/VXAdditions.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

namespace {

const char *const kIndexProperty = "orvaneEditedIndex";

Rendition renditionOf(const QStyleOptionViewItem &option)
{
    if (!option.state.testFlag(QStyle::State_Selected))
        return Rendition::Normal;
    const QWidget *view = option.widget;
    const bool keyOutline = view && view->hasFocus() && view->isActiveWindow();
    return keyOutline ? Rendition::Selected : Rendition::BackgroundSelected;
}

QColor normalColour(const QModelIndex &index, const QPalette &palette)
{
    using Colour = RenditionStyle::Colour;
    switch (Colour(index.data(OutlineModel::ColourRole).toInt())) {
    case Colour::CustomText:
    case Colour::CustomDisabled: {
        const CalibratedColor colour =
            VXAdditions::colorFromString(index.data(OutlineModel::CustomColourRole).toString());
        return QColor::fromRgbF(float(colour.red), float(colour.green), float(colour.blue),
                                float(colour.alpha));
    }
    case Colour::DisabledText:
        return palette.color(QPalette::Disabled, QPalette::Text);
    case Colour::AlternateSelectedText:
        return palette.color(QPalette::Active, QPalette::HighlightedText);
    case Colour::StandardText:
        break;
    }
    return palette.color(QPalette::Active, QPalette::Text);
}

bool isEndingKey(const QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    switch (static_cast<const QKeyEvent *>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

QAbstractItemDelegate::EndEditHint endHintOf(const QEvent *event)
{
    switch (static_cast<const QKeyEvent *>(event)->key()) {
    case Qt::Key_Tab:
        return QAbstractItemDelegate::EditNextItem;
    case Qt::Key_Backtab:
        return QAbstractItemDelegate::EditPreviousItem;
    default:
        return QAbstractItemDelegate::NoHint;
    }
}

} // namespace

OutlineItemDelegate::OutlineItemDelegate(QObject *parent) : QStyledItemDelegate(parent) {}

void OutlineItemDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const QString fontName = index.data(OutlineModel::FontNameRole).toString();
    const double fontSize = index.data(OutlineModel::FontSizeRole).toDouble();
    if (!fontName.isEmpty())
        option->font.setFamily(fontName);
    if (fontSize > 0)
        option->font.setPointSizeF(fontSize);
    QPalette &palette = option->palette;
    switch (renditionOf(*option)) {
    case Rendition::Selected:
        break; // the palette's highlighted text on the highlight
    case Rendition::BackgroundSelected:
        // On the pale highlight the outline gives rows it does not have the keyboard for.
        palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Active, QPalette::Text));
        break;
    case Rendition::Normal:
        palette.setColor(QPalette::Text, normalColour(index, palette));
        break;
    }
}

QWidget *OutlineItemDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                           const QModelIndex &index) const
{
    auto *editor = new QLineEdit(parent);
    editor->setFrame(false);
    QStyleOptionViewItem styled = option;
    initStyleOption(&styled, index);
    editor->setFont(styled.font);
    rememberIndex(editor, index);
    return editor;
}

void OutlineItemDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        line->setText(index.data(Qt::EditRole).toString());
        line->selectAll();
    }
}

void OutlineItemDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                       const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor);
    // An editor closed without asking (the view went away, the model changed)
    // still may not store a text the document refuses.
    if (!line || !mayEnd(editor))
        return;
    model->setData(index, line->text(), Qt::EditRole);
}

bool OutlineItemDelegate::mayEnd(const QWidget *editor) const
{
    const auto *line = qobject_cast<const QLineEdit *>(editor);
    const QModelIndex index = indexOfEditor(editor);
    if (!line || !index.isValid() || !m_document)
        return true;
    const PListNode *node = m_document->outlineModel()->nodeAt(index);
    return m_document->textShouldEndEditing(node, index.column(), line->text());
}

bool OutlineItemDelegate::eventFilter(QObject *object, QEvent *event)
{
    auto *editor = qobject_cast<QWidget *>(object);
    const bool focusOut = event->type() == QEvent::FocusOut;
    if (!editor || !(isEndingKey(event) || focusOut))
        return QStyledItemDelegate::eventFilter(object, event);
    if (!mayEnd(editor)) {
        const Qt::FocusReason reason =
            focusOut ? static_cast<QFocusEvent *>(event)->reason() : Qt::OtherFocusReason;
        // Another window or a menu taking the keyboard is no attempt to end the edit.
        const bool userLeft = reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason;
        if (userLeft && m_document && m_document->screen())
            m_document->screen()->beep();
        if (focusOut && userLeft)
            QTimer::singleShot(0, editor, [editor] { editor->setFocus(); });
        return true;
    }
    if (focusOut)
        return QStyledItemDelegate::eventFilter(object, event);
    // Tab and Shift+Tab end the edit as Return does, and the view goes on to the row's next cell.
    emit commitData(editor);
    emit closeEditor(editor, endHintOf(event));
    return true;
}

QModelIndex OutlineItemDelegate::indexOfEditor(const QWidget *editor)
{
    return editor->property(kIndexProperty).value<QPersistentModelIndex>();
}

void OutlineItemDelegate::rememberIndex(QWidget *editor, const QModelIndex &index)
{
    editor->setProperty(kIndexProperty, QVariant::fromValue(QPersistentModelIndex(index)));
}
