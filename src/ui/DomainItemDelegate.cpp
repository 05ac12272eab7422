#include "DomainItemDelegate.h"

#include "domains/DomainOutlineModel.h"
#include "domains/SettingsKeys.h"
#include "model/VXAdditions.h"
#include "platform/UserDefaults.h"
#include "ui/AppearanceDefaults.h"

#include <QWidget>

DomainItemDelegate::DomainItemDelegate(const UserDefaults &defaults, QObject *parent)
    : QStyledItemDelegate(parent), m_defaults(defaults)
{
}

QColor DomainItemDelegate::textColour(bool disabled, const QPalette &palette) const
{
    if (m_defaults.boolForKey(SettingsKeys::VXUseCustomColors)) {
        const QString key = disabled ? SettingsKeys::VXDisabledColor : SettingsKeys::VXTextColor;
        return SystemAppearance::qColor(VXAdditions::colorFromString(m_defaults.stringForKey(key)));
    }
    return palette.color(disabled ? QPalette::Disabled : QPalette::Active, QPalette::Text);
}

void DomainItemDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    QPalette &palette = option->palette;
    if (option->state.testFlag(QStyle::State_Selected)) {
        const QWidget *view = option->widget;
        if (!(view && view->hasFocus() && view->isActiveWindow()))
            palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Active, QPalette::Text));
        return;
    }
    const auto presentation =
        openNode::Presentation(index.data(DomainOutlineModel::PresentationRole).toInt());
    palette.setColor(QPalette::Text, textColour(presentation == openNode::Presentation::Disabled, palette));
}
