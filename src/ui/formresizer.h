#pragma once

#include "lib/windowrules.h"

#include <QList>
#include <QPair>
#include <QObject>
#include <QPointer>
#include <QSize>

class QWidget;

namespace quillet {

// Keeps a window's size rules and shrinks its fonts with it. Layouts place the controls; this
// class only adds what layouts do not do. Install it once the window's controls exist: it
// records the design size and every child's font size, then watches the window's resize events.
class lib_clsFormResizer : public QObject
{
    Q_OBJECT
public:
    explicit lib_clsFormResizer(QWidget *window);

    // Records the design size (the window's size now) and every control's font size.
    void SetDefaults();
    WindowRules &rules() { return m_rules; }

    bool AllowChgWinWidth() const { return m_rules.allowChgWinWidth; }
    void setAllowChgWinWidth(bool on) { m_rules.allowChgWinWidth = on; }
    bool AllowChgWinHeight() const { return m_rules.allowChgWinHeight; }
    void setAllowChgWinHeight(bool on) { m_rules.allowChgWinHeight = on; }
    bool ConstrainProportion() const { return m_rules.constrainProportion; }
    void setConstrainProportion(bool on) { m_rules.constrainProportion = on; }

    // Applies the rules to the window's present size; called on every resize.
    void Resize();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPointer<QWidget> m_window;
    WindowRules m_rules;
    QSize m_design;
    QSize m_previous;
    QList<QPair<QPointer<QWidget>, qreal>> m_fontSizes; // design point sizes
    bool m_adjusting = false;
};

} // namespace quillet
