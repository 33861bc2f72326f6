#include "inifile.h"
#include "atomicwrite.h"

#include "error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

namespace quillet::IniFile {

namespace {

QStringList readLines(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromUtf8(f.readAll());
    text.remove(QLatin1Char('\r'));
    QStringList lines = text.split(QLatin1Char('\n'));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

bool isSectionHeader(const QString &line, QString *name)
{
    const QString t = line.trimmed();
    if (!t.startsWith(QLatin1Char('[')))
        return false;
    const int close = t.indexOf(QLatin1Char(']'));
    if (close < 0)
        return false;
    *name = t.mid(1, close - 1).trimmed();
    return true;
}

// The key of a "key=value" line, or an empty text for comments and other lines.
QString keyOf(const QString &line)
{
    if (line.trimmed().startsWith(QLatin1Char(';')))
        return QString();
    const int eq = line.indexOf(QLatin1Char('='));
    return eq < 0 ? QString() : line.left(eq).trimmed();
}

QString valueOf(const QString &line)
{
    const QString raw = line.mid(line.indexOf(QLatin1Char('=')) + 1);
    if (raw == QLatin1String(" "))
        return raw;
    QString v = raw.trimmed();
    if (v.size() >= 2 && v.startsWith(QLatin1Char('"')) && v.endsWith(QLatin1Char('"')))
        v = v.mid(1, v.size() - 2);
    return v;
}

// Values that would not read back as written are quoted.
QString encodeValue(const QString &value)
{
    if (value == QLatin1String(" "))
        return value;
    if (value != value.trimmed() || (value.startsWith(QLatin1Char('"')) && value.endsWith(QLatin1Char('"'))))
        return QLatin1Char('"') + value + QLatin1Char('"');
    return value;
}

} // namespace

QString read(const QString &path, const QString &section, const QString &key, const QString &defaultValue,
             bool *found)
{
    if (found)
        *found = false;
    bool inSection = false;
    for (const QString &line : readLines(path)) {
        QString name;
        if (isSectionHeader(line, &name)) {
            inSection = name.compare(section, Qt::CaseInsensitive) == 0;
            continue;
        }
        if (inSection && keyOf(line).compare(key, Qt::CaseInsensitive) == 0 && !keyOf(line).isEmpty()) {
            if (found)
                *found = true;
            return valueOf(line);
        }
    }
    return defaultValue;
}

void write(const QString &path, const QString &section, const QString &key, const QString &value)
{
    QStringList lines = readLines(path);
    const QString newLine = key + QLatin1Char('=') + encodeValue(value);
    int sectionStart = -1;
    int insertAt = -1;
    bool done = false;
    for (int i = 0; i < lines.size() && !done; ++i) {
        QString name;
        if (isSectionHeader(lines[i], &name)) {
            if (sectionStart >= 0)
                break;
            if (name.compare(section, Qt::CaseInsensitive) == 0)
                sectionStart = insertAt = i;
            continue;
        }
        if (sectionStart < 0)
            continue;
        if (keyOf(lines[i]).compare(key, Qt::CaseInsensitive) == 0 && !keyOf(lines[i]).isEmpty()) {
            lines[i] = newLine;
            done = true;
        } else if (!lines[i].trimmed().isEmpty()) {
            insertAt = i;
        }
    }
    if (!done) {
        if (sectionStart < 0) {
            if (!lines.isEmpty() && !lines.last().trimmed().isEmpty())
                lines << QString();
            lines << QLatin1Char('[') + section + QLatin1Char(']') << newLine;
        } else {
            lines.insert(insertAt + 1, newLine);
        }
    }

    QDir().mkpath(QFileInfo(path).absolutePath());
    const QString failure = WriteFileAtomically(path, (lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toUtf8());
    if (!failure.isEmpty())
        throw Error(kErrPathFileAccess, QStringLiteral("Lib09.WritePrivateProfile"), failure + QStringLiteral("\r\nFile:") + path);
}

} // namespace quillet::IniFile
