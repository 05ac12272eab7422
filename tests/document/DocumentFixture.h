#pragma once

#include "FakeScreen.h"

#include "DomainSandbox.h"
#include "document/plistDocument.h"
#include "platform/NotificationCenter.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

#include <QString>

#include <memory>

// A document in a throw-away account, with the settings registered as the
// application registers them, shown on a fake screen.
class DocumentFixture {
public:
    DocumentFixture();
    ~DocumentFixture();

    // A document showing value, as if read from a writable file.
    plistDocument &open(const PropertyList &value);
    // A document opened on path; a failure fails the calling test.
    plistDocument &openFile(const QString &path);

    plistDocument &document() { return *m_document; }
    FakeScreen screen;
    DomainSandbox sandbox;
    PreferencesService service;
    NotificationCenter center;
    UserDefaults defaults{service, center};

private:
    std::unique_ptr<plistDocument> m_document;
};

// Old-style text read as a value, for writing small trees in tables.
PropertyList valueOf(const char *text);
// The node at a path of names (an array element by its 1-based position),
// "" for the shown root.
PListNode *nodeAt(const plistDocument &document, const QString &path);
// Every node's name, class tag, flags and text, so that hidden state shows
// too; entries of dictionaries in the order of their texts when sorted is set.
QString detailedPicture(const PListNode &node, bool sorted = false);
