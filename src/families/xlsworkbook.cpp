#include "xlsworkbook.h"

#include "lib/apppaths.h"
#include "lib/error.h"
#include "xlsreader/xlsreading.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryFile>

#include <cstring>

namespace quillet {

static_assert(xlsreader::kMaxRows == Workbook::kMaxRows && xlsreader::kMaxColumns == Workbook::kMaxColumns);

namespace {

// A workbook of a few hundred rows is read in milliseconds; a reader this slow is stuck.
constexpr int kDefaultTimeLimitMs = 15000;

QString g_program;
int g_timeLimitMs = 0;

[[noreturn]] void notRead(const QString &why)
{
    throw Error(kErrBadFileFormat, QStringLiteral("Workbook"), QStringLiteral("The workbook could not be read: ") + why);
}

// One line of the child's stderr, at most 200 printable characters.
QString reasonLine(const QByteArray &err)
{
    QString line = QString::fromUtf8(err.left(err.indexOf('\n')).left(200));
    for (QChar &ch : line)
        if (!ch.isPrint())
            ch = u'?';
    return line.trimmed();
}

// Reads a decimal number up to the separator at `pos`, advancing past it; -1 when there is none.
qint64 number(const QByteArray &bytes, qsizetype &pos, char separator)
{
    qint64 value = 0;
    const qsizetype start = pos;
    while (pos < bytes.size() && bytes.at(pos) >= '0' && bytes.at(pos) <= '9' && pos - start < 10)
        value = value * 10 + (bytes.at(pos++) - '0');
    if (pos == start || pos >= bytes.size() || bytes.at(pos) != separator)
        return -1;
    ++pos;
    return value;
}

} // namespace

QString XlsWorkbook::readerProgram()
{
    if (!g_program.isEmpty())
        return g_program;
    const QString beside = AppPaths::applicationDir() + QStringLiteral("/quillet-xlsreader");
    if (QFileInfo(beside).isExecutable())
        return beside;
    return QStringLiteral(QUILLET_XLSREADER_BUILT);
}

void XlsWorkbook::setReader(const QString &program, int timeLimitMs)
{
    g_program = program;
    g_timeLimitMs = timeLimitMs;
}

void XlsWorkbook::parse(const QByteArray &bytes)
{
    // The reader reads from a path: the bytes go through a private temporary file.
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/Qlt-XXXXXX.xls"));
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush())
        throw Error(kErrPathFileAccess, QStringLiteral("XlsWorkbook"),
                    QStringLiteral("A temporary copy cannot be written: ") + file.errorString());

    const int limitMs = g_timeLimitMs > 0 ? g_timeLimitMs : kDefaultTimeLimitMs;
    QProcess child;
    child.setProgram(readerProgram());
    child.setArguments({file.fileName()});
    child.setStandardInputFile(QProcess::nullDevice());
    child.start(QIODevice::ReadOnly);
    if (!child.waitForStarted(limitMs))
        notRead(QStringLiteral("its reader ") + child.program() + QStringLiteral(" cannot be started (")
                + child.errorString() + QLatin1Char(')'));
    QElapsedTimer clock;
    clock.start();
    QByteArray printed;
    QByteArray err;
    auto stop = [&](const QString &why) {
        child.kill();
        child.waitForFinished(2000);
        notRead(why);
    };
    while (child.state() != QProcess::NotRunning) {
        const qint64 left = limitMs - clock.elapsed();
        if (left <= 0)
            stop(QStringLiteral("its reader did not finish within ") + QString::number((limitMs + 999) / 1000)
                 + QStringLiteral(" seconds (the file may be damaged)"));
        if (!child.waitForReadyRead(int(qMin<qint64>(left, 200))) && child.state() != QProcess::NotRunning)
            child.waitForFinished(int(qMin<qint64>(left, 200))); // output closed, or nothing yet
        printed += child.readAllStandardOutput();
        if (err.size() < 4096)
            err += child.readAllStandardError();
        if (printed.size() > qsizetype(xlsreader::kMaxOutput) + 4096)
            stop(QStringLiteral("its reader printed more than any workbook holds (the file may be damaged)"));
    }
    printed += child.readAllStandardOutput();
    err += child.readAllStandardError();
    if (child.exitStatus() == QProcess::NormalExit && child.exitCode() == xlsreader::kExitRefused) {
        const QString reason = reasonLine(err);
        malformed(reason.isEmpty() ? QStringLiteral("the file is damaged") : reason);
    }
    if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0)
        notRead(QStringLiteral("its reader stopped unexpectedly (the file may be damaged)"));
    readPrinted(printed);
}

void XlsWorkbook::readPrinted(const QByteArray &printed)
{
    const auto broken = [] { notRead(QStringLiteral("its reader gave output that cannot be understood")); };
    const qsizetype magic = qsizetype(std::strlen(xlsreader::kMagic));
    if (!printed.startsWith(xlsreader::kMagic) || !printed.endsWith(xlsreader::kEnd))
        broken();
    const qsizetype end = printed.size() - qsizetype(std::strlen(xlsreader::kEnd));
    qsizetype pos = magic;
    qint64 previous = 0;
    while (pos < end) {
        const qint64 row = number(printed, pos, ' ');
        const qint64 column = number(printed, pos, ' ');
        if (row < 1 || row > kMaxRows || column < 1 || column > kMaxColumns || row * 100 + column <= previous
            || pos + 2 > end)
            broken();
        previous = row * 100 + column;
        const char type = printed.at(pos);
        pos += 2;
        if (printed.at(pos - 1) != ' ')
            broken();
        const qint64 length = number(printed, pos, '\n');
        if (length < 0 || length >= end - pos || printed.at(pos + length) != '\n')
            broken();
        const QByteArray value = printed.mid(pos, length);
        pos += length + 1;
        if (type == 's') {
            store(int(row), int(column), QString::fromUtf8(value));
        } else if (type == 'n' && length == 16) {
            bool ok = false;
            const quint64 bits = value.toULongLong(&ok, 16);
            if (!ok)
                broken();
            double d;
            std::memcpy(&d, &bits, sizeof d);
            store(int(row), int(column), d);
        } else {
            broken();
        }
    }
}

QByteArray XlsWorkbook::rewrite(const QByteArray &original, const QMap<int, QMap<int, QString>> &) const
{
    return original; // never reached: written() refuses read-only formats
}

} // namespace quillet
