#include "support/windowtest.h"
#include "ui/frmlargepic.h"
#include "ui/workspacecontroller.h"
#include "uitest.h"

#include <QApplication>
#include <QMenuBar>

using namespace quillet;
using namespace quillet::test;

// The main window driven by the keys alone, each key sent to the widget that has the focus.
class TestKeyboard : public WindowTest
{
    Q_OBJECT

    frmMain *m_w = nullptr;

    void start(bool privacyMarker = false)
    {
        prepare({{12, "Anna", "Smith"}, {7, "Ben", "Jones"}, {5, "Anna", "Bell"}},
                {"IMG_0041.jpg", "IMG_0042.jpg", "IMG_0043.jpg", "IMG_0044.jpg"});
        WriteSetting(QStringLiteral("AutoReselPriv"), QStringLiteral("0"));
        if (privacyMarker) {
            FamilyDatabase db;
            QVERIFY(db.OpenDatabase());
            db.WriteParam(QStringLiteral("WebAllowPriv"), 1);
            db.WriteParam(QStringLiteral("PrivacyText"), QStringLiteral("Keep Private"));
        }
        m_w = new frmMain;
        m_w->show();
        QVERIFY(m_w->StartUp());
        QApplication::setActiveWindow(m_w);
        QVERIFY(QTest::qWaitForWindowActive(m_w));
        QCOMPARE(QApplication::focusWidget(), photos());
    }

    QListView *photos() const { return child<QListView>(m_w, "lvwSrcFiles"); }
    QListView *families() const { return child<QListView>(m_w, "lstFamilies"); }
    // Ticks a family straight in the list, past the keys.
    void tickFamily(int id) const { m_w->workspace().familyList().setSelected(m_w->workspace().familyList().positionOfId(id), true); }

    // One key to whatever has the focus, as the keyboard would send it.
    static void key(Qt::Key k, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        QTest::keyClick(focus, k, modifiers);
    }
    static void type(const QString &text)
    {
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        QTest::keyClicks(focus, text);
    }

    // The file name the viewer shows.
    QString shown() const
    {
        return QFileInfo(child<QLabel>(m_w, "lblSrcFileDets")->toolTip()).fileName();
    }
    QStringList selectedFamilies() const
    {
        QStringList out;
        for (int p : m_w->workspace().familyList().selectedPositions())
            out << m_w->workspace().familyList().at(p).text;
        return out;
    }

private Q_SLOTS:
    void cleanup()
    {
        delete m_w;
        m_w = nullptr;
        WindowTest::cleanup();
    }

