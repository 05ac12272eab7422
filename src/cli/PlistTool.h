#pragma once

#include "platform/PropertyListSerialization.h"

#include <QStringList>
#include <QTextStream>

#include <memory>

class plistDocument;

// orvane-plist: lint, convert and print property-list files, and turn their
// keys into `defaults write` commands, from the command line (Linux has no plutil). The commands write to the given streams so tests
// can run them in-process; run() answers the process exit status.
class PlistTool {
public:
    PlistTool(QTextStream &out, QTextStream &err);

    // arguments without the program name, e.g. {"lint", "a.plist"}
    int run(const QStringList &arguments);

    // A document over the process's own preferences service and settings.
    // In PlistTool_Document.cpp.
    static std::unique_ptr<plistDocument> makeDocument();
    // The file opened as a window opens it; none, with the reason, when it
    // cannot be read.
    static std::unique_ptr<plistDocument> openDocument(const QString &path, QString *error);

private:
    int lint(const QStringList &files);
    int convert(const QStringList &arguments);
    int print(const QStringList &files);
    int defaults(const QStringList &arguments);
    int parseDefaults(const QStringList &arguments); // in PlistTool_ParseDefaults.cpp
    int domains(const QStringList &arguments);    // in PlistTool_Domains.cpp
    int readDomain(const QStringList &arguments); // in PlistTool_Domains.cpp
    int filter(const QStringList &arguments);     // in PlistTool_Document.cpp
    int set(const QStringList &arguments);        // in PlistTool_Document.cpp
    int printHtml(const QStringList &arguments);  // in PlistTool_PrintHtml.cpp
    int apply(const QStringList &arguments);      // in PlistTool_Apply.cpp
    int find(const QStringList &arguments);       // in PlistTool_Domains.cpp
    // The text of FILE, or of standard input for none or '-'; false, with the
    // reason on the error stream, when it cannot be read.
    bool readTextInput(const QString &path, QString *text);
    int usage(const QString &problem);
    // The message on the error stream; answers the exit status 1.
    int fail(const QString &message);

    // Reads a file for lint and convert, and keeps its value until the next
    // read or the tool's end: a run of the command ends without freeing it
    // (main leaves through _Exit), which for a file of millions of values is
    // a quarter of the run saved.
    ReadResult<PropertyListFile> readKept(const QString &path);

    QTextStream &m_out;
    QTextStream &m_err;
    PropertyList m_lastRead;
};
