#include "selectionmirror.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>

namespace quillet {

SelectionMirror::SelectionMirror(QAbstractItemView *view, int selectedRole, Setter setModelSelection)
    : QObject(view)
    , m_view(view)
    , m_role(selectedRole)
    , m_set(std::move(setModelSelection))
{
    QAbstractItemModel *model = view->model();
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &SelectionMirror::pushToModel);
    connect(model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex &, const QModelIndex &, const QList<int> &roles) {
                if (roles.isEmpty() || roles.contains(m_role))
                    pullFromModel();
            });
    connect(model, &QAbstractItemModel::modelReset, this, &SelectionMirror::pullFromModel);
    connect(model, &QAbstractItemModel::rowsInserted, this, &SelectionMirror::pullFromModel);
}

void SelectionMirror::pullFromModel()
{
    if (m_busy)
        return;
    m_busy = true;
    QAbstractItemModel *model = m_view->model();
    QItemSelection selection;
    QModelIndex first;
    for (int r = 0; r < model->rowCount(); ++r) {
        const QModelIndex i = model->index(r, 0);
        if (i.data(m_role).toBool()) {
            selection.select(i, i);
            if (!first.isValid())
                first = i;
        }
    }
    QItemSelectionModel *sel = m_view->selectionModel();
    sel->select(selection, QItemSelectionModel::ClearAndSelect);
    if (first.isValid() && !sel->isSelected(sel->currentIndex()))
        sel->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
    m_busy = false;
}

void SelectionMirror::pushToModel()
{
    if (m_busy)
        return;
    m_busy = true;
    QAbstractItemModel *model = m_view->model();
    const QItemSelectionModel *sel = m_view->selectionModel();
    bool changed = false;
    for (int r = 0; r < model->rowCount(); ++r) {
        const QModelIndex i = model->index(r, 0);
        const bool selected = sel->isSelected(i);
        if (i.data(m_role).toBool() != selected) {
            m_set(r, selected);
            changed = true;
        }
    }
    m_busy = false;
    // Entries leaving the list shift the view's selection without changing what is selected.
    if (changed)
        Q_EMIT userChanged();
}

} // namespace quillet
