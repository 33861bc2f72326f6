#include "familyeditor.h"

#include "app/familydatabase.h"
#include "app/jetsql.h"
#include "app/settingsstore.h"
#include "lib/debuglog.h"
#include "lib/error.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"
#include "lib/userprompt.h"
#include "sync/batchfilejournal.h"
#include "sync/foreignpath.h"

#include <QDate>
#include <QDir>

namespace quillet {

namespace {

const QString kValidNameChars = QStringLiteral(" -=!\u00a3$%^&()_+[]#{}~;'@,.`\u00ac");

const QString kListByParent = QStringLiteral(" ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[Parent]) & [LastName]");
const QString kListByName = QStringLiteral(" ORDER BY IIf([FirstName] LIKE '(%','zzz'&[FirstName],[FirstName]) & [LastName]");

QString text(const QSqlRecord &row, const char *field)
{
    return row.value(QLatin1String(field)).toString();
}

// Yes/no columns: any value other than 0 is yes (other tools write 1, the program -1).
bool flag(const QSqlRecord &row, const char *field)
{
    return row.value(QLatin1String(field)).toInt() != 0;
}

QString folderOf(const QSqlRecord &row)
{
    const QVariant last = row.value(QStringLiteral("LastName"));
    return last.isNull() ? text(row, "FirstName") : text(row, "FirstName") + QLatin1Char(' ') + last.toString();
}

// A date as people type it: ISO first (as the editor shows it), then day-first as in the office.
QDate parseDate(const QString &typed)
{
    for (const char *format : {"yyyy-MM-dd", "d/M/yyyy", "d.M.yyyy", "d-M-yyyy"}) {
        const QDate d = QDate::fromString(typed.trimmed(), QLatin1String(format));
        if (d.isValid())
            return d;
    }
    const QDate shortYear = QDate::fromString(typed.trimmed(), QStringLiteral("d/M/yy"));
    return shortYear.isValid() ? shortYear.addYears(100) : QDate();
}

QString shownDate(const QVariant &stored)
{
    return stored.isNull() ? QString() : stored.toString().left(10);
}

QVariant nullIfEmpty(const QString &s)
{
    return s.trimmed().isEmpty() ? QVariant() : QVariant(s.trimmed());
}

bool journalling()
{
    return ReadSetting(QStringLiteral("CreateBatchs")) == QLatin1String("1");
}

// The folder of a family under the Target Dir, or empty when there is none to act on: the Target
// Dir is missing (an unplugged disk) or the name would reach outside it (a name written into the
// database by another tool).
QString familyFolder(const QString &tgtDir, const QString &folderName)
{
    const ForeignPath p = ForeignPath::resolve(tgtDir, folderName);
    if (!p.ok()) {
        DebugLog(QStringLiteral("Family folder not used: ") + folderName + QStringLiteral(" (") + p.refusal()
                 + QLatin1Char(')'));
        return QString();
    }
    return p.path();
}

} // namespace

FamilyEditor::FamilyEditor(FamilyDatabase &db, QObject *parent)
    : QObject(parent)
    , m_db(db)
{
}

bool FamilyEditor::IsValidNameChar(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= u'A' && u <= u'Z') || (u >= u'a' && u <= u'z') || (u >= u'0' && u <= u'9')
        || kValidNameChars.contains(c);
}

FamilyEditor::KeyVerdict FamilyEditor::FirstNameKey(int key, Qt::KeyboardModifiers modifiers, const QString &typed)
{
    const bool ctrl = modifiers & Qt::ControlModifier;
    const bool alt = modifiers & Qt::AltModifier;
    if ((ctrl && key == Qt::Key_C) || key == Qt::Key_Escape)
        return {true, false};
    if (ctrl && (key == Qt::Key_V || key == Qt::Key_X))
        return {true, true};
    if (key == Qt::Key_Backspace)
        return {true, false}; // the edit itself marks the record
    // Keys that type nothing (arrows, Tab, Home, Delete) move or edit; they are not characters.
    const bool types = typed.size() == 1 && typed.at(0).isPrint();
    if (!types && !ctrl && !alt)
        return {true, false};
    if (types && !ctrl && !alt && IsValidNameChar(typed.at(0)))
        return {true, true};
    return {false, false};
}

