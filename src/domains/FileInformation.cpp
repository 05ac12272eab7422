#include "FileInformation.h"

#include "domains/openDomain.h"

#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <limits>

namespace {

// Qt's owner, group and other bits in the order "rwx" reads them.
int unixModeOf(QFileDevice::Permissions permissions)
{
    int mode = 0;
    const std::pair<QFileDevice::Permission, int> bits[] = {
        {QFileDevice::ReadOwner, 0400}, {QFileDevice::WriteOwner, 0200}, {QFileDevice::ExeOwner, 0100},
        {QFileDevice::ReadGroup, 040},  {QFileDevice::WriteGroup, 020},  {QFileDevice::ExeGroup, 010},
        {QFileDevice::ReadOther, 04},   {QFileDevice::WriteOther, 02},   {QFileDevice::ExeOther, 01}};
    for (const auto &[permission, bit] : bits) {
        if (permissions.testFlag(permission))
            mode |= bit;
    }
    return mode;
}

} // namespace

FileInformation FileInformation::of(const QString &path)
{
    FileInformation information;
    information.path = path;
    const QFileInfo file(path);
    if (!file.exists())
        return information;
    information.exists = true;
    const QDateTime born = file.birthTime();
    information.creationDate = born.isValid() ? dateText(born) : tr("unknown");
    information.modificationDate = dateText(file.lastModified());
    information.accessDate = dateText(file.lastRead());
    // The panel's wording stops at 4 GB; a larger file says so at its limit.
    const qint64 bytes = std::clamp<qint64>(file.size(), 0, std::numeric_limits<quint32>::max());
    information.size = openDomain::getSize(static_cast<quint32>(bytes));
    information.owner = file.owner();
    information.group = file.group();
    information.permissions = permissionsText(unixModeOf(file.permissions()));
    return information;
}

QString FileInformation::dateText(const QDateTime &date)
{
    return QLocale().toString(date.toLocalTime(), QStringLiteral("d MMMM yyyy, HH:mm:ss"));
}

QString FileInformation::permissionsText(int unixMode)
{
    QString text;
    for (int shift = 6; shift >= 0; shift -= 3) {
        const int bits = unixMode >> shift;
        text += bits & 4 ? u'r' : u'-';
        text += bits & 2 ? u'w' : u'-';
        text += bits & 1 ? u'x' : u'-';
    }
    return text;
}
