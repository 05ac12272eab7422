#include "PlistTool.h"

#include "OrvaneVersion.h"
#include "model/PListNode.h"
#include "platform/PropertyListSerialization.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace {

const char kUsage[] =
    "usage: orvane-plist lint FILE...\n"
    "       orvane-plist convert xml1|binary1 [-o OUT] FILE\n"
    "       orvane-plist print FILE...\n"
    "       orvane-plist defaults FILE [KEY...]\n"
    "       orvane-plist domains\n"
    "       orvane-plist read DOMAIN [KEY]\n"
    "       orvane-plist parse-defaults [FILE] [--whole]\n"
    "       orvane-plist filter FILE QUERY\n"
    "       orvane-plist set FILE KEY... [--class CLASS] [--value TEXT]\n"
    "       orvane-plist print-html FILE\n"
    "       orvane-plist apply [FILE] [-n]\n"
    "       orvane-plist find TERM\n"
    "\n"
    "lint     checks that each file is a property list (XML, binary or old-style text)\n"
    "convert  writes the file's value in another format; OUT defaults to FILE itself,\n"
    "         '-o -' writes to standard output; nothing is replaced on error\n"
    "print    prints the value's description text\n"
    "defaults prints the 'defaults write' command for each top-level key of FILE\n"
    "         (or for each KEY, in the order given), one per line\n"
    "domains  lists the preference domains as the browser shows them: one line per row,\n"
    "         indented two blanks per level, the shown name, a tab and the file's path\n"
    "read     prints a domain of the current user (NSGlobalDomain for the global one),\n"
    "         or one KEY of it, as description text; exit status 1 when it is not there\n"
    "parse-defaults reads 'defaults write' lines from FILE (standard input when absent or '-')\n"
    "         as a text drop would; one record per line, numbered by input line:\n"
    "           N: entry \"DOMAIN\" \"KEY\" CLASS VALUE   (VALUE as its description; further\n"
    "                                                lines indented by four blanks)\n"
    "           N: no result\n"
    "           N: error: MESSAGE (column C)\n"
    "         blank lines and '#' comment lines are skipped; --whole reads the whole\n"
    "         input as one text, newlines included (one record, error as 'line L, column C');\n"
    "         exit status 1 only when the input cannot be read\n"
    "filter   prints what a document window shows for the search text QUERY ('#' matches\n"
    "         case, '!' negates), as description text\n"
    "set      edits the entry at KEY... (an array element by its 1-based position) as the\n"
    "         window does: --class String|Integer|Float|Boolean|Date converts it, --value\n"
    "         TEXT is typed into its value; then saves FILE and prints the entry's class\n"
    "         and value; exit status 1, with FILE untouched, when that cannot be done\n"
    "print-html writes an HTML page of the file's XML text coloured as a window prints it:\n"
    "         tag contents brown, quoted text blue, element names and brackets purple\n"
    "apply    applies 'defaults write' lines from FILE (standard input when absent or '-')\n"
    "         to your own domains as a drop on the domain browser does: a missing domain\n"
    "         file is made, an existing key replaced, dictionaries merged a level down\n"
    "         (-g and -globalDomain name NSGlobalDomain);\n"
    "         one line per command, numbered by input line:\n"
    "           N: DOMAIN KEY: added|replaced|merged|unchanged\n"
    "           N: refused: REASON\n"
    "         -n writes nothing; exit status 1 when any line was refused\n"
    "find     searches every domain of the current user for TERM ('#' matches case, '!'\n"
    "         negates) as the find window does: the result line, then one line per row of\n"
    "         the result tree, indented two blanks per level below the domains, the name,\n"
    "         and for a hit a tab and its value as description text; exit status 1 when\n"
    "         nothing matched\n";

// Writes bytes to a file atomically: the old file stays as it was unless the
// whole new content reached the disk.
QString writeAtomically(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    if (file.write(bytes) != bytes.size())
        return file.errorString();
    if (!file.commit())
        return file.errorString();
    return QString();
}

} // namespace

PlistTool::PlistTool(QTextStream &out, QTextStream &err) : m_out(out), m_err(err) {}

int PlistTool::run(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return usage(QString());
    const QString command = arguments.first();
    const QStringList rest = arguments.mid(1);
    if (command == QLatin1String("lint"))
        return lint(rest);
    if (command == QLatin1String("convert"))
        return convert(rest);
    if (command == QLatin1String("print"))
        return print(rest);
    if (command == QLatin1String("defaults"))
        return defaults(rest);
    if (command == QLatin1String("domains"))
        return domains(rest);
    if (command == QLatin1String("read"))
        return readDomain(rest);
    if (command == QLatin1String("parse-defaults"))
        return parseDefaults(rest);
    if (command == QLatin1String("filter"))
        return filter(rest);
    if (command == QLatin1String("set"))
        return set(rest);
    if (command == QLatin1String("print-html"))
        return printHtml(rest);
    if (command == QLatin1String("find"))
        return find(rest);
    if (command == QLatin1String("apply"))
        return apply(rest);
    if (command == QLatin1String("-h") || command == QLatin1String("--help") || command == QLatin1String("help")) {
        m_out << kUsage;
        return 0;
    }
    if (command == QLatin1String("--version")) {
        m_out << "orvane-plist " << OrvaneVersion::kVersion << '\n';
        return 0;
    }
    return usage(QStringLiteral("unknown command '%1'").arg(command));
}

