#pragma once

#include <QAbstractListModel>
#include <QList>

namespace quillet {

// The entries of the family list: text and family ID (-999 for the privacy marker), with the
// selection held here so every command works the same headless.
class FamilyListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    static constexpr int kPrivacyMarkerId = -999;

    enum Roles { FamilyIdRole = Qt::UserRole + 1, SelectedRole };

    struct Entry
    {
        QString text;
        int familyId = 0;
        bool selected = false;
    };

    explicit FamilyListModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    void setEntries(const QList<Entry> &entries);
    const Entry &at(int position) const { return m_entries.at(position); }
    int count() const { return int(m_entries.size()); }
    // Position of the first entry with a family ID, or -1.
    int positionOfId(int familyId) const;
    // Position of the privacy marker entry, or -1.
    int privacyMarkerPosition() const { return positionOfId(kPrivacyMarkerId); }

    void setSelected(int position, bool selected);
    void clearSelection();
    // Every entry whose trimmed text does not begin with "(": neither group entries nor the marker.
    void selectAll();
    QList<int> selectedPositions() const;
    // True when a selected entry is a real family (not the privacy marker).
    bool anyRealFamilySelected() const;

Q_SIGNALS:
    void selectionChanged();

private:
    QList<Entry> m_entries;
};

} // namespace quillet
