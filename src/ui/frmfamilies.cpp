#include "frmfamilies.h"
#include "widgetnames.h"

#include "app/settingsstore.h"
#include "lib/error.h"
#include "lib/errorhandler.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

namespace {

constexpr int kIdRole = Qt::UserRole;
constexpr int kKeyRole = Qt::UserRole + 1;

} // namespace

frmFamilies::frmFamilies(FamilyDatabase &db, QWidget *parent)
    : QDialog(parent)
    , m_editor(db, this)
{
    setObjectName(QStringLiteral("frmFamilies"));
    setWindowTitle(QStringLiteral("Families"));
    auto *columns = new QHBoxLayout;
    columns->addWidget(buildList(), 2);
    columns->addWidget(buildRecord(), 3);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(buildButtons());
    resize(780, 540);
    wire();

    chkShowParent->setChecked(ReadSettingBool(QStringLiteral("ShowParent")));
    chkShowCurrFamsOnly->setChecked(ReadSettingBool(QStringLiteral("CurrFamsOnly1")));
    onDirtyChanged(false);
}

QWidget *frmFamilies::buildList()
{
    auto *pane = new QWidget(this);
    lvwFamilies = named(new QListWidget(pane), "lvwFamilies");
    lvwFamilies->setMinimumWidth(220);
    lblFamiliesCnt = named(new QLabel(pane), "lblFamiliesCnt");
    chkShowParent = named(new QCheckBox(QStringLiteral("Show parent"), pane), "chkShowParent");
    chkShowCurrFamsOnly = named(new QCheckBox(QStringLiteral("Show current families only"), pane), "chkShowCurrFamsOnly");
    chkShowCurrFamsOnly->setToolTip(QStringLiteral("Show only those families marked as Current"));
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lvwFamilies, 1);
    layout->addWidget(lblFamiliesCnt);
    layout->addWidget(chkShowParent);
    layout->addWidget(chkShowCurrFamsOnly);
    return pane;
}

QLayout *frmFamilies::buildNames(QWidget *pane)
{
    auto *grid = new QGridLayout;
    int row = 0;
    const auto addField = [&](const QString &caption, const char *name) {
        auto *edit = named(new QLineEdit(pane), name);
        auto *label = new QLabel(caption, pane);
        label->setBuddy(edit);
        grid->addWidget(label, row, 0);
        grid->addWidget(edit, row++, 1);
        return edit;
    };
    txtFamilyID = addField(QStringLiteral("Family ID"), "txtFamilyID");
    txtFamilyID->setReadOnly(true);
    txtFamilyID->setFocusPolicy(Qt::ClickFocus);
    txtFirstName = addField(QStringLiteral("First Name"), "txtFirstName");
    auto *hint = new QLabel(QStringLiteral("You may rename First Name to incl/excl siblings any time."), pane);
    hint->setWordWrap(true);
    grid->addWidget(hint, row++, 1);
    txtLastName = addField(QStringLiteral("Last Name  (opt)"), "txtLastName");
    txtParent = addField(QStringLiteral("Parent  (opt)"), "txtParent");
    return grid;
}

QLayout *frmFamilies::buildFlags(QWidget *pane)
{
    chkCurrent = named(new QCheckBox(QStringLiteral("Current"), pane), "chkCurrent");
    chkCurrent->setToolTip(QStringLiteral("Current/non-current families can be filtered on the main form based on this"));
    chkNoUploadToWeb = named(new QCheckBox(QStringLiteral("No Upload To Web"), pane), "chkNoUploadToWeb");
    chkNoCopyToCd = named(new QCheckBox(QStringLiteral("No Copy To CD"), pane), "chkNoCopyToCd");
    auto *flags = new QHBoxLayout;
    for (QCheckBox *b : {chkCurrent, chkNoUploadToWeb, chkNoCopyToCd})
        flags->addWidget(b);
    flags->addStretch(1);
    return flags;
}

