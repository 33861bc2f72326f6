#include "formresizer.h"

#include <QEvent>
#include <QWidget>

namespace quillet {

lib_clsFormResizer::lib_clsFormResizer(QWidget *window)
    : QObject(window)
    , m_window(window)
{
    window->installEventFilter(this);
}

void lib_clsFormResizer::SetDefaults()
{
    m_design = m_window->size();
    m_previous = QSize();
    m_fontSizes.clear();
    m_fontSizes.append({m_window, m_window->font().pointSizeF()});
    for (QWidget *child : m_window->findChildren<QWidget *>())
        m_fontSizes.append({child, child->font().pointSizeF()});
}

void lib_clsFormResizer::Resize()
{
    if (m_adjusting || !m_window || m_design.isEmpty())
        return;
    const QSize current = m_window->size();
    if (!m_previous.isValid()) {
        m_previous = current;
        return;
    }
    const QSize wanted = m_rules.enforce(m_design, m_previous, current);
    if (wanted != current) {
        m_adjusting = true;
        m_window->resize(wanted);
        m_adjusting = false;
        m_previous = wanted;
        return;
    }
    const double scale = WindowRules::fontScale(m_design, current);
    for (const auto &[w, designSize] : m_fontSizes) {
        if (!w || designSize <= 0)
            continue;
        QFont f = w->font();
        const qreal size = std::max<qreal>(1.0, designSize * scale);
        if (!qFuzzyCompare(f.pointSizeF(), size)) {
            f.setPointSizeF(size);
            w->setFont(f);
        }
    }
    m_previous = current;
}

bool lib_clsFormResizer::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Resize)
        Resize();
    return QObject::eventFilter(watched, event);
}

} // namespace quillet
