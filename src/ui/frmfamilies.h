#pragma once

#include "families/familyeditor.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace quillet {

class FamilyDatabase;

// The family editor window: the list of families beside the record of the one selected. The
// rules live in FamilyEditor; this window shows its entries and fields and wires the controls.
class frmFamilies : public QDialog
{
    Q_OBJECT
public:
    explicit frmFamilies(FamilyDatabase &db, QWidget *parent = nullptr);

    FamilyEditor &editor() { return m_editor; }
    // Rebuilds the list from the database and shows its first entry.
    void LoadList();

public Q_SLOTS:
    // Esc acts as the Cancel/Close button.
    void reject() override;

Q_SIGNALS:
    // A family was added, changed or deleted.
    void familiesChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *buildList();
    QWidget *buildRecord();
    QLayout *buildNames(QWidget *pane);
    QLayout *buildFlags(QWidget *pane);
    QWidget *buildDays(QWidget *pane);
    QLayout *buildDates(QWidget *pane);
    QLayout *buildButtons();
    void wire();
    void markDirty() { m_editor.setDirty(true); }
    void onDirtyChanged(bool dirty);
    void showFamily(int familyId);
    void showFields(const FamilyFields &fields);
    FamilyFields enteredFields() const;
    void selectEntry(int familyId);
    int selectedFamilyId() const;
    void onAdd();
    void onSave();
    void onDelete();
    void onCancel();

    FamilyEditor m_editor;
    int m_shownId = 0;

    QListWidget *lvwFamilies = nullptr;
    QLabel *lblFamiliesCnt = nullptr;
    QCheckBox *chkShowParent = nullptr;
    QCheckBox *chkShowCurrFamsOnly = nullptr;
    QLineEdit *txtFamilyID = nullptr;
    QLineEdit *txtFirstName = nullptr;
    QLineEdit *txtLastName = nullptr;
    QLineEdit *txtParent = nullptr;
    QCheckBox *chkCurrent = nullptr;
    QCheckBox *chkNoUploadToWeb = nullptr;
    QCheckBox *chkNoCopyToCd = nullptr;
    QList<QCheckBox *> m_dayBoxes; // in the order of FamilyFields::kDayColumns
    QCheckBox *chkFamDaysOverride = nullptr;
    QLineEdit *txtStartDate = nullptr;
    QLineEdit *txtEndDate = nullptr;
    QLabel *lblMsg = nullptr;
    QPushButton *cmdAdd = nullptr;
    QPushButton *cmdSave = nullptr;
    QPushButton *cmdDelete = nullptr;
    QPushButton *cmdCancel = nullptr;
    QPushButton *cmdCopyList = nullptr;
    QPushButton *cmdImport = nullptr;
};

} // namespace quillet
