#pragma once

#include "settings/settingsform.h"

#include <QDialog>
#include <QHash>

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QGridLayout;
class QLabel;
class QLineEdit;
class QSlider;

namespace quillet {

class SettingsDatabase;

// The settings dialog: one control per setting, bound to SettingsForm, which holds the rules.
class frmSettings : public QDialog
{
    Q_OBJECT
public:
    explicit frmSettings(SettingsDatabase &db, QWidget *parent = nullptr);

    // Loads every control from the settings (writing missing defaults first).
    void LoadData();
    // Validates the values shown, as Save does, without writing them.
    bool ValidateSettings();
    // True once Save has written the settings.
    bool Updated() const { return m_updated; }
    const SettingsForm::SaveResult &saveResult() const { return m_result; }

public Q_SLOTS:
    // Closes without writing; asks first when something was edited.
    void reject() override;

Q_SIGNALS:
    // Emitted after Save has written the settings, before the dialog closes.
    void settingsSaved(const quillet::SettingsForm::SaveResult &result);

private:
    QWidget *makeControl(const SettingsForm::Field &field);
    void addRow(QGridLayout *grid, int row, const char *key, int column = 0);
    QWidget *buildFolders();
    QWidget *buildOptions();
    QWidget *buildTransfer();
    QWidget *buildPublishing();
    void addLookup(const char *key, const char *buttonName, const QString &prompt);
    void wireBehaviour();
    void pushToForm();
    void pullFromForm();
    void updateSliderLabel(const QString &key);
    void updateUnallocResizeState();
    void onSave();
    void markChanged() { m_changed = true; }

    SettingsDatabase &m_db;
    SettingsForm m_form;
    QHash<QString, QWidget *> m_controls;
    QHash<QString, QLabel *> m_sliderLabels;
    QHash<QString, QWidget *> m_lookups;
    QLabel *m_lblMsg = nullptr;
    bool m_loading = false;
    bool m_changed = false;
    bool m_updated = false;
    SettingsForm::SaveResult m_result;
};

} // namespace quillet
