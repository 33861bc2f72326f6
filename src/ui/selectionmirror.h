#pragma once

#include <QObject>
#include <functional>

class QAbstractItemView;

namespace quillet {

// Keeps a view's selection and its model's own selection in step, both ways. The model is the
// truth: commands select entries there, and the view follows; the user's clicks in the view are
// written back to the model. `selectedRole` is the model's boolean role holding the selection.
class SelectionMirror : public QObject
{
    Q_OBJECT
public:
    using Setter = std::function<void(int position, bool selected)>;

    SelectionMirror(QAbstractItemView *view, int selectedRole, Setter setModelSelection);

    // Copies the model's selection into the view. The view's current entry moves to the first
    // selected one when it is not selected itself, so the keys go on from the photo on view.
    void pullFromModel();

Q_SIGNALS:
    // The user changed the view's selection (mouse or keys); the model has it already.
    void userChanged();

private:
    void pushToModel();

    QAbstractItemView *m_view;
    int m_role;
    Setter m_set;
    bool m_busy = false;
};

} // namespace quillet