QString FamilyEditor::CountsText(const QStringList &entryTexts)
{
    int families = 0;
    int children = 0;
    for (const QString &t : entryTexts) {
        if (t.startsWith(QLatin1Char('(')))
            continue;
        ++families;
        children += 1 + int(t.count(QStringLiteral(" & "))) + int(t.count(QStringLiteral(" and ")));
    }
    if (families == 0)
        return QString();
    return QString::number(families) + QStringLiteral(" families, ") + QString::number(children)
        + QStringLiteral(" children");
}

QString FamilyEditor::CopyListText(const QStringList &entryTexts, bool showParent)
{
    QString out;
    for (const QString &t : entryTexts) {
        if (t.startsWith(QLatin1Char('(')))
            continue;
        const qsizetype split = showParent ? t.indexOf(QStringLiteral(" - ")) : -1;
        out += split < 0 ? t : t.left(split) + QLatin1Char('\t') + t.mid(split + 3);
        out += QStringLiteral("\r\n");
    }
    return out;
}

void FamilyEditor::LoadList(bool currentOnly, bool showParent)
{
    QString sql = QStringLiteral("SELECT * FROM tblFamilies");
    if (currentOnly)
        sql += QStringLiteral(" WHERE [Current]=True");
    sql += showParent ? kListByParent : kListByName;
    m_rows = m_db.select(sql);
    m_entries.clear();
    for (const QSqlRecord &r : m_rows) {
        const int id = r.value(QStringLiteral("FamilyID")).toInt();
        QString entry = folderOf(r);
        if (showParent && !text(r, "FirstName").startsWith(QLatin1Char('(')))
            entry = text(r, "Parent") + QStringLiteral(" - ") + entry;
        m_entries.append({QStringLiteral("K") + QString::number(id), entry, id});
    }
}

QStringList FamilyEditor::entryTexts() const
{
    QStringList out;
    for (const Entry &e : m_entries)
        out << e.text;
    return out;
}

FamilyFields FamilyEditor::Fields(int familyId) const
{
    FamilyFields f;
    for (const QSqlRecord &r : m_rows) {
        if (r.value(QStringLiteral("FamilyID")).toInt() != familyId)
            continue;
        f.familyId = familyId;
        f.firstName = text(r, "FirstName");
        f.lastName = text(r, "LastName");
        f.parent = text(r, "Parent");
        f.current = flag(r, "Current");
        f.noUploadToWeb = flag(r, "NoUploadToWeb");
        f.noCopyToCd = flag(r, "NoCopyToCd");
        for (size_t i = 0; i < f.days.size(); ++i)
            f.days[i] = flag(r, FamilyFields::kDayColumns[i]);
        f.daysOverride = flag(r, "FamDaysOverride");
        f.startDate = shownDate(r.value(QStringLiteral("StartDate")));
        f.endDate = shownDate(r.value(QStringLiteral("EndDate")));
        break;
    }
    return f;
}

bool FamilyEditor::Validate(const FamilyFields &entered) const
{
    if (entered.firstName.trimmed().isEmpty()) {
        lib_MsgWarning(QStringLiteral("Must have a First Name"));
        return false;
    }
    for (const QChar c : QString(entered.firstName + entered.lastName)) {
        if (!IsValidNameChar(c)) {
            lib_MsgWarning(QStringLiteral("'") + c
                           + QStringLiteral("' is not a valid character (as names are used to create file dir)"));
            return false;
        }
    }
    // Dots alone name the folder itself or its parent, never a family's own folder.
    if (entered.folderName().trimmed().count(QLatin1Char('.')) == entered.folderName().trimmed().size()) {
        lib_MsgWarning(QStringLiteral("'") + entered.folderName().trimmed()
                       + QStringLiteral("' can not be used as a name (as names are used to create file dir)"));
        return false;
    }
    for (const QString &date : QStringList{entered.startDate, entered.endDate}) {
        if (!date.trimmed().isEmpty() && !parseDate(date).isValid()) {
            lib_MsgWarning(QStringLiteral("'") + date
                           + QStringLiteral("' is not a date. Type dates as year-month-day, for example 2016-03-15"));
            return false;
        }
    }
    return true;
}

QSqlRecord FamilyEditor::storedRow(int familyId) const
{
    const auto rows = m_db.select(QStringLiteral("SELECT * FROM tblFamilies WHERE FamilyID=") + QString::number(familyId));
    return rows.isEmpty() ? QSqlRecord() : rows.first();
}