QWidget *frmFamilies::buildDays(QWidget *pane)
{
    auto *days = new QGroupBox(QStringLiteral("Days Attending"), pane);
    auto *dayGrid = new QGridLayout(days);
    const char *const weekdays[] = {"Mon", "Tue", "Wed", "Thu", "Fri"};
    for (int d = 0; d < 5; ++d)
        dayGrid->addWidget(new QLabel(QLatin1String(weekdays[d]), days), 0, d + 1, Qt::AlignHCenter);
    dayGrid->addWidget(new QLabel(QStringLiteral("AM"), days), 1, 0);
    dayGrid->addWidget(new QLabel(QStringLiteral("PM"), days), 2, 0);
    // Created session by session, so Tab runs along each row as it is drawn.
    for (size_t i = 0; i < FamilyFields::kDayColumns.size(); ++i) {
        auto *box = new QCheckBox(days);
        box->setObjectName(QStringLiteral("chk") + QLatin1String(FamilyFields::kDayColumns[i]));
        box->setToolTip(QLatin1String(weekdays[i % 5]) + (i < 5 ? QStringLiteral(" morning") : QStringLiteral(" afternoon")));
        dayGrid->addWidget(box, int(i / 5) + 1, int(i % 5) + 1, Qt::AlignHCenter);
        m_dayBoxes << box;
    }
    chkFamDaysOverride = named(new QCheckBox(QStringLiteral("Every session"), days), "chkFamDaysOverride");
    chkFamDaysOverride->setToolTip(QStringLiteral("Treat the family as attending every session"));
    dayGrid->addWidget(chkFamDaysOverride, 3, 1, 1, 5);
    return days;
}

QLayout *frmFamilies::buildDates(QWidget *pane)
{
    auto *dates = new QGridLayout;
    txtStartDate = named(new QLineEdit(pane), "txtStartDate");
    txtEndDate = named(new QLineEdit(pane), "txtEndDate");
    int column = 0;
    for (const auto &[edit, caption] : {std::pair{txtStartDate, "Start Date"}, std::pair{txtEndDate, "End date"}}) {
        edit->setPlaceholderText(QStringLiteral("yyyy-mm-dd"));
        auto *label = new QLabel(QLatin1String(caption), pane);
        label->setBuddy(edit);
        dates->addWidget(label, 0, column++);
        dates->addWidget(edit, 0, column++);
    }
    return dates;
}

QWidget *frmFamilies::buildRecord()
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(buildNames(pane));
    layout->addLayout(buildFlags(pane));
    layout->addWidget(buildDays(pane));
    layout->addLayout(buildDates(pane));
    layout->addStretch(1);
    return pane;
}

QLayout *frmFamilies::buildButtons()
{
    // Created in the order they stand, left to right, which is the order Tab visits them.
    cmdCopyList = named(new QPushButton(QStringLiteral("Copy List"), this), "cmdCopyList");
    cmdCopyList->setToolTip(QStringLiteral("Copy list of names to clipboard"));
    cmdImport = named(new QPushButton(QStringLiteral("&Import"), this), "cmdImport");
    cmdImport->setToolTip(QStringLiteral("Import list of days for ALL families marked as current"));
    lblMsg = named(new QLabel(this), "lblMsg");
    cmdAdd = named(new QPushButton(QStringLiteral("&Add"), this), "cmdAdd");
    cmdSave = named(new QPushButton(QStringLiteral("&Save"), this), "cmdSave");
    cmdDelete = named(new QPushButton(QStringLiteral("&Delete"), this), "cmdDelete");
    cmdCancel = named(new QPushButton(QStringLiteral("&Close"), this), "cmdCancel");
    // The attendance import is wired by its own change; until then the command is not offered.
    cmdImport->setEnabled(false);
    for (QPushButton *b : {cmdAdd, cmdSave, cmdDelete, cmdCancel, cmdCopyList, cmdImport})
        b->setAutoDefault(false);
    auto *row = new QHBoxLayout;
    row->addWidget(cmdCopyList);
    row->addWidget(cmdImport);
    row->addWidget(lblMsg, 1);
    row->addWidget(cmdAdd);
    row->addWidget(cmdSave);
    row->addWidget(cmdDelete);
    row->addWidget(cmdCancel);
    return row;
}

