#include "ValueClass.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text) { return QCoreApplication::translate("ValueClass", text); }

} // namespace

namespace ValueClasses {

QString title(int tag)
{
    switch (tag) {
    case StringClass:
        return tr("String");
    case DataClass:
        return tr("Data");
    case IntegerClass:
        return tr("Integer");
    case FloatClass:
        return tr("Float");
    case BooleanClass:
        return tr("Boolean");
    case DateClass:
        return tr("Date");
    case ArrayClass:
        return tr("Array");
    case DictionaryClass:
        return tr("Dictionary");
    default:
        return QString();
    }
}

QString titleOf(const PropertyList &value)
{
    const ValueClass tag = of(value);
    if (tag == NoClass && value.isUid())
        return tr("UID");
    return title(tag);
}

const Texts &texts()
{
    static const Texts shared{tr("a dictionary"), tr("an array"), tr("(Data Item)"), tr("true"),
                              tr("false"),        tr("Item"),     tr("Items")};
    return shared;
}

QString itemLabel(qsizetype position) { return texts().item + QLatin1Char(' ') + QString::number(position); }

} // namespace ValueClasses