QList<QSqlRecord> FamilyEditor::sameNames(const FamilyFields &entered) const
{
    // Names are bound, never written into the statement: O'Brien is data.
    QString sql = QStringLiteral("SELECT * FROM tblFamilies WHERE ([FirstName]=?)");
    QVariantList values{entered.firstName.trimmed()};
    const QVariant last = nullIfEmpty(entered.lastName);
    if (last.isNull()) {
        sql += QStringLiteral(" AND ([LastName] Is Null)");
    } else {
        sql += QStringLiteral(" AND ([LastName]=?)");
        values << last;
    }
    if (entered.familyId > 0) {
        sql += QStringLiteral(" AND ([FamilyID]<>?)");
        values << entered.familyId;
    }
    return m_db.select(sql, values);
}

void FamilyEditor::renameFolder(const QString &tgtDir, const QString &oldName, const QString &newName) const
{
    const QString from = familyFolder(tgtDir, oldName);
    const QString to = familyFolder(tgtDir, newName);
    if (!from.isEmpty() && !to.isEmpty() && lib_DirExists(from) && !QDir().rename(from, to))
        throw Error(kErrPathFileAccess, QStringLiteral("FamilyEditor"),
                    QStringLiteral("Could not rename the family folder ") + from + QStringLiteral(" to ") + to
                        + QStringLiteral(" (a folder of that name may exist already)"));
    if (journalling()) {
        BatchfileWriter journal;
        journal.entry(Batchfile::kRenameTargetDir, {oldName, newName});
    }
}

bool FamilyEditor::retireDuplicates(const QList<QSqlRecord> &duplicates, const QString &tgtDir)
{
    const auto suffix = [](const QSqlRecord &r) {
        const QVariant end = r.value(QStringLiteral("EndDate"));
        const QDate date = end.isNull() ? QDate() : QDate::fromString(end.toString().left(10), Qt::ISODate);
        return QString(QStringLiteral("(ex ") + (date.isValid() ? date.toString(QStringLiteral("yyMMdd")) : QString())
                       + QLatin1Char(')'));
    };
    if (!lib_MsgYesNo(QStringLiteral("There is already a family with that first name/last name (listed as "
                                     "non-current).  Do you wish to continue with this name in which case the "
                                     "existing one will be renamed as ")
                      + folderOf(duplicates.first()) + QLatin1Char(' ') + suffix(duplicates.first())
                      + QLatin1Char('.')))
        return false;
    for (const QSqlRecord &r : duplicates) {
        const QVariant last = r.value(QStringLiteral("LastName"));
        // Without a last name the suffix becomes the last name, so the folder reads "Jack (ex 160315)".
        const QString newLast = last.isNull() ? suffix(r) : QString(last.toString() + QLatin1Char(' ') + suffix(r));
        const QString oldFolder = folderOf(r);
        const QString newFolder = text(r, "FirstName") + QLatin1Char(' ') + newLast;
        renameFolder(tgtDir, oldFolder, newFolder);
        m_db.exec(QStringLiteral("UPDATE tblFamilies SET [LastName]=? WHERE FamilyID=?"),
                  {newLast, r.value(QStringLiteral("FamilyID"))});
    }
    return true;
}

void FamilyEditor::storeRow(int familyId, const FamilyFields &entered) const
{
    QStringList columns{QStringLiteral("FirstName"), QStringLiteral("LastName"), QStringLiteral("Parent"),
                        QStringLiteral("Current"), QStringLiteral("NoUploadToWeb"), QStringLiteral("NoCopyToCd"),
                        QStringLiteral("FamDaysOverride")};
    QVariantList values{entered.firstName.trimmed(), nullIfEmpty(entered.lastName), nullIfEmpty(entered.parent),
                        entered.current, entered.noUploadToWeb, entered.noCopyToCd, entered.daysOverride};
    for (size_t i = 0; i < entered.days.size(); ++i) {
        columns << QLatin1String(FamilyFields::kDayColumns[i]);
        values << entered.days[i];
    }
    // A current family runs from its start date (today when none is given) and has no end; a
    // retired one ends on its end date (today when none is given) and keeps its start.
    const QString &typed = entered.current ? entered.startDate : entered.endDate;
    const QDate date = typed.trimmed().isEmpty() ? QDate::currentDate() : parseDate(typed);
    columns << (entered.current ? QStringLiteral("StartDate") : QStringLiteral("EndDate"));
    values << date;
    if (entered.current) {
        columns << QStringLiteral("EndDate");
        values << QVariant();
    }
    QStringList assignments;
    for (const QString &c : columns)
        assignments << QLatin1Char('[') + c + QStringLiteral("]=?");
    values << familyId;
    m_db.exec(QStringLiteral("UPDATE tblFamilies SET ") + assignments.join(QLatin1Char(',')) + QStringLiteral(" WHERE FamilyID=?"),
              values);
}

