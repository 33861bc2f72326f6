#pragma once

#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "support/hometest.h"
#include "ui/frmmain.h"

#include <QImage>
#include <QPushButton>
#include <QTest>

#include <initializer_list>

namespace quillet::test {

// The base of the tests that drive the real main window (header only: they link the windows).
class WindowTest : public HomeTest
{
protected:
    struct Family
    {
        int id;
        const char *first;
        const char *last;
    };

    QString src(const QString &name) const { return m_env->path(QStringLiteral("src/") + name); }
    QString tgt(const QString &name) const { return m_env->path(QStringLiteral("tgt/") + name); }

    // An installation the window starts on quietly (no thumbnails, no automatic family filter, no
    // association of sub-folders), with these current families and these small photos in the
    // Source Dir.
    void prepare(std::initializer_list<Family> families, std::initializer_list<const char *> photos)
    {
        QVERIFY(m_env->makeInstallation());
        for (const char *key : {"Thumbnails", "AutoFilterFams", "AssnSubToTgt", "AssnSrcSubToTgt"})
            WriteSetting(QLatin1String(key), QStringLiteral("0"));
        FamilyDatabase db;
        QVERIFY(db.OpenDatabase());
        for (const Family &f : families)
            db.exec(QStringLiteral("INSERT INTO tblFamilies (FamilyID, FirstName, LastName, [Current]) VALUES (?,?,?,True)"),
                    {f.id, QLatin1String(f.first), QLatin1String(f.last)});
        db.CloseDatabase();
        for (const char *name : photos) {
            QImage image(64, 48, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            QVERIFY(image.save(src(QLatin1String(name)), "JPG"));
        }
    }

    // Selects the photo of this name (none for an empty name) and these families, as clicks would.
    static void select(frmMain &w, const QString &photo, const QList<int> &families)
    {
        SourceListModel &list = w.workspace().sourceList();
        list.clearSelection();
        for (int i = 0; i < list.rowCount(); ++i) {
            if (list.at(i).text == photo)
                list.setSelected(i, true);
        }
        FamilyListModel &fams = w.workspace().familyList();
        fams.clearSelection();
        for (int id : families)
            fams.setSelected(fams.positionOfId(id), true);
    }

    static QPushButton *button(QWidget &w, const char *name) { return w.findChild<QPushButton *>(QLatin1String(name)); }
};

} // namespace quillet::test
