// Builds a throwaway Quillet installation for trying the program out: a data folder with families
// and their attendance days, a Source Dir of generated photos taken across two weekdays' morning
// and afternoon sessions, and settings pointing at them. Usage: quillet-demodata <folder>
// The caller points XDG_DATA_HOME at <folder>/data before starting Quillet.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/fileutils.h"
#include "support/testjpeg.h"

#include <QGuiApplication>
#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <cstdio>

using namespace quillet;

namespace {

struct DemoFamily
{
    const char *first;
    const char *last;
    const char *parent;
    const char *days; // attended sessions, e.g. "Mam Mpm Tam"
};

const DemoFamily kFamilies[] = {
    {"Amelia", "Hart", "Sarah Hart", "Mam Mpm Tam Tpm Wam"},
    {"Ben", "Okafor", "Grace Okafor", "Mam Tam Wam THam Fam"},
    {"Chloé", "Durand", "Luc Durand", "Mpm Tpm Wpm"},
    {"Daniel", "Kowalski", "Anna Kowalski", "Mam Mpm"},
    {"Ella", "Nguyen", "Minh Nguyen", "Tam Tpm THam THpm"},
    {"Finn", "O'Brien", "Siobhan O'Brien", "Mam Tam Wam"},
    {"Grace", "Patel", "Ravi Patel", "Mpm Tpm Fpm"},
    {"Hugo", nullptr, "Marta Silva", "Mam Mpm Tam Tpm"},
    {"(Staff)", nullptr, nullptr, ""},
};

void photo(const QString &path, const QDateTime &taken, int seed)
{
    QRandomGenerator rng(seed);
    QImage image(1600, 1200, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(rng.bounded(360), 90, 230));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < 14; ++i) {
        p.setBrush(QColor::fromHsv(rng.bounded(360), 160, 200));
        p.setPen(Qt::NoPen);
        const int r = 60 + rng.bounded(220);
        p.drawEllipse(QPoint(rng.bounded(1600), rng.bounded(1200)), r, r);
    }
    p.setPen(Qt::black);
    QFont font = p.font();
    font.setPixelSize(90);
    p.setFont(font);
    p.drawText(image.rect(), Qt::AlignCenter, taken.toString(QStringLiteral("ddd d MMM\nhh:mm")));
    p.end();
    // A camera writes the moment of capture into the EXIF block as well as the file's date.
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 85);
    const QByteArray exif = test::exifSegment(taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")), true, QByteArray());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(test::insertAfterSoi(jpeg, exif));
    file.close();
    lib_SetFileDate(path, QLatin1Char('M'), taken);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen"); // drawing the photos needs fonts, not a screen
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: quillet-demodata <folder>\n");
        return 2;
    }
    const QString root = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    qputenv("XDG_DATA_HOME", (root + QStringLiteral("/data")).toUtf8());
    const QString src = root + QStringLiteral("/Photos");
    const QString tgt = root + QStringLiteral("/Families");
    QDir().mkpath(src + QStringLiteral("/Outing"));
    QDir().mkpath(tgt);
    QDir().mkpath(AppPaths::dataDir());

    if (!FamilyDatabase::Provision(FamilyDatabase::DbPath())) {
        std::fprintf(stderr, "could not create %s\n", qPrintable(FamilyDatabase::DbPath()));
        return 1;
    }
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return 1;
    int id = 1;
    for (const DemoFamily &f : kFamilies) {
        db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, Parent, [Current]) VALUES (?,?,?,?,True)"),
                {id, QString::fromUtf8(f.first), f.last ? QVariant(QString::fromUtf8(f.last)) : QVariant(),
                 f.parent ? QVariant(QString::fromUtf8(f.parent)) : QVariant()});
        for (const QString &day : QString::fromLatin1(f.days).split(QLatin1Char(' '), Qt::SkipEmptyParts))
            db.exec(QStringLiteral("UPDATE tblFamilies SET [FamDays") + day + QStringLiteral("]=True WHERE FamilyID=?"), {id});
        ++id;
    }
    db.WriteParam(QStringLiteral("PrivacyText"), QStringLiteral("Keep Private"));
    db.WriteParam(QStringLiteral("WebAllowPriv"), 1);
    db.WriteParam(QStringLiteral("MorningSessEnd"), QTime(12, 30));
    db.WriteParam(QStringLiteral("AfternoonSessEnd"), QTime(15, 30));

    // Last Monday and Tuesday: photos through both sessions of each day.
    QDate monday = QDate::currentDate().addDays(-7);
    while (monday.dayOfWeek() != 1)
        monday = monday.addDays(-1);
    int n = 0;
    for (int day = 0; day < 2; ++day) {
        for (const QTime &start : {QTime(9, 5), QTime(13, 40)}) {
            for (int k = 0; k < 9; ++k) {
                const QDateTime taken(monday.addDays(day), start.addSecs(k * 11 * 60));
                const QString folder = (n % 5 == 4) ? src + QStringLiteral("/Outing") : src;
                photo(folder + QStringLiteral("/IMG_%1.jpg").arg(4100 + n, 4, 10, QLatin1Char('0')), taken, n);
                ++n;
            }
        }
    }
    WriteSetting(QStringLiteral("SrcDir"), src);
    WriteSetting(QStringLiteral("TgtDir"), tgt);
    WriteSetting(QStringLiteral("PCname"), QStringLiteral("Demo"));
    InitialiseMissingSettings();
    std::printf("Demo installation in %s: %d photos, %d families\n", qPrintable(root), n, id - 1);
    return 0;
}
