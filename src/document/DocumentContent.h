#pragma once

#include "model/PListNode.h"
#include "platform/PreferenceDomainFile.h"
#include "platform/PropertyListSerialization.h"
#include "platform/ReadResult.h"

#include <QList>

// What a document opened on a path holds, ready to be shown: the tree built
// and sorted, and how the content is to be written back.
struct DocumentContent {
    PListNodePtr root;
    // Read through the preferences service or from the registration domain,
    // and so saved through the service; otherwise a plain file.
    bool loadedByUserDefaults = false;
    bool canEditPlist = true;
    // How a plain file was written, so it is saved the same way.
    PropertyListFormat format = PropertyListFormat::Xml;
    // The file as it was read, to tell a later change by another program.
    PreferenceDomainFile::Stamp stamp;
    // What the reader resolved on its own (a key written twice, a value out
    // of range), for the window to tell the user.
    QList<ReadWarning> warnings;
};
