#include "frmsettings.h"

#include "app/settingsdatabase.h"

#include "app/settingsstore.h"
#include "lib/apppaths.h"
#include "lib/errorhandler.h"
#include "lib/fileutils.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

namespace quillet {

namespace {

using K = SettingsForm::Kind;

const QHash<QString, QString> &tooltips()
{
    static const QHash<QString, QString> tips = {
        {QStringLiteral("PCname"), QStringLiteral("When using batchfiles, each PC needs a unique name")},
        {QStringLiteral("ResizeExclFam"),
         QStringLiteral("One family to exclude from resizing during allocation (typically your own family)")},
        {QStringLiteral("SrcDir"), QStringLiteral("Folder where new photos from the cameras are put")},
        {QStringLiteral("TgtDir"), QStringLiteral("Folder that holds one folder of photos per family")},
        {QStringLiteral("SrcDirInclSubs"), QStringLiteral("List all photos found within subdirectories of the Source Dir")},
        {QStringLiteral("CreateBatchs"),
         QStringLiteral("Record every file operation so that another PC can repeat it")},
        {QStringLiteral("BatchOnly"), QStringLiteral("Only record the allocations; make no copies on this PC")},
        {QStringLiteral("BatchXfrDir"),
         QStringLiteral("Shared folder or removable disk for batchfiles and unallocated photos")},
        {QStringLiteral("PrivacyText"),
         QStringLiteral("Pseudo family name to show meaning Keep Private / Sensitive")},
        {QStringLiteral("MorningSessEnd"), QStringLiteral("End of the morning session, for example 12:30")},
        {QStringLiteral("AfternoonSessEnd"), QStringLiteral("End of the afternoon session, for example 15:30")},
    };
    return tips;
}

QString folderPromptFor(const char *key)
{
    static const QHash<QString, QString> prompts = {
        {QStringLiteral("SrcDir"), QStringLiteral("Select Source Directory")},
        {QStringLiteral("TgtDir"), QStringLiteral("Select Target Directory")},
        {QStringLiteral("BatchXfrDir"),
         QStringLiteral("Select Target Drive\\Dir for transferring batchfiles and unallocated photos")},
        {QStringLiteral("PortableCopyXfrDir"),
         QStringLiteral("Select Target Drive\\Dir for transferring batchfiles etc from a Portatble Copy")},
        {QStringLiteral("WebTgtDir"), QStringLiteral("Select Batch Target Directory")},
        {QStringLiteral("CdTgtDir"), QStringLiteral("Select CD Target Drive\\Dir")},
    };
    return prompts.value(QLatin1String(key));
}

} // namespace

frmSettings::frmSettings(SettingsDatabase &db, QWidget *parent)
    : QDialog(parent)
    , m_db(db)
{
    setObjectName(QStringLiteral("frmSettings"));
    setWindowTitle(QStringLiteral("Settings"));
    for (const SettingsForm::Field &f : SettingsForm::Fields())
        m_controls.insert(QLatin1String(f.key), makeControl(f));

    auto *dataDir = new QLineEdit(AppPaths::dataDir(), this);
    dataDir->setObjectName(QStringLiteral("txtDataDir"));
    dataDir->setReadOnly(true);
    auto *dataRow = new QHBoxLayout;
    dataRow->addWidget(new QLabel(QStringLiteral("Data Dir"), this));
    dataRow->addWidget(dataDir, 1);

    m_lblMsg = new QLabel(this);
    m_lblMsg->setObjectName(QStringLiteral("lblMsg"));
    m_lblMsg->setWordWrap(true);
    auto *reset = new QPushButton(QStringLiteral("Clr Frm Size"), this);
    reset->setObjectName(QStringLiteral("cmdResetFormSizes"));
    reset->setToolTip(QStringLiteral("Forget the stored window positions and sizes"));
    auto *save = new QPushButton(QStringLiteral("&Save"), this);
    save->setObjectName(QStringLiteral("cmdSave"));
    save->setDefault(true);
    auto *close = new QPushButton(QStringLiteral("&Close"), this);
    close->setObjectName(QStringLiteral("cmdCancel"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_lblMsg, 1);
    buttons->addWidget(reset);
    buttons->addWidget(save);
    buttons->addWidget(close);

    auto *columns = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    left->addWidget(buildFolders());
    left->addWidget(buildOptions());
    left->addStretch(1);
    auto *right = new QVBoxLayout;
    right->addWidget(buildTransfer());
    right->addWidget(buildPublishing());
    right->addStretch(1);
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(dataRow);
    layout->addLayout(columns, 1);
    layout->addLayout(buttons);

    connect(save, &QPushButton::clicked, this, &frmSettings::onSave);
    connect(close, &QPushButton::clicked, this, &frmSettings::reject);
    connect(reset, &QPushButton::clicked, this, [] {
        lib_MsgInfo(QStringLiteral("To do this, close the application, then restart it whilst holding down the Shift key"));
    });
    wireBehaviour();
}

QWidget *frmSettings::makeControl(const SettingsForm::Field &f)
{
    QWidget *w = nullptr;
    switch (f.kind) {
    case K::Check:
        w = new QCheckBox(QLatin1String(f.caption), this);
        break;
    case K::Slider: {
        auto *slider = new QSlider(Qt::Horizontal, this);
        slider->setRange(1, 5);
        slider->setPageStep(1);
        slider->setTickPosition(QSlider::TicksBelow);
        auto *label = new QLabel(this);
        label->setObjectName(QStringLiteral("lbl") + QLatin1String(f.control).mid(3));
        label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("Average")) + 4);
        m_sliderLabels.insert(QLatin1String(f.key), label);
        w = slider;
        break;
    }
    case K::Date: {
        auto *date = new QDateTimeEdit(this);
        date->setCalendarPopup(true);
        date->setDisplayFormat(QStringLiteral("dd MMM yyyy HH:mm:ss"));
        w = date;
        break;
    }
    case K::Family:
        w = new QComboBox(this);
        break;
    default: {
        auto *edit = new QLineEdit(this);
        if (f.kind == K::Number)
            edit->setValidator(new QIntValidator(0, 100000, edit));
        if (f.kind == K::Folder) // room for a real path
            edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * 34);
        w = edit;
        break;
    }
    }
    w->setObjectName(QLatin1String(f.control));
    const QString tip = tooltips().value(QLatin1String(f.key));
    if (!tip.isEmpty())
        w->setToolTip(tip);
    return w;
}