bool PlistTool::readTextInput(const QString &path, QString *text)
{
    QFile file;
    const bool fromStandardInput = path.isEmpty() || path == QLatin1String("-");
    const bool opened = fromStandardInput ? file.open(stdin, QIODevice::ReadOnly)
                                          : (file.setFileName(path), file.open(QIODevice::ReadOnly));
    if (!opened) {
        m_err << (fromStandardInput ? QStringLiteral("standard input") : path) << ": " << file.errorString()
              << '\n';
        return false;
    }
    *text = QString::fromUtf8(file.readAll());
    return true;
}

int PlistTool::usage(const QString &problem)
{
    if (!problem.isEmpty())
        m_err << "orvane-plist: " << problem << '\n';
    m_err << kUsage;
    return 2;
}

ReadResult<PropertyListFile> PlistTool::readKept(const QString &path)
{
    m_lastRead = PropertyList();
    auto result = PropertyListSerialization::readFile(path);
    if (result)
        m_lastRead = std::move(result.value.value);
    return result;
}

int PlistTool::lint(const QStringList &files)
{
    if (files.isEmpty())
        return usage(QStringLiteral("lint needs at least one file"));
    int status = 0;
    for (const QString &path : files) {
        const auto result = readKept(path);
        if (result) {
            m_out << path << ": OK\n";
        } else {
            m_out << path << ": " << result.errorText() << '\n';
            status = 1;
        }
    }
    return status;
}

int PlistTool::convert(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return usage(QStringLiteral("convert needs a format"));
    const PropertyListCodec *codec = PropertyListSerialization::codecNamed(arguments.first().toLatin1());
    if (!codec || !codec->write)
        return usage(QStringLiteral("cannot write the format '%1' (use xml1 or binary1)").arg(arguments.first()));

    QString output;
    QStringList inputs;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) == QLatin1String("-o")) {
            if (++i >= arguments.size())
                return usage(QStringLiteral("-o needs a file name"));
            output = arguments.at(i);
        } else {
            inputs << arguments.at(i);
        }
    }
    if (inputs.size() != 1)
        return usage(QStringLiteral("convert takes exactly one file"));
    const QString &input = inputs.first();
    if (output.isEmpty())
        output = input;

    const auto result = readKept(input);
    if (!result) {
        m_err << input << ": " << result.errorText() << '\n';
        return 1;
    }
    const QByteArray bytes = PropertyListSerialization::write(m_lastRead, codec->format);
    if (bytes.isEmpty()) {
        m_err << input << ": cannot be written: " << PropertyListSerialization::writeProblem(m_lastRead) << '\n';
        return 1;
    }
    if (output == QLatin1String("-")) {
        m_out.flush();
        QFile standardOutput;
        if (!standardOutput.open(stdout, QIODevice::WriteOnly) || standardOutput.write(bytes) != bytes.size()) {
            m_err << "orvane-plist: cannot write to standard output\n";
            return 1;
        }
        return 0;
    }
    const QString failure = writeAtomically(output, bytes);
    if (!failure.isEmpty()) {
        m_err << output << ": " << failure << '\n';
        return 1;
    }
    return 0;
}

int PlistTool::print(const QStringList &files)
{
    if (files.isEmpty())
        return usage(QStringLiteral("print needs a file"));
    int status = 0;
    for (const QString &path : files) {
        const auto result = PropertyListSerialization::readFile(path);
        if (!result) {
            m_err << path << ": " << result.errorText() << '\n';
            status = 1;
            continue;
        }
        m_out << result.value.value.description() << '\n';
    }
    return status;
}

int PlistTool::defaults(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return usage(QStringLiteral("defaults needs a file"));
    const QString &path = arguments.first();
    const auto result = PropertyListSerialization::readFile(path);
    if (!result) {
        m_err << path << ": " << result.errorText() << '\n';
        return 1;
    }
    const PropertyList &value = result.value.value;
    if (!value.isDictionary()) {
        // A domain is a dictionary of keys; an array at the top has no keys to write.
        m_err << path << ": the top level is not a dictionary, so it has no keys for 'defaults write'\n";
        return 1;
    }
    const PListNodePtr root = PListNode::treeFromDictionary(value.dictionaryRef());
    // The domain comes from the file name, so relative and absolute spellings agree.
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    const QStringList keys = arguments.mid(1);
    if (keys.isEmpty()) {
        for (const PListNodePtr &entry : root->children())
            m_out << entry->returnStringWithPath(absolutePath, false).first << '\n';
        return 0;
    }
    int status = 0;
    for (const QString &key : keys) {
        const PListNodePtr entry = root->childWithName(key);
        if (!entry) {
            m_err << path << ": no key '" << key << "'\n";
            status = 1;
            continue;
        }
        m_out << entry->returnStringWithPath(absolutePath, false).first << '\n';
    }
    return status;
}
