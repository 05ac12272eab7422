#pragma once

#include <QCoreApplication>
#include <QString>

// The texts a document shows or gives its undo records. Each is looked up in
// the "plistDocument" translation context with the English text as its key.
namespace DocumentStrings {

inline QString tr(const char *text) { return QCoreApplication::translate("plistDocument", text); }

// The names of the nodes the add commands make, which are also their undo names.
inline QString newKey() { return tr("New Key"); }
inline QString newDictionary() { return tr("New Dictionary"); }
inline QString newArray() { return tr("New Array"); }
inline QString arrayItem() { return tr("Array item"); }
// The path a document without a file gives the pasteboard.
inline QString untitled()
{
    return tr("Untitled");
}

// Undo action names.
inline QString deleteAction() { return tr("Delete"); }
inline QString cutAction() { return tr("Cut"); }
inline QString changeClass() { return tr("Change Class"); }
inline QString changeName() { return tr("Change Name"); }
inline QString changeValue() { return tr("Change Value"); }
inline QString applyDefaultsValue() { return tr("Apply Defaults Value"); }
inline QString pasteAction()
{
    return tr("Paste");
}
inline QString dragAction()
{
    return tr("Drag");
}
inline QString moveAction()
{
    return tr("Move");
}

// A node dropped into its own document is renamed "%1 %2" with this word.
inline QString copySuffix()
{
    return tr("Copy");
}

// The delete confirmation: the question, then the one name or "these items?".
inline QString deleteQuestion() { return tr("Do you really wish to delete"); }
inline QString deleteOneSuffix() { return tr(" %1 ?"); }
inline QString deleteManySuffix() { return tr("these items?"); }

// The root of every document tree, and of a filtered tree that found nothing.
inline const QString kRootName = QStringLiteral("OVRoot");
inline const QString kSearchRootName = QStringLiteral("Search Root");
// A registration-domain document's file, which exists nowhere.
inline const QString kRegistrationFileName = QStringLiteral("NSRegistrationDomain.plist");

} // namespace DocumentStrings