void frmFamilies::wire()
{
    connect(&m_editor, &FamilyEditor::dirtyChanged, this, &frmFamilies::onDirtyChanged);
    connect(&m_editor, &FamilyEditor::familiesChanged, this, &frmFamilies::familiesChanged);
    connect(lvwFamilies, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0)
            showFamily(lvwFamilies->item(row)->data(kIdRole).toInt());
    });
    connect(chkShowParent, &QCheckBox::clicked, this, [this] { LoadList(); });
    connect(chkShowCurrFamsOnly, &QCheckBox::clicked, this, [this](bool on) {
        try {
            WriteSetting(QStringLiteral("CurrFamsOnly1"), on);
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("chkShowCurrFamsOnly_Click()"), e);
        }
        LoadList();
    });
    for (QLineEdit *e : {txtFirstName, txtLastName, txtParent, txtStartDate, txtEndDate})
        connect(e, &QLineEdit::textEdited, this, &frmFamilies::markDirty);
    QList<QCheckBox *> boxes = m_dayBoxes;
    boxes << chkCurrent << chkNoUploadToWeb << chkNoCopyToCd << chkFamDaysOverride;
    for (QCheckBox *b : boxes)
        connect(b, &QCheckBox::clicked, this, &frmFamilies::markDirty);
    txtFirstName->installEventFilter(this);
    connect(txtLastName, &QLineEdit::editingFinished, this, [this] {
        try {
            m_editor.CheckLastNameChange(m_shownId, txtLastName->text());
        } catch (const Error &e) {
            lib_ErrorHandler(QStringLiteral("txtLastName_LostFocus()"), e);
        }
    });
    connect(cmdAdd, &QPushButton::clicked, this, &frmFamilies::onAdd);
    connect(cmdSave, &QPushButton::clicked, this, &frmFamilies::onSave);
    connect(cmdDelete, &QPushButton::clicked, this, &frmFamilies::onDelete);
    connect(cmdCancel, &QPushButton::clicked, this, &frmFamilies::onCancel);
    connect(cmdCopyList, &QPushButton::clicked, this, [this] { m_editor.CopyList(chkShowParent->isChecked()); });
}

bool frmFamilies::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == txtFirstName && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const FamilyEditor::KeyVerdict verdict = FamilyEditor::FirstNameKey(key->key(), key->modifiers(), key->text());
        if (!verdict.pass)
            return true;
        if (verdict.dirty)
            markDirty();
    }
    return QDialog::eventFilter(watched, event);
}

void frmFamilies::onDirtyChanged(bool dirty)
{
    lvwFamilies->setEnabled(!dirty);
    cmdAdd->setEnabled(!dirty);
    // Rebuilding the list shows its first entry, which would throw the edits away.
    chkShowParent->setEnabled(!dirty);
    chkShowCurrFamsOnly->setEnabled(!dirty);
    cmdCancel->setText(dirty ? QStringLiteral("&Cancel") : QStringLiteral("&Close"));
}

void frmFamilies::LoadList()
{
    try {
        m_editor.LoadList(chkShowCurrFamsOnly->isChecked(), chkShowParent->isChecked());
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("LoadList()"), e);
    }
    const QSignalBlocker quiet(lvwFamilies);
    lvwFamilies->clear();
    for (const FamilyEditor::Entry &entry : m_editor.entries()) {
        auto *item = new QListWidgetItem(entry.text, lvwFamilies);
        item->setData(kIdRole, entry.familyId);
        item->setData(kKeyRole, entry.key);
    }
    lblFamiliesCnt->setText(FamilyEditor::CountsText(m_editor.entryTexts()));
    if (lvwFamilies->count() > 0) {
        lvwFamilies->setCurrentRow(0);
        showFamily(lvwFamilies->item(0)->data(kIdRole).toInt());
    } else {
        showFields(FamilyFields{});
    }
}

void frmFamilies::showFamily(int familyId)
{
    showFields(m_editor.Fields(familyId));
    lblMsg->clear();
}