void frmSettings::addRow(QGridLayout *grid, int row, const char *key, int column)
{
    const SettingsForm::Field *f = SettingsForm::FindField(QLatin1String(key));
    QWidget *control = m_controls.value(QLatin1String(key));
    if (f->kind == K::Check) {
        grid->addWidget(control, row, column, 1, 2);
        return;
    }
    auto *label = new QLabel(QLatin1String(f->caption), this);
    label->setBuddy(control);
    grid->addWidget(label, row, column);
    if (f->kind == K::Slider) {
        auto *box = new QHBoxLayout;
        box->addWidget(control, 1);
        box->addWidget(m_sliderLabels.value(QLatin1String(key)));
        grid->addLayout(box, row, column + 1);
    } else if (f->kind == K::Folder) {
        auto *box = new QHBoxLayout;
        box->addWidget(control, 1);
        box->addWidget(m_lookups.value(QLatin1String(key)));
        grid->addLayout(box, row, column + 1);
    } else {
        grid->addWidget(control, row, column + 1);
    }
}

void frmSettings::addLookup(const char *key, const char *buttonName, const QString &prompt)
{
    auto *button = new QToolButton(this);
    button->setText(QStringLiteral("..."));
    button->setObjectName(QLatin1String(buttonName));
    button->setToolTip(prompt);
    m_lookups.insert(QLatin1String(key), button);
    auto *edit = static_cast<QLineEdit *>(m_controls.value(QLatin1String(key)));
    connect(button, &QToolButton::clicked, this, [edit, prompt] {
        const QString chosen = lib_BrowseForFolder(ExpandSpecialDir(edit->text(), false), prompt);
        if (!chosen.isEmpty())
            edit->setText(ExpandSpecialDir(QDir::cleanPath(chosen), true));
    });
}

