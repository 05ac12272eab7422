#pragma once

#include <QDir>
#include <QHash>
#include <QString>
#include <QStringList>

// The shared corpus of real property lists lives beside the repository. Tests
// find it through ORVANE_CORPUS or ../shared/corpus and skip, saying why, when
// it is not there.
namespace Corpus {

// The corpus folder, or an empty string when there is none.
QString root();
// Every file in a corpus sub-folder (hidden ones included), sorted by name.
QStringList files(const QString &subFolder);
QByteArray readAll(const QString &path);
QString testDataPath(const QString &name);
// malformed-expectations.tsv: each malformed file's name with its expected outcome.
QHash<QString, QString> malformedExpectations();

} // namespace Corpus

#define ORVANE_REQUIRE_CORPUS()                                                                   \
    do {                                                                                           \
        if (Corpus::root().isEmpty())                                                              \
            QSKIP("corpus not found: set ORVANE_CORPUS or place shared/corpus beside the repository"); \
    } while (false)
