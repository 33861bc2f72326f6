#include "batchfilename.h"

#include "lib/apppaths.h"
#include "lib/fileutils.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace quillet::BatchfileName {

QString doneFolder()
{
    return AppPaths::dataFile(QStringLiteral("Batchfiles Done"));
}

bool isConflictCopy(const QString &fileName)
{
    return fileName.contains(QLatin1String(".sync-conflict-"), Qt::CaseInsensitive)
        || fileName.contains(QLatin1String("(conflicted copy"), Qt::CaseInsensitive)
        || fileName.contains(QLatin1String("(conflict"), Qt::CaseInsensitive);
}

bool isBatchfile(const QString &fileName)
{
    // Sync tools write into temporaries (".syncthing.<name>.tmp", "~syncthing~<name>.tmp",
    // "<name>.part") and rename at the end; those never match. Conflict copies do and are refused.
    return fileName.startsWith(QLatin1String("_Batchfile_"), Qt::CaseInsensitive)
        && fileName.endsWith(QLatin1String(".log"), Qt::CaseInsensitive) && fileName.size() > 15
        && !isConflictCopy(fileName);
}

bool belongsTo(const QString &fileName, const QString &pcName, Qt::CaseSensitivity cs)
{
    const QString prefix = QStringLiteral("_Batchfile_");
    const QString suffix = QLatin1Char('_') + pcName + QStringLiteral(".log");
    return fileName.size() == prefix.size() + 12 + suffix.size() && fileName.startsWith(prefix, cs)
        && fileName.endsWith(suffix, cs);
}

QString sendingPc(const QString &fileName)
{
    QString base = fileName;
    const int dot = base.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0)
        base.truncate(dot);
    return base.mid(base.lastIndexOf(QLatin1Char('_')) + 1);
}

QString doneStamp(const QDateTime &when)
{
    return when.toString(QStringLiteral("yyMMddHHmm"));
}

QString uniqueDonePath(const QString &folder, const QString &fileName, const QDateTime &when)
{
    const QString stamp = doneStamp(when);
    QString path = lib_JoinPath(folder, stamp + fileName);
    // A letter after the digits sorts a later record after the earlier one of the same minute.
    for (int n = 1; QFileInfo::exists(path) || QFileInfo(path).isSymLink(); ++n) {
        const QString suffix = n < 25 ? QString(QChar(u'a' + n)) : QStringLiteral("z") + QString::number(n);
        path = lib_JoinPath(folder, stamp + suffix + fileName);
    }
    return path;
}

QStringList doneCopiesOf(const QString &folder, const QString &fileName)
{
    static const QRegularExpression stamp(QStringLiteral("^\\d{10}([a-z]\\d*)?$"));
    QStringList copies;
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (name.endsWith(fileName) && stamp.match(name.left(name.size() - fileName.size())).hasMatch())
            copies << entry.absoluteFilePath();
    }
    return copies;
}

} // namespace quillet::BatchfileName