QWidget *frmSettings::buildFolders()
{
    auto *box = new QGroupBox(QStringLiteral("Folders"), this);
    addLookup("SrcDir", "cmdSrcLookup", folderPromptFor("SrcDir"));
    addLookup("TgtDir", "cmdTgtLookup", folderPromptFor("TgtDir"));
    auto *grid = new QGridLayout(box);
    int row = 0;
    addRow(grid, row++, "SrcDir");
    addRow(grid, row++, "TgtDir");
    addRow(grid, row++, "SrcDirInclSubs");
    addRow(grid, row++, "AssnSubToTgt");
    addRow(grid, row++, "AssnSrcSubToTgt");
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget *frmSettings::buildOptions()
{
    auto *box = new QGroupBox(QStringLiteral("Allocation"), this);
    auto *grid = new QGridLayout(box);
    int row = 0;
    addRow(grid, row++, "TargetResize");
    addRow(grid, row++, "TargetResizeMD");
    addRow(grid, row++, "TargetResizeQ");
    addRow(grid, row++, "ResizeExclFam");
    addRow(grid, row++, "PrivacyText");
    addRow(grid, row++, "AutoReselPriv");
    addRow(grid, row++, "MorningSessEnd");
    addRow(grid, row++, "AfternoonSessEnd");
    addRow(grid, row++, "BeepOnDtChg");
    addRow(grid, row++, "KeepLgPicOnTop");
    addRow(grid, row++, "ReloadUndoThumbs");
    addRow(grid, row++, "MaxReloadUndoThumbs");
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget *frmSettings::buildTransfer()
{
    auto *box = new QGroupBox(QStringLiteral("Sharing with other PCs"), this);
    addLookup("BatchXfrDir", "cmdBatchXfrDirLookup", folderPromptFor("BatchXfrDir"));
    addLookup("PortableCopyXfrDir", "cmdPortableCopyXfrDirLookup", folderPromptFor("PortableCopyXfrDir"));
    auto *grid = new QGridLayout(box);
    int row = 0;
    addRow(grid, row++, "PCname");
    addRow(grid, row++, "CreateBatchs");
    addRow(grid, row++, "BatchOnly");
    addRow(grid, row++, "BatchXfrDir");
    addRow(grid, row++, "UnallocResize");
    addRow(grid, row++, "UnallocResizeMD");
    addRow(grid, row++, "UnallocResizeQ");
    addRow(grid, row++, "PortableCopyXfrDir");
    grid->setColumnStretch(1, 1);
    return box;
}

QWidget *frmSettings::buildPublishing()
{
    auto *box = new QGroupBox(QStringLiteral("Web upload and CD"), this);
    addLookup("WebTgtDir", "cmdWebTgtLookup", folderPromptFor("WebTgtDir"));
    addLookup("CdTgtDir", "cmdCdTgtLookup", folderPromptFor("CdTgtDir"));
    auto *grid = new QGridLayout(box);
    int row = 0;
    for (const char *prefix : {"Web", "Cd"}) {
        const QString p = QLatin1String(prefix);
        addRow(grid, row++, p == QLatin1String("Web") ? "WebTgtDir" : "CdTgtDir");
        addRow(grid, row, p == QLatin1String("Web") ? "WebMinDate" : "CdMinDate");
        auto *swap = new QToolButton(this);
        swap->setText(QStringLiteral("-->"));
        swap->setObjectName(p == QLatin1String("Web") ? QStringLiteral("cmdSwapWebDate") : QStringLiteral("cmdSwapCdDate"));
        swap->setToolTip(QStringLiteral("Set max date equal to min date"));
        grid->addWidget(swap, row++, 2);
        auto *minDate = static_cast<QDateTimeEdit *>(m_controls.value(p + QStringLiteral("MinDate")));
        auto *maxDate = static_cast<QDateTimeEdit *>(m_controls.value(p + QStringLiteral("MaxDate")));
        connect(swap, &QToolButton::clicked, this, [minDate, maxDate] { maxDate->setDateTime(minDate->dateTime()); });
        addRow(grid, row++, p == QLatin1String("Web") ? "WebMaxDate" : "CdMaxDate");
        addRow(grid, row++, p == QLatin1String("Web") ? "WebTgtInclFam" : "CdTgtInclFam");
        addRow(grid, row++, p == QLatin1String("Web") ? "WebAllowPriv" : "CdAllowPriv");
        addRow(grid, row++, p == QLatin1String("Web") ? "WebCopyPriv" : "CdCopyPriv");
    }
    grid->setColumnStretch(1, 1);
    return box;
}

void frmSettings::wireBehaviour()
{
    for (auto it = m_controls.cbegin(); it != m_controls.cend(); ++it) {
        QWidget *w = it.value();
        const QString key = it.key();
        if (auto *edit = qobject_cast<QLineEdit *>(w))
            connect(edit, &QLineEdit::textEdited, this, &frmSettings::markChanged);
        else if (auto *check = qobject_cast<QCheckBox *>(w))
            connect(check, &QCheckBox::toggled, this, &frmSettings::markChanged);
        else if (auto *slider = qobject_cast<QSlider *>(w))
            connect(slider, &QSlider::valueChanged, this, [this, key] {
                markChanged();
                updateSliderLabel(key);
            });
        else if (auto *date = qobject_cast<QDateTimeEdit *>(w))
            connect(date, &QDateTimeEdit::dateTimeChanged, this, &frmSettings::markChanged);
        else if (auto *combo = qobject_cast<QComboBox *>(w))
            connect(combo, &QComboBox::currentIndexChanged, this, &frmSettings::markChanged);
    }
    for (const char *key : {"TargetResize", "UnallocResize"}) {
        connect(static_cast<QCheckBox *>(m_controls.value(QLatin1String(key))), &QCheckBox::toggled, this,
                [this](bool on) {
                    if (on && !m_loading)
                        lib_MsgInfo(QStringLiteral("Note: using resize option will lose any EXIF data in the target file"), 3);
                });
    }
    connect(static_cast<QLineEdit *>(m_controls.value(QStringLiteral("BatchXfrDir"))), &QLineEdit::textChanged, this,
            &frmSettings::updateUnallocResizeState);
}

void frmSettings::updateSliderLabel(const QString &key)
{
    auto *slider = static_cast<QSlider *>(m_controls.value(key));
    const bool size = key.endsWith(QLatin1String("MD"));
    m_sliderLabels.value(key)->setText(size ? SettingsForm::SizeLabel(slider->value())
                                            : SettingsForm::QualityLabel(slider->value()));
}

void frmSettings::updateUnallocResizeState()
{
    auto *check = static_cast<QCheckBox *>(m_controls.value(QStringLiteral("UnallocResize")));
    const bool hasDir = !static_cast<QLineEdit *>(m_controls.value(QStringLiteral("BatchXfrDir")))->text().trimmed().isEmpty();
    if (!hasDir)
        check->setChecked(false);
    check->setEnabled(hasDir && !m_form.isLocked(QStringLiteral("UnallocResize")));
}

void frmSettings::LoadData()
{
    m_loading = true;
    m_form.LoadData(m_db);
    auto *combo = static_cast<QComboBox *>(m_controls.value(QStringLiteral("ResizeExclFam")));
    combo->clear();
    combo->addItem(QStringLiteral("(none)"), 0);
    for (const auto &[name, id] : m_db.CurrentFamilies())
        combo->addItem(name, id);
    pullFromForm();
    for (auto it = m_controls.cbegin(); it != m_controls.cend(); ++it) {
        const bool locked = m_form.isLocked(it.key());
        it.value()->setEnabled(!locked);
        if (QWidget *lookup = m_lookups.value(it.key()))
            lookup->setEnabled(!locked);
    }
    updateUnallocResizeState();
    if (IsPortableCopy())
        m_lblMsg->setText(QStringLiteral("This is a 'portable' copy of the application, some features locked by the administrator"));
    m_changed = false;
    m_loading = false;
}

void frmSettings::pullFromForm()
{
    for (const SettingsForm::Field &f : SettingsForm::Fields()) {
        const QString key = QLatin1String(f.key);
        const QString v = m_form.value(key);
        QWidget *w = m_controls.value(key);
        switch (f.kind) {
        case K::Check: static_cast<QCheckBox *>(w)->setChecked(v == QLatin1String("1")); break;
        case K::Slider:
            static_cast<QSlider *>(w)->setValue(qBound(1, v.toInt(), 5));
            updateSliderLabel(key);
            break;
        case K::Date: static_cast<QDateTimeEdit *>(w)->setDateTime(SettingsForm::ParseDate(v)); break;
        case K::Family: {
            auto *combo = static_cast<QComboBox *>(w);
            const int index = combo->findData(v.toInt());
            combo->setCurrentIndex(index < 0 ? 0 : index);
            break;
        }
        default: static_cast<QLineEdit *>(w)->setText(v); break;
        }
    }
}

void frmSettings::pushToForm()
{
    for (const SettingsForm::Field &f : SettingsForm::Fields()) {
        const QString key = QLatin1String(f.key);
        QWidget *w = m_controls.value(key);
        QString v;
        switch (f.kind) {
        case K::Check: v = static_cast<QCheckBox *>(w)->isChecked() ? QStringLiteral("1") : QStringLiteral("0"); break;
        case K::Slider: v = QString::number(static_cast<QSlider *>(w)->value()); break;
        case K::Date: v = SettingsForm::FormatDate(static_cast<QDateTimeEdit *>(w)->dateTime()); break;
        case K::Family: v = QString::number(static_cast<QComboBox *>(w)->currentData().toInt()); break;
        default: v = static_cast<QLineEdit *>(w)->text(); break;
        }
        m_form.setValue(key, v);
    }
}

bool frmSettings::ValidateSettings()
{
    pushToForm();
    const bool ok = m_form.ValidateSettings();
    pullFromForm(); // the folders come back trimmed
    return ok;
}

void frmSettings::onSave()
{
    pushToForm();
    try {
        m_result = m_form.Save(m_db);
    } catch (const Error &e) {
        lib_ErrorHandler(QStringLiteral("cmdSave_Click()"), e);
        return;
    }
    pullFromForm();
    if (!m_result.saved)
        return;
    m_updated = true;
    m_changed = false;
    Q_EMIT settingsSaved(m_result);
    accept();
}

void frmSettings::reject()
{
    // Close, the window's close button and Escape all come here.
    if (m_changed && !lib_MsgYesNo(QStringLiteral("Close without saving the changes?"), 0, false))
        return;
    QDialog::reject();
}

} // namespace quillet
