#pragma once

// What the document window tests share: a throw-away account with the
// application's settings and its document controller, and the sheets' buttons.
#include "DomainSandbox.h"

#include "domains/ApplicationSettings.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyListSerialization.h"
#include "platform/UserDefaults.h"
#include "ui/VXDocumentController.h"
#include "ui/VXWindowController.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QTest>

using namespace Qt::StringLiterals;

// A throw-away account with the application's settings, and its documents.
struct Session {
    Session()
    {
        ApplicationSettings::registerDefaults(defaults, AppearanceDefaults::fallback(),
                                              QDateTime::currentDateTimeUtc());
    }

    QString write(const char *text, const QString &name = u"doc.plist"_s)
    {
        const auto value = PropertyListSerialization::read(QByteArray(text)).value.value;
        return sandbox.write(name, PropertyListSerialization::write(value, PropertyListFormat::Xml));
    }
    // The window of path once its content is shown.
    VXWindowController *open(const QString &path)
    {
        VXWindowController *window = documents.openDocument(path);
        if (!QTest::qWaitFor([window] { return !window->isLoading(); }))
            return nullptr;
        window->activateWindow();
        return QTest::qWaitForWindowActive(window) ? window : nullptr;
    }

    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};
    VXDocumentController documents{{{service, defaults}, center}};
};

inline QString names(const plistDocument &document)
{
    QStringList names;
    for (const PListNodePtr &child : document.treeData()->children())
        names << child->name();
    return names.join(u' ');
}

// Clicks the button of that title on the window's sheet (by default its message box).
inline void answer(QWidget *window, const QString &button, QWidget *sheet = nullptr)
{
    QVERIFY(sheet || QTest::qWaitFor(
                         [&] { return (sheet = window->findChild<QMessageBox *>()) && sheet->isVisible(); }));
    for (QAbstractButton *candidate : sheet->findChildren<QAbstractButton *>()) {
        if (candidate->text() == button)
            return candidate->click();
    }
    QFAIL(qPrintable(u"no button "_s + button));
}
