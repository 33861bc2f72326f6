#include "publishreport.h"

#include "publishnames.h"
#include "publishrules.h"

#include "lib/apppaths.h"
#include "lib/error.h"
#include "lib/fileutils.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

#include <QStringEncoder>

namespace quillet {

namespace {

// "yyyy-MM-dd HH:mm:ss" in local time, as QDateTime::toString gives it, without parsing a format
// or looking up the time zone again on every line of a report of many thousand files.
QString reportTime(const QDateTime &time)
{
    const time_t secs = time_t(time.toSecsSinceEpoch());
    tm local {};
    if (!::localtime_r(&secs, &local))
        return time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    char text[32];
    const int size = std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900,
                                   local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return QString::fromLatin1(text, std::clamp(size, 0, int(sizeof text) - 1));
}

} // namespace

PublishReport::PublishReport(const PublishNames &names, const PublishSettings &settings, bool preview,
                             const QDateTime &runTime)
    : m_preview(preview)
{
    ::tzset(); // once for the run: the times of its lines are taken in the zone set now
    lib_MakePath(AppPaths::dataDir());
    m_path = AppPaths::dataFile(names.reportName + QLatin1Char('_') + runTime.toString(QStringLiteral("yyyyMMdd-HHmmss"))
                                + (preview ? QStringLiteral("_preview") : QString()) + QStringLiteral(".csv"));
    m_file.setFileName(m_path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw Error(kLibErrorNumber, QStringLiteral("PublishReport"),
                    QStringLiteral("The report ") + m_path + QStringLiteral(" cannot be written: ") + m_file.errorString());
    m_file.write("\xEF\xBB\xBF");
    writeRow({preview ? QStringLiteral("Preview (nothing copied)") : QStringLiteral("Prepared"),
              runTime.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))});
    writeRow({QStringLiteral("Source Dir"), settings.srcDir});
    writeRow({QStringLiteral("Preparation folder"), settings.tgtDir});
    writeRow({QStringLiteral("Date window"), settings.minText, settings.maxText});
    writeRow({QStringLiteral("Privacy option"), settings.allowPriv ? QStringLiteral("on") : QStringLiteral("off"),
              QStringLiteral("Copy private photos"), settings.copyPriv ? QStringLiteral("on") : QStringLiteral("off")});
    writeRow({});
    writeRow({QStringLiteral("Path"), QStringLiteral("Modified"), QStringLiteral("Outcome"), QStringLiteral("Reason"),
              QStringLiteral("Copied to"), QStringLiteral("Size"), QStringLiteral("SHA-256")});
}

QString PublishReport::Total::text() const
{
    return reason.isEmpty() ? outcome : outcome + QStringLiteral(": ") + reason;
}

void PublishReport::writeRow(std::initializer_list<QStringView> fields)
{
    m_row.resize(0); // keeps its capacity
    QStringEncoder utf8(QStringEncoder::Utf8);
    const auto append = [&](QStringView text) {
        const qsizetype at = m_row.size();
        m_row.resize(at + utf8.requiredSpace(text.size()));
        char *const end = utf8.appendToBuffer(m_row.data() + at, text);
        m_row.resize(end - m_row.constData());
    };
    bool first = true;
    for (const QStringView field : fields) {
        if (!std::exchange(first, false))
            m_row += ',';
        const bool quote = field.startsWith(QLatin1Char(' ')) || std::any_of(field.begin(), field.end(), [](QChar c) {
                               const char16_t u = c.unicode();
                               return u == u',' || u == u'"' || u == u'\r' || u == u'\n';
                           });
        if (!quote) {
            append(field);
            continue;
        }
        m_row += '"';
        for (qsizetype from = 0;;) {
            const qsizetype q = field.indexOf(QLatin1Char('"'), from);
            append(field.sliced(from, (q < 0 ? field.size() : q + 1) - from));
            if (q < 0)
                break;
            m_row += '"'; // a quote inside a field is doubled
            from = q + 1;
        }
        m_row += '"';
    }
    m_row += "\r\n";
    m_file.write(m_row);
}

void PublishReport::add(const Line &line)
{
    auto it = std::find_if(m_totals.begin(), m_totals.end(),
                           [&](const Total &t) { return t.outcome == line.outcome && t.reason == line.reason; });
    if (it == m_totals.end())
        m_totals.append({line.outcome, line.reason, 1});
    else
        ++it->lines;
    m_copies += int(line.copiedTo.size());
    writeRow({line.path, line.modified.isValid() ? reportTime(line.modified) : QString(), line.outcome, line.reason,
              line.copiedTo.join(QStringLiteral("; ")), line.size >= 0 ? QString::number(line.size) : QString(),
              line.sha256});
    // What went out is on disk at once: a run that stops half-way leaves its record.
    if (!line.copiedTo.isEmpty())
        m_file.flush();
}

QString PublishReport::totalsText() const
{
    QStringList lines;
    for (const Total &t : m_totals)
        lines << QStringLiteral("%1  %2").arg(t.lines, 7).arg(t.text());
    return lines.join(QStringLiteral("\r\n"));
}

void PublishReport::finish(const QString &note)
{
    writeRow({});
    if (!note.isEmpty())
        writeRow({note});
    writeRow({QStringLiteral("Totals"), QStringLiteral("Files")});
    for (const Total &t : m_totals)
        writeRow({t.text(), QString::number(t.lines)});
    writeRow({m_preview ? QStringLiteral("copies it would make") : QStringLiteral("copies made"),
              QString::number(m_copies)});
    m_file.close();
}

} // namespace quillet
