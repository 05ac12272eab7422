#include "GeneratedAccount.h"

#include "platform/PropertyListSerialization.h"

#include "SplitMix.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kDomains = 600;
constexpr int kPerHostDomains = 24;
constexpr int kMachineDomains = 12;
constexpr double kLargest = 2.0 * 1024 * 1024;
constexpr double kSmallest = 1024;

class Random : public SplitMix {
public:
    Random() : SplitMix(20260321ULL) {}
};

QString word(Random &random)
{
    static const char *const words[] = {"Window", "Recent", "Toolbar", "Sidebar", "Server",  "Account",
                                        "Layout", "Theme",  "Export",  "Folder",  "Preview", "Sync"};
    return QString::fromLatin1(words[random.below(12)]);
}

// One value of the kinds real preferences hold, and roughly what it adds to
// the binary file.
std::pair<PropertyList, qsizetype> value(Random &random, int depth)
{
    switch (random.below(depth < 2 ? 7 : 5)) {
    case 0: {
        const QString text =
            word(random) + QLatin1Char(' ') + word(random) + QString::number(random.below(100000));
        return {PropertyList(text), text.size() + 3};
    }
    case 1:
        return {PropertyList::integer(random.below(1 << 20) - 1000), 6};
    case 2:
        return {PropertyList::date(700000000.0 + random.below(100000000)), 10};
    case 3: {
        QByteArray bytes(16 + random.below(1024), Qt::Uninitialized);
        for (char &byte : bytes)
            byte = static_cast<char>(random.below(256));
        return {PropertyList(bytes), bytes.size() + 4};
    }
    case 4:
        return {PropertyList::boolean(random.below(2) == 1), 2};
    default: {
        PropertyDictionary nested;
        qsizetype size = 4;
        for (int i = 0; i < 4; ++i) {
            auto [item, bytes] = value(random, depth + 1);
            const QString key = word(random) + QString::number(i);
            nested.insert(key, item);
            size += bytes + key.size() + 4;
        }
        return {PropertyList(nested), size};
    }
    }
}

QByteArray domainBytes(Random &random, double targetSize)
{
    PropertyDictionary domain;
    qsizetype size = 48;
    for (int i = 0; size < targetSize; ++i) {
        auto [item, bytes] = value(random, 0);
        const QString key = word(random) + QString::number(i);
        domain.insert(key, item);
        size += bytes + key.size() + 6;
    }
    return PropertyListSerialization::write(PropertyList(domain), PropertyListFormat::Binary);
}

void writeFile(const QString &path, const QByteArray &bytes, GeneratedAccount::Written &written)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) {
        written.domainPaths.append(path);
        written.totalBytes += bytes.size();
    }
}

} // namespace

namespace GeneratedAccount {

QString userFolder(const QString &root)
{
    return root + QStringLiteral("/Library/Preferences");
}

QString machineFolder(const QString &root)
{
    return root + QStringLiteral("/machine");
}

Written write(const QString &root)
{
    const QString user = userFolder(root);
    const QString machine = machineFolder(root);
    QDir().mkpath(user + QStringLiteral("/ByHost"));
    QDir().mkpath(machine);
    Written written;
    Random random;
    for (int rank = 1; rank <= kDomains; ++rank) {
        const double size = std::max(kSmallest, kLargest / std::pow(rank, 1.2));
        writeFile(user + QStringLiteral("/com.bench.domain%1.plist").arg(rank), domainBytes(random, size),
                  written);
    }
    for (int i = 0; i < kPerHostDomains; ++i)
        writeFile(user + QStringLiteral("/ByHost/com.bench.host%1.%2.plist").arg(i).arg(kHostId),
                  domainBytes(random, 2048), written);
    for (int i = 0; i < kMachineDomains; ++i)
        writeFile(machine + QStringLiteral("/com.bench.machine%1.plist").arg(i), domainBytes(random, 4096),
                  written);
    return written;
}

} // namespace GeneratedAccount
