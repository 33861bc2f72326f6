#pragma once

#include "familyfields.h"

#include <QList>
#include <QObject>
#include <QSqlRecord>
#include <QString>
#include <QVariant>

namespace quillet {

class FamilyDatabase;

// The rules of the family editor: the list of families with its two orders and its counts, the
// validation of what was typed, saving (with the rename of a retired family of the same name and
// of the family's folder under the Target Dir, journalled for the other PCs), deleting, the key
// filter of the first name and the family list for the clipboard. The window only shows the
// entries and fields and calls these. Questions and messages go through the user-prompt port.
// Database and file failures throw Error; the window reports them at its command boundary.
class FamilyEditor : public QObject
{
    Q_OBJECT
public:
    struct Entry
    {
        QString key; // "K" + FamilyID
        QString text;
        int familyId = 0;
    };

    // What the first-name field does with a key: let it through, and mark the record edited.
    struct KeyVerdict
    {
        bool pass = false;
        bool dirty = false;
    };

    explicit FamilyEditor(FamilyDatabase &db, QObject *parent = nullptr);

    // The characters a name may hold: they become folder names on every PC.
    static bool IsValidNameChar(QChar c);
    // The key filter of the first name. `text` is what the key types (empty for keys that type
    // nothing, such as the arrows, which always pass).
    static KeyVerdict FirstNameKey(int key, Qt::KeyboardModifiers modifiers, const QString &text);
    // "n families, m children" over the entries not beginning with "("; empty without families.
    static QString CountsText(const QStringList &entryTexts);
    // The list as text: one line per entry not beginning with "(", ended by CR LF; with showParent
    // the parent and the family are split by a tab.
    static QString CopyListText(const QStringList &entryTexts, bool showParent);

    // Reads the families again, current ones only or all, in parent or name order.
    void LoadList(bool currentOnly, bool showParent);
    const QList<Entry> &entries() const { return m_entries; }
    QStringList entryTexts() const;
    // The fields of a listed family; a default (new) record when it is not listed.
    FamilyFields Fields(int familyId) const;

    // Checks the names; shows the message and returns false at the first fault.
    bool Validate(const FamilyFields &entered) const;
    // Saves the entered family (see the class comment). Returns its FamilyID, or 0 when the save
    // was stopped (invalid, a current family of that name, the user said No) and nothing changed.
    int Save(const FamilyFields &entered);
    // Asks for the typed "YES", then deletes the family's folder with its photos and its row.
    // False when the user did not confirm.
    bool Delete(int familyId, const QString &entryText);
    // Leaving the last name of an existing family: warns when its stored last name is not empty
    // and differs from the entered one. True when it warned.
    bool CheckLastNameChange(int familyId, const QString &enteredLastName) const;
    // Puts the family list on the clipboard.
    void CopyList(bool showParent) const;

    // The record shown has edits not yet saved. Setting the present value changes nothing.
    bool isDirty() const { return m_dirty; }
    void setDirty(bool dirty);

Q_SIGNALS:
    void dirtyChanged(bool dirty);
    // A family was added, changed or deleted: lists built from tblFamilies are stale.
    void familiesChanged();

private:
    QSqlRecord storedRow(int familyId) const;
    QList<QSqlRecord> sameNames(const FamilyFields &entered) const;
    bool retireDuplicates(const QList<QSqlRecord> &duplicates, const QString &tgtDir);
    void renameFolder(const QString &tgtDir, const QString &oldName, const QString &newName) const;
    void storeRow(int familyId, const FamilyFields &entered) const;
    void afterChange();

    FamilyDatabase &m_db;
    QList<QSqlRecord> m_rows;
    QList<Entry> m_entries;
    bool m_dirty = false;
};

} // namespace quillet