void frmFamilies::showFields(const FamilyFields &f)
{
    m_shownId = f.familyId;
    txtFamilyID->setText(f.familyId > 0 ? QString::number(f.familyId) : QString());
    txtFirstName->setText(f.firstName);
    txtLastName->setText(f.lastName);
    txtParent->setText(f.parent);
    chkCurrent->setChecked(f.current);
    chkNoUploadToWeb->setChecked(f.noUploadToWeb);
    chkNoCopyToCd->setChecked(f.noCopyToCd);
    for (int i = 0; i < m_dayBoxes.size(); ++i)
        m_dayBoxes[i]->setChecked(f.days[size_t(i)]);
    chkFamDaysOverride->setChecked(f.daysOverride);
    txtStartDate->setText(f.startDate);
    txtEndDate->setText(f.endDate);
    cmdDelete->setEnabled(f.familyId > 0);
    m_editor.setDirty(false);
}

FamilyFields frmFamilies::enteredFields() const
{
    FamilyFields f;
    f.familyId = m_shownId;
    f.firstName = txtFirstName->text();
    f.lastName = txtLastName->text();
    f.parent = txtParent->text();
    f.current = chkCurrent->isChecked();
    f.noUploadToWeb = chkNoUploadToWeb->isChecked();
    f.noCopyToCd = chkNoCopyToCd->isChecked();
    for (int i = 0; i < m_dayBoxes.size(); ++i)
        f.days[size_t(i)] = m_dayBoxes[i]->isChecked();
    f.daysOverride = chkFamDaysOverride->isChecked();
    f.startDate = txtStartDate->text();
    f.endDate = txtEndDate->text();
    return f;
}

void frmFamilies::selectEntry(int familyId)
{
    for (int row = 0; row < lvwFamilies->count(); ++row) {
        if (lvwFamilies->item(row)->data(kIdRole).toInt() == familyId) {
            lvwFamilies->setCurrentRow(row);
            lvwFamilies->scrollToItem(lvwFamilies->item(row));
            showFamily(familyId);
            return;
        }
    }
}

int frmFamilies::selectedFamilyId() const
{
    const QListWidgetItem *item = lvwFamilies->currentItem();
    return item && item->isSelected() ? item->data(kIdRole).toInt() : 0;
}

void frmFamilies::onAdd()
{
    {
        // No entry is current either, so a click on the one shown before Add shows it again.
        const QSignalBlocker quiet(lvwFamilies);
        lvwFamilies->setCurrentRow(-1);
        lvwFamilies->clearSelection();
    }
    FamilyFields fresh;
    showFields(fresh);
    txtFirstName->setFocus();
    lblMsg->clear();
}

void frmFamilies::onSave()
{
    int saved = 0;
    try {
        saved = m_editor.Save(enteredFields());
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdSave_Click()"), e);
    }
    if (saved == 0)
        return;
    LoadList();
    selectEntry(saved);
    lblMsg->setText(QStringLiteral("Saved"));
    m_editor.setDirty(false);
}

void frmFamilies::onDelete()
{
    const QListWidgetItem *item = lvwFamilies->currentItem();
    if (m_shownId <= 0)
        return;
    try {
        const QString text = item && item->data(kIdRole).toInt() == m_shownId ? item->text() : enteredFields().folderName();
        if (!m_editor.Delete(m_shownId, text))
            return;
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdDelete_Click()"), e);
    }
    cmdAdd->setFocus();
    cmdDelete->setEnabled(false);
    LoadList();
}

void frmFamilies::onCancel()
{
    if (!m_editor.isDirty()) {
        QDialog::reject();
        return;
    }
    const int id = m_shownId > 0 ? m_shownId : selectedFamilyId();
    if (id > 0)
        selectEntry(id);
    else if (lvwFamilies->count() > 0)
        selectEntry(lvwFamilies->item(0)->data(kIdRole).toInt());
    else
        showFields(FamilyFields{});
}

void frmFamilies::reject()
{
    onCancel();
}

void frmFamilies::closeEvent(QCloseEvent *event)
{
    // Closing the window with edits pending asks first: typed names are not thrown away unseen.
    if (m_editor.isDirty()
        && !lib_MsgYesNo(QStringLiteral("The changes to this family are not saved. Close and lose them?"), 0, false)) {
        event->ignore();
        return;
    }
    m_editor.setDirty(false);
    QDialog::closeEvent(event);
}

} // namespace quillet
