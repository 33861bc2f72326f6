#pragma once

// An installation for the web and CD preparation: a real family database with families of
// every kind of wish, a Source Dir with real JPEGs whose modified times are set, and the two
// preparation folders. The date window of both variants is 1 March 2024, 08:00:00 to 17:00:00.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/fileutils.h"
#include "lib/texthelpers.h"
#include "publish/publishnames.h"
#include "publish/publishrun.h"
#include "support/scriptedprompt.h"
#include "support/testenv.h"
#include "support/testjpeg.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QTest>

namespace quillet::test {

// The names the two variants are told apart by, written out here as users see them.
struct Variant
{
    const PublishNames &names;
    QString tgtKey, inclFamKey, minKey, maxKey, allowParam, copyParam;
};

inline Variant webVariant()
{
    return {PublishNames::web(), "WebTgtDir", "WebTgtInclFam", "WebMinDate", "WebMaxDate", "WebAllowPriv", "WebCopyPriv"};
}
inline Variant cdVariant()
{
    return {PublishNames::cd(), "CdTgtDir", "CdTgtInclFam", "CdMinDate", "CdMaxDate", "CdAllowPriv", "CdCopyPriv"};
}

inline const QDateTime kWindowStart(QDate(2024, 3, 1), QTime(8, 0));
inline const QDateTime kWindowEnd(QDate(2024, 3, 1), QTime(17, 0));
inline const QDateTime kInside(QDate(2024, 3, 1), QTime(10, 30));

struct PublishFixture
{
    TestEnv env;
    ScriptedPrompt port;
    FamilyDatabase db;

    PublishFixture()
    {
        env.dataDir();
        FamilyDatabase::Provision(FamilyDatabase::DbPath());
        db.OpenDatabase();
        QDir().mkpath(src());
        WriteSetting(QStringLiteral("SrcDir"), src());
        for (const Variant &v : {webVariant(), cdVariant()}) {
            WriteSetting(v.tgtKey, prep(v));
            QDir().mkpath(prep(v));
            WriteSetting(v.inclFamKey, false);
            WriteSetting(v.minKey, QStringLiteral("20240301 080000"));
            WriteSetting(v.maxKey, QStringLiteral("20240301 170000"));
        }
        db.WriteParam(QStringLiteral("PrivacyText"), QStringLiteral("Keep Private"));
        // 9 asked for no web, 5 for no CD; 7 has no last name.
        family(12, "Ann", "Lee");
        family(7, "Bob", QVariant());
        family(3, "Cat", "Fox");
        family(9, "Cy", "Dee", true, false);
        family(5, "Di", "Eve", false, true);
    }

    void family(int id, const QString &first, const QVariant &last, bool noWeb = false, bool noCd = false) const
    {
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current], NoUploadToWeb, "
                               "NoCopyToCd) VALUES (?,?,?,?,?,?)"),
                {id, first, last, true, noWeb, noCd});
    }

    QString src(const QString &name = QString()) const
    {
        return env.path(QStringLiteral("src")) + (name.isEmpty() ? QString() : QLatin1Char('/') + name);
    }
    QString prep(const Variant &v) const
    {
        return env.path(v.tgtKey == QLatin1String("WebTgtDir") ? QStringLiteral("web") : QStringLiteral("cd"));
    }

    // A real JPEG in the Source Dir with its modified time; returns its bytes.
    QByteArray photo(const QString &name, const QDateTime &modified) const
    {
        TestJpeg want;
        want.size = QSize(64, 48);
        want.seed = int(qHash(name) % 1000);
        const QByteArray bytes = makeTestJpeg(want);
        env.writeFile(QStringLiteral("src/") + name, bytes);
        lib_SetFileDate(src(name), QLatin1Char('M'), modified);
        return bytes;
    }

    void privacy(const Variant &v, bool allow, bool copy)
    {
        db.WriteParam(v.allowParam, allow ? 1 : 0);
        db.WriteParam(v.copyParam, copy ? 1 : 0);
    }

    // Runs the command, answering Yes to the confirmation and `moveOn` to the final question.
    void run(const Variant &v, bool moveOn = false)
    {
        port.answer(true);
        port.answer(moveOn);
        PublishRun(v.names, db, [this](const QString &t) { status << t; }).run();
    }

    // Every file under a folder, relative to it, sorted.
    static QStringList filesUnder(const QString &dir)
    {
        QStringList out;
        QDirIterator it(dir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            out << QDir(dir).relativeFilePath(it.next());
        out.sort();
        return out;
    }

    // The reports in the data folder, oldest first.
    QStringList reports() const
    {
        QStringList out;
        for (const QString &name : QDir(AppPaths::dataDir()).entryList({"*.csv"}, QDir::Files, QDir::Name))
            out << AppPaths::dataFile(name);
        return out;
    }

    // The rows of a report, each split into its fields.
    static QList<QStringList> rows(const QString &report)
    {
        QFile f(report);
        if (!f.open(QIODevice::ReadOnly))
            return {};
        QByteArray bytes = f.readAll();
        if (bytes.startsWith("\xEF\xBB\xBF"))
            bytes.remove(0, 3);
        QList<QStringList> out;
        for (const QString &line : QString::fromUtf8(bytes).split(QStringLiteral("\r\n")))
            out << lib_GetLineParts3(line, QLatin1Char(','));
        return out;
    }

    // The report's row for a file (path relative to the Source Dir), empty when there is none.
    static QStringList rowOf(const QString &report, const QString &path)
    {
        for (const QStringList &row : rows(report)) {
            if (row.size() >= 7 && row.first() == path)
                return row;
        }
        return {};
    }

    static QString sha256(const QByteArray &bytes)
    {
        return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    }

    QStringList status;
};

} // namespace quillet::test
