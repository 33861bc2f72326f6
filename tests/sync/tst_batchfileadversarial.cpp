#include "replayfixture.h"

#include <QFile>

using namespace quillet;
using namespace quillet::test;

// A batchfile comes from another machine. Whatever its operands say, nothing outside the Source
// Dir and the Target Dir is read, written, renamed or deleted: each form of escape, on every
// operand of every opcode, against a sentinel file beside the two folders.
class TestBatchfileAdversarial : public QObject
{
    Q_OBJECT

    // An operand that leads to `name` inside the folder "outside" beside Source and Target Dir
    // (the folder itself when name is empty), written in one of the escaping forms.
    static QString escape(const QString &form, const QString &root, const QString &name)
    {
        const QString tail = name.isEmpty() ? QString() : "\\" + name;
        if (form == "dotdot")
            return "..\\outside" + tail;
        if (form == "dotdot inside")
            return "Ann\\..\\..\\outside" + tail;
        if (form == "slash dotdot")
            return "../outside" + QString(tail).replace('\\', '/');
        if (form == "absolute")
            return root + "/outside" + QString(tail).replace('\\', '/');
        if (form == "backslash absolute")
            return QString(root + "/outside" + tail).replace('/', '\\');
        if (form == "drive letter")
            return "C:\\outside" + tail;
        if (form == "NUL")
            return QString("Ann") + QChar(0) + "\\..\\..\\outside" + tail;
        if (form == "symbolic link")
            return "link" + tail; // <base>/link -> outside
        return {};
    }

private Q_SLOTS:
    void escapeIsRefused_data()
    {
        QTest::addColumn<QStringList>("entry");   // opcode and operands; "@" marks the escaping one
        QTest::addColumn<QString>("outsideName"); // what the escaping operand names in "outside"
        QTest::addColumn<QString>("form");
        const QList<QPair<QStringList, QString>> entries{
            {{"CS", "@", "Ann\\IMG.jpg"}, "sentinel.jpg"},
            {{"CS", "IMG.jpg", "@"}, "sentinel.jpg"},
            {{"NS", "@", "NEW.jpg"}, "sentinel.jpg"},
            {{"NS", "IMG.jpg", "@"}, "sentinel.jpg"},
            {{"DS", "@"}, "sentinel.jpg"},
            {{"MS", "@"}, "sentinel.jpg"},
            {{"RSL", "@"}, "sentinel.jpg"},
            {{"RSR", "@"}, "sentinel.jpg"},
            {{"DTD", "@"}, ""},
            {{"DTF", "@"}, "sentinel.jpg"},
            {{"NTD", "@", "New"}, ""},
            {{"NTD", "Old", "@"}, "moved"},
        };
        for (const QString form : {"dotdot", "dotdot inside", "slash dotdot", "absolute", "backslash absolute",
                                   "drive letter", "NUL", "symbolic link"}) {
            for (const auto &[entry, outsideName] : entries)
                QTest::addRow("%s %d of %s", qPrintable(form), int(entry.indexOf("@")), qPrintable(entry.first()))
                    << entry << outsideName << form;
        }
    }
    void escapeIsRefused()
    {
        QFETCH(QStringList, entry);
        QFETCH(QString, outsideName);
        QFETCH(QString, form);
        ReplayFixture f;
        const QString root = f.env.root();
        TestJpeg jpeg;
        jpeg.size = QSize(64, 48);
        QVERIFY(writeTestJpeg(root + "/outside/sentinel.jpg", jpeg));
        const QByteArray sentinel = fileBytes(root + "/outside/sentinel.jpg");
        QVERIFY(QFile::link(root + "/outside", f.src("link")));
        QVERIFY(QFile::link(root + "/outside", f.tgt("link")));
        f.photo("IMG.jpg");
        QDir().mkpath(f.tgt("Old"));
        const QStringList skip{"home", "src", "tgt"};
        const auto before = snapshot(root, skip);
        const QString operand = escape(form, root, outsideName);
        const int at = int(entry.indexOf("@"));
        entry[at] = operand;
        f.batchfile(entry);
        f.process();

        QCOMPARE(f.results().size(), 1);
        QVERIFY2(f.results().first().startsWith("failed"), qPrintable(f.results().first()));
        QCOMPARE(fileBytes(root + "/outside/sentinel.jpg"), sentinel);
        QCOMPARE(snapshot(root, skip), before);
        QVERIFY(f.debugLog().contains("Refused operand \"" + QString(operand).replace(QChar(0), "\\x00") + "\""));
        QVERIFY(f.port.lastText().startsWith("There were errors during processing")); // listed as a failure
        QVERIFY(QFileInfo::exists(f.src("IMG.jpg")));
    }

    // Neither folder can itself be deleted or renamed through an entry.
    void theFoldersThemselvesCannotBeNamed_data()
    {
        QTest::addColumn<QStringList>("entry");
        QTest::newRow("DTD empty") << QStringList{"DTD", ""};
        QTest::newRow("DTD dot") << QStringList{"DTD", "."};
        QTest::newRow("DTD backslash") << QStringList{"DTD", "\\"};
        QTest::newRow("NTD dot") << QStringList{"NTD", ".", "Moved"};
        QTest::newRow("DS empty") << QStringList{"DS", ""};
    }
    void theFoldersThemselvesCannotBeNamed()
    {
        QFETCH(QStringList, entry);
        ReplayFixture f;
        f.photo("IMG.jpg");
        f.env.writeFile("tgt/Ann/IMG.jpg", "x");
        f.batchfile(entry);
        f.process();
        QVERIFY(f.results().first().startsWith("failed"));
        QVERIFY(QFileInfo::exists(f.tgt("Ann/IMG.jpg")));
        QVERIFY(QFileInfo::exists(f.src("IMG.jpg")));
    }
};

QTEST_GUILESS_MAIN(TestBatchfileAdversarial)
#include "tst_batchfileadversarial.moc"
