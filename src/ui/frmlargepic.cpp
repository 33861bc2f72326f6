#include "frmlargepic.h"

#include "formresizer.h"
#include "picturebox.h"

#include "app/settingsstore.h"
#include "app/startup.h"
#include "lib/apppaths.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

namespace quillet {

namespace {
const QString kNormal = QStringLiteral("FormRectEP1");
const QString kAlternate = QStringLiteral("FormRectEP2");

bool onSomeScreen(const QRect &rect)
{
    for (const QScreen *screen : QGuiApplication::screens()) {
        if (screen->availableGeometry().intersects(rect))
            return true;
    }
    return false;
}
} // namespace

QRect frmLargePic::FitInside(const QRect &rect, const QRect &available, const QMargins &frame)
{
    // The frame (title bar, borders) must fit as well: the inner rectangle gets what is left.
    const QRect inner = available.marginsRemoved(frame);
    QRect fitted(rect.topLeft(), rect.size().boundedTo(inner.size()));
    fitted.moveLeft(std::clamp(fitted.left(), inner.left(), inner.right() - fitted.width() + 1));
    fitted.moveTop(std::clamp(fitted.top(), inner.top(), inner.bottom() - fitted.height() + 1));
    return fitted;
}

frmLargePic::frmLargePic(QWidget *parent)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("frmLargePic"));
    setWindowTitle(QLatin1String(AppPaths::kTitle) + QStringLiteral(" - picture"));
    m_picture = new PictureBox(this);
    m_picture->setObjectName(QStringLiteral("imgLargePic"));
    m_picture->setToolTip(QStringLiteral("Dbl-click to switch between the normal and the alternate size"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_picture);
    resize(800, 600);
    auto *resizer = new lib_clsFormResizer(this);
    resizer->SetDefaults();
    connect(m_picture, &PictureBox::doubleClicked, this, &frmLargePic::toggleRectangle);
}

void frmLargePic::open()
{
    setWindowFlag(Qt::WindowStaysOnTopHint, ReadSetting(QStringLiteral("KeepLgPicOnTop")) == QLatin1String("1"));
    m_alternate = false;
    applyRectangle(kNormal);
    WriteSetting(QStringLiteral("FormOpenEP"), QStringLiteral("1"));
    show();
    raise();
}

bool frmLargePic::showFile(const QString &path)
{
    return m_picture->showFile(path);
}

void frmLargePic::clearPicture()
{
    m_picture->clearPicture();
}

void frmLargePic::SetPicSize()
{
    // The picture box fills the window by layout and centres the fitted picture in it.
    m_picture->refit();
}

void frmLargePic::applyRectangle(const QString &key)
{
    QRect rect = Startup::ParseFormRect(ReadSetting(key));
    if (rect.isValid() && !onSomeScreen(rect)) {
        // A rectangle from a screen that is gone would keep the window out of reach.
        WriteSetting(kNormal, QString());
        WriteSetting(kAlternate, QString());
        rect = QRect();
    }
    const QScreen *s = rect.isValid() ? QGuiApplication::screenAt(rect.center()) : nullptr;
    if (!s)
        s = parentWidget() ? parentWidget()->screen() : screen();
    if (!s) {
        SetPicSize();
        return;
    }
    if (!rect.isValid()) // the alternate size fills the screen, the first normal one is centred
        rect = key == kAlternate ? s->availableGeometry()
                                 : QRect(QPoint(), size()).translated(s->availableGeometry().center() - QRect(QPoint(), size()).center());
    setGeometry(FitInside(rect, s->availableGeometry(), frameMargins()));
    SetPicSize();
}

void frmLargePic::storeRectangle(const QString &key)
{
    const QString text = Startup::RectToStore(geometry(), isMinimized());
    if (!text.isEmpty())
        WriteSetting(key, text);
}

void frmLargePic::toggleRectangle()
{
    storeRectangle(m_alternate ? kAlternate : kNormal);
    m_alternate = !m_alternate;
    applyRectangle(m_alternate ? kAlternate : kNormal);
}

void frmLargePic::closeForShutdown()
{
    m_shuttingDown = true;
    close();
}

QMargins frmLargePic::frameMargins() const
{
    // Known once the window manager has framed the window; a usual title bar and border before.
    const QMargins known(geometry().left() - frameGeometry().left(), geometry().top() - frameGeometry().top(),
                         frameGeometry().right() - geometry().right(), frameGeometry().bottom() - geometry().bottom());
    return isVisible() && !known.isNull() ? known : QMargins(4, 30, 4, 4);
}

void frmLargePic::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        close(); // as the window's close button: back to the normal size first when enlarged
        return;
    }
    QWidget::keyPressEvent(event);
}

void frmLargePic::closeEvent(QCloseEvent *event)
{
    if (m_alternate && !m_shuttingDown) {
        storeRectangle(kAlternate);
        m_alternate = false;
        applyRectangle(kNormal);
        event->ignore();
        return;
    }
    storeRectangle(m_alternate ? kAlternate : kNormal);
    if (!m_shuttingDown)
        WriteSetting(QStringLiteral("FormOpenEP"), QStringLiteral("0"));
    event->accept();
}

} // namespace quillet