    void firstKeyShowsTheFirstPhoto_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Down") << int(Qt::Key_Down);
        QTest::newRow("Space") << int(Qt::Key_Space);
        QTest::newRow("Home") << int(Qt::Key_Home);
    }
    void firstKeyShowsTheFirstPhoto()
    {
        QFETCH(int, key);
        start();
        QCOMPARE(shown(), QString()); // nothing on view before a key
        this->key(Qt::Key(key));
        QCOMPARE(shown(), QStringLiteral("IMG_0041.jpg"));
        QCOMPARE(m_w->workspace().sourceList().selectedPositions(), QList<int>{0});
    }

    void arrowsThenCtrlSSavesThePhotoOnView()
    {
        start();
        key(Qt::Key_Home);
        QCOMPARE(shown(), QStringLiteral("IMG_0041.jpg"));
        key(Qt::Key_Down);
        key(Qt::Key_Down);
        key(Qt::Key_Up);
        QCOMPARE(shown(), QStringLiteral("IMG_0042.jpg"));
        QCOMPARE(m_w->workspace().sourceList().selectedPositions(), QList<int>{1});
        QVERIFY(m_w->controls().cmdDelete->isEnabled()); // the commands follow the keys too
        tickFamily(7);
        key(Qt::Key_S, Qt::ControlModifier);
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0042(#7#).jpg"))));
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0041.jpg"))));
        QVERIFY(QFile::exists(tgt(QStringLiteral("Ben Jones/IMG_0042.jpg"))));
        // The next photo is on view, and the keys go on from it.
        QCOMPARE(shown(), QStringLiteral("IMG_0043.jpg"));
        key(Qt::Key_Down);
        QCOMPARE(shown(), QStringLiteral("IMG_0044.jpg"));
    }

    void spaceTicksOnlyTheCurrentFamily_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("ticked");
        QTest::newRow("first letters") << "Be" << QStringList{"Ben Jones"};
        QTest::newRow("a name with a blank") << "Anna Sm" << QStringList{"Anna Smith"};
        QTest::newRow("the privacy marker, current") << "" << QStringList{" (Keep Private)"};
    }
    void spaceTicksOnlyTheCurrentFamily()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, ticked);
        start(true);
        key(Qt::Key_Home);
        key(Qt::Key_F6);
        QCOMPARE(QApplication::focusWidget(), families());
        if (typed.isEmpty())
            key(Qt::Key_End); // the marker is the last entry
        else
            type(typed);
        QVERIFY(selectedFamilies().isEmpty()); // typing moves, it does not tick
        QTest::qWait(QApplication::keyboardInputInterval() + 50);
        key(Qt::Key_Space);
        QCOMPARE(selectedFamilies(), ticked);
        key(Qt::Key_Space);
        QVERIFY(selectedFamilies().isEmpty());
    }

    void everyFamilyCanBeReachedAndTicked()
    {
        start(true);
        key(Qt::Key_Home);
        key(Qt::Key_F6);
        key(Qt::Key_Home);
        const int count = m_w->workspace().familyList().count();
        for (int i = 0; i < count; ++i) {
            key(Qt::Key_Space);
            if (i + 1 < count)
                key(Qt::Key_Down);
        }
        QCOMPARE(m_w->workspace().familyList().selectedPositions().size(), count);
        QVERIFY(m_w->controls().cmdSave->isEnabled());
    }

    void threePhotosInARowFromTheKeyboard()
    {
        start();
        key(Qt::Key_Home);
        const QStringList names{"Anna Bell", "Ben Jones", "Anna Smith"};
        const QStringList expected{"IMG_0041(#5#).jpg", "IMG_0042(#7#).jpg", "IMG_0043(#12#).jpg"};
        for (int i = 0; i < 3; ++i) {
            // Move to the photo (it is the one after the saved one already), pick, save.
            QCOMPARE(shown(), QStringLiteral("IMG_004%1.jpg").arg(i + 1));
            key(Qt::Key_F6);
            type(names.at(i));
            QTest::qWait(QApplication::keyboardInputInterval() + 50);
            key(Qt::Key_Space);
            QCOMPARE(selectedFamilies(), QStringList{names.at(i)}); // nothing carried over
            key(Qt::Key_S, Qt::ControlModifier);
            QVERIFY2(QFile::exists(src(expected.at(i))), qPrintable(expected.at(i)));
            key(Qt::Key_F6);
            QCOMPARE(QApplication::focusWidget(), photos());
        }
        // The fourth goes to the same family as the third: repeat and save.
        QCOMPARE(shown(), QStringLiteral("IMG_0044.jpg"));
        key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0044(#12#).jpg"))));
        QCOMPARE(m_w->workspace().undos().UndoLevelMax(), 4);
        // Undo from the keyboard takes back the last one.
        key(Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0044.jpg"))));
        QVERIFY(QFile::exists(src(QStringLiteral("IMG_0043(#12#).jpg"))));
    }

    void rotateKeys()
    {
        start();
        key(Qt::Key_Down);
        key(Qt::Key_Down); // IMG_0042
        key(Qt::Key_R, Qt::ControlModifier);
        QCOMPARE(QImage(src(QStringLiteral("IMG_0042.jpg"))).size(), QSize(48, 64));
        QCOMPARE(QImage(src(QStringLiteral("IMG_0041.jpg"))).size(), QSize(64, 48));
        key(Qt::Key_L, Qt::ControlModifier);
        QCOMPARE(QImage(src(QStringLiteral("IMG_0042.jpg"))).size(), QSize(64, 48));
    }

    void returnOpensAndEscapeClosesTheLargePicture()
    {
        start();
        key(Qt::Key_Down);
        key(Qt::Key_Return);
        frmLargePic *large = m_w->controller().largePicture();
        QVERIFY(large);
        QVERIFY(large->isVisible());
        QCOMPARE(m_w->workspace().sourceList().selectedPositions().size(), 1);
        QApplication::setActiveWindow(large);
        large->setFocus();
        key(Qt::Key_Escape);
        QVERIFY(!large->isVisible());
    }

    void deleteKeyAndReviewKeys()
    {
        start();
        key(Qt::Key_Home);
        tickFamily(12);
        key(Qt::Key_S, Qt::ControlModifier);
        key(Qt::Key_Left, Qt::AltModifier); // review previous undo
        QVERIFY(m_w->workspace().reviewing());
        key(Qt::Key_Escape); // stop reviewing
        QVERIFY(!m_w->workspace().reviewing());
        key(Qt::Key_Home);
        tickFamily(7);
        m_port->answer(true);
        key(Qt::Key_Delete);
        QVERIFY(m_port->lastText().startsWith(QStringLiteral("Delete selected pictures")));
        QCOMPARE(m_w->workspace().sourceList().rowCount(), 2);
        // The families chosen for the deleted photo are not left for the next one.
        QVERIFY(selectedFamilies().isEmpty());
        QVERIFY(!m_w->controls().cmdSave->isEnabled());
    }

    void mnemonicsAndShortcutsAreUnambiguous()
    {
        frmMain w;
        QMap<QString, QStringList> owners;
        for (QPushButton *b : w.findChildren<QPushButton *>()) {
            const QKeySequence mnemonic = QKeySequence::mnemonic(b->text());
            if (!mnemonic.isEmpty())
                owners[mnemonic.toString()] << b->objectName();
        }
        for (QAction *menu : w.menuBar()->actions())
            owners[QKeySequence::mnemonic(menu->text()).toString()] << menu->text();
        for (QAction *a : w.findChildren<QAction *>()) {
            for (const QKeySequence &k : a->shortcuts())
                owners[k.toString()] << a->objectName();
        }
        for (auto it = owners.cbegin(); it != owners.cend(); ++it)
            QVERIFY2(it.key().isEmpty() || it.value().size() == 1, qPrintable(it.key() + ": " + it.value().join(", ")));
        QVERIFY(child<QPushButton>(w, "cmdSave")->toolTip().endsWith(QStringLiteral(" (Ctrl+S)")));
        QVERIFY(child<QPushButton>(w, "cmdReviewUndoNew")->toolTip().endsWith(QStringLiteral(" (Esc)")));
    }
};

QTEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
