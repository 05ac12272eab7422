#pragma once

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
    int usage(const QString &problem);
    // The message on the error stream; answers the exit status 1.
    int fail(const QString &message);
    // The file opened as a window opens it; none, with the reason, when it
    // cannot be read. In PlistTool_Document.cpp.
    static std::unique_ptr<plistDocument> openDocument(const QString &path, QString *error);

    QTextStream &m_out;
    QTextStream &m_err;
};
