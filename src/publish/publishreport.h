#pragma once

#include <QDateTime>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

#include <initializer_list>

namespace quillet {

struct PublishNames;
struct PublishSettings;

// The record of one preparation run (or of its preview): one line per file considered with its
// path, modified time, outcome and reason, the folders it was copied to and, for a copied file,
// its size and SHA-256; then the totals per outcome and reason. It is a CSV file (UTF-8 with a
// byte-order mark, CR LF, fields quoted where needed) in the data folder, never in the
// preparation folder, which is uploaded or burnt as it stands. Lines are written as they are
// decided, so a run that stops half-way still leaves the record of what went out.
class PublishReport
{
public:
    // Creates the report "<variant>_<yyyyMMdd-HHmmss>[_preview].csv" in the data folder. Throws
    // Error when it cannot be written.
    PublishReport(const PublishNames &names, const PublishSettings &settings, bool preview,
                  const QDateTime &runTime);

    const QString &path() const { return m_path; }

    struct Line
    {
        QString path; // relative to the Source Dir
        QDateTime modified;
        QString outcome; // "copied", "would be copied", "left out", "copy failed"
        QString reason;
        QStringList copiedTo; // relative to the preparation folder
        qint64 size = -1;
        QString sha256;
    };
    void add(const Line &line);
    // Appends the totals and closes the file. `note` (when not empty) is written above them,
    // for a run that did not finish.
    void finish(const QString &note = QString());

    int copies() const { return m_copies; }
    // The totals as text lines for a message ("  300  left out: outside the date window").
    QString totalsText() const;

private:
    // Lines per outcome and reason, in the order first met.
    struct Total
    {
        QString outcome;
        QString reason;
        int lines = 0;
        QString text() const;
    };

    // One row, each field quoted where it holds a comma, a quote, a line break or leading blanks;
    // encoded into a buffer kept from row to row (a report has a row per file of the Source Dir).
    void writeRow(std::initializer_list<QStringView> fields);

    QString m_path;
    QFile m_file;
    QByteArray m_row;
    QList<Total> m_totals;
    int m_copies = 0;
    bool m_preview = false;
};

} // namespace quillet