int FamilyEditor::Save(const FamilyFields &entered)
{
    if (!Validate(entered))
        return 0;
    const QString tgtDir = ReadSetting(QStringLiteral("TgtDir"));
    const QList<QSqlRecord> duplicates = sameNames(entered);
    for (const QSqlRecord &r : duplicates) {
        if (flag(r, "Current")) {
            lib_MsgWarning(QStringLiteral("Sorry, there is already a current family with that first name/last name"));
            return 0;
        }
    }
    if (!duplicates.isEmpty() && !retireDuplicates(duplicates, tgtDir))
        return 0;

    FamilyFields fields = entered;
    fields.firstName = fields.firstName.trimmed();
    fields.lastName = fields.lastName.trimmed();
    int id = entered.familyId;
    if (id > 0) {
        const QSqlRecord stored = storedRow(id);
        if (stored.isEmpty())
            throw Error(kObjectErrorBase + 1, QStringLiteral("FamilyEditor"),
                        QStringLiteral("The family ") + QString::number(id) + QStringLiteral(" is no longer in the database"));
        const QString oldFolder = folderOf(stored);
        if (oldFolder != fields.folderName())
            renameFolder(tgtDir, oldFolder, fields.folderName());
    } else {
        id = int(m_db.insert(QStringLiteral("INSERT INTO tblFamilies ([FirstName]) VALUES (?)"), {fields.firstName}));
    }
    storeRow(id, fields);
    afterChange();
    if (fields.firstName.startsWith(QLatin1Char('(')))
        lib_MsgInfo(QStringLiteral("Note: first names starting with ( are treated in a number of sprecial ways eg. sorted last."));
    return id;
}

bool FamilyEditor::Delete(int familyId, const QString &entryText)
{
    const QSqlRecord stored = storedRow(familyId);
    if (stored.isEmpty())
        return false;
    const QString answer = prompt().typedText(QStringLiteral("Delete ") + entryText
                                                  + QStringLiteral(" and all their photos.\r\nType YES to confirm"),
                                              QString());
    if (answer.toUpper() != QLatin1String("YES"))
        return false;
    // The folder of the names as stored, not as they may have been edited since: an edited name
    // could be another family's folder.
    const QString folderName = folderOf(stored);
    const QString folder = familyFolder(ReadSetting(QStringLiteral("TgtDir")), folderName);
    if (!folder.isEmpty() && !lib_DeleteDir(folder, false)) {
        lib_MsgWarning(QStringLiteral("The folder ") + folder
                       + QStringLiteral(" could not be deleted, so the family has been kept. Close any program that "
                                        "uses the folder and try again."));
        return false;
    }
    if (journalling()) {
        BatchfileWriter journal;
        journal.entry(Batchfile::kDeleteTargetDir, {folderName});
    }
    m_db.exec(QStringLiteral("DELETE FROM tblFamilies WHERE FamilyID=?"), {familyId});
    afterChange();
    return true;
}

void FamilyEditor::afterChange()
{
    // The database counts as changed for the transfer to other PCs, and the Source Dir's list of
    // IDs follows at once.
    m_db.TouchLastDBUpdate();
    Q_EMIT familiesChanged();
    // The family is saved whatever becomes of the list: a Source Dir that cannot be written is
    // reported, and the editor goes on with the saved family.
    try {
        m_db.WriteFamilyIDsCsv();
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("WriteFamilyIDsCsv"), e);
    }
}

bool FamilyEditor::CheckLastNameChange(int familyId, const QString &enteredLastName) const
{
    if (familyId <= 0)
        return false;
    const QSqlRecord stored = storedRow(familyId);
    const QVariant last = stored.value(QStringLiteral("LastName"));
    if (stored.isEmpty() || last.isNull() || last.toString() == enteredLastName)
        return false;
    lib_MsgWarning(QStringLiteral("Warning: if you are trying to add a NEW family, do not simply rename an old one. "
                                  "Start a new entry instead."));
    return true;
}

void FamilyEditor::CopyList(bool showParent) const
{
    prompt().setClipboardText(CopyListText(entryTexts(), showParent));
}

void FamilyEditor::setDirty(bool dirty)
{
    if (m_dirty == dirty)
        return;
    m_dirty = dirty;
    Q_EMIT dirtyChanged(dirty);
}

} // namespace quillet
