#include "frmmsgbox.h"

#include "applicationwindow.h"

#include <QApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>
#include <QtMath>

#include <memory>

namespace quillet {

namespace {

// How much of the screen a message may take before it scrolls.
constexpr double kMaxWidthShare = 0.5;
constexpr double kMaxHeightShare = 0.6;
// Width of the text in average characters: a short message is not squeezed, a long line wraps.
constexpr int kMinChars = 36;
constexpr int kMaxChars = 90;

QLabel *iconLabel(QWidget *parent, const char *name, QStyle::StandardPixmap icon)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    const int size = parent->style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, parent);
    label->setPixmap(parent->style()->standardIcon(icon, nullptr, parent).pixmap(size, size));
    label->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    label->hide();
    return label;
}

QPushButton *button(QWidget *parent, const char *name, const QString &text)
{
    auto *b = new QPushButton(text, parent);
    b->setObjectName(QLatin1String(name));
    b->setAutoDefault(true);
    return b;
}

} // namespace

frmMsgBox::frmMsgBox(const QString &request, bool answer, QWidget *parent)
    : QDialog(parent)
    , m_request(MsgBoxRequest::parse(request))
    , m_answer(answer)
{
    setObjectName(QStringLiteral("frmMsgBox"));
    setModal(true);
    setWindowTitle(applicationWindowTitle());
    buildControls();
    // The box shows its text with the platform's line breaks; the request keeps CR LF.
    m_txtMessage->setPlainText(QString(m_request.text()).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    applyStyle();
    fitToText();
    startCountdown();
}

frmMsgBox::~frmMsgBox()
{
    if (m_arrowPushed)
        QGuiApplication::restoreOverrideCursor();
}

bool frmMsgBox::ask(const QString &request, bool answer, QWidget *parent, const UserPrompt::MessageAction &action)
{
    // On the heap: the owner window may go away while the box runs its own event loop.
    QPointer<frmMsgBox> box = new frmMsgBox(request, answer, parent);
    if (action.run)
        box->setAction(action);
    box->exec();
    if (!box)
        return answer;
    const bool result = box->answer();
    delete box;
    return result;
}

void frmMsgBox::setAction(const UserPrompt::MessageAction &action)
{
    m_action = action.run;
    m_cmdAction->setText(action.caption);
    m_cmdAction->setVisible(bool(m_action));
}

void frmMsgBox::buildControls()
{
    m_txtMessage = new QTextEdit(this);
    m_txtMessage->setObjectName(QStringLiteral("txtMessage"));
    m_txtMessage->setReadOnly(true);
    m_txtMessage->setFrameShape(QFrame::NoFrame);
    m_txtMessage->setFocusPolicy(Qt::ClickFocus);
    m_txtMessage->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_txtMessage->setAcceptRichText(false);
    m_txtMessage->setLineWrapMode(QTextEdit::WidgetWidth);
    // Read as a message, not as an input field.
    m_txtMessage->viewport()->setBackgroundRole(QPalette::Window);
    m_txtMessage->viewport()->setAutoFillBackground(false);

    m_picCritical = iconLabel(this, "picCritical", QStyle::SP_MessageBoxCritical);
    m_picExclamation = iconLabel(this, "picExclamation", QStyle::SP_MessageBoxWarning);
    m_picInformation = iconLabel(this, "picInformation", QStyle::SP_MessageBoxInformation);
    m_picQuestion = iconLabel(this, "picQuestion", QStyle::SP_MessageBoxQuestion);
    auto *icons = new QVBoxLayout;
    for (QLabel *pic : {m_picCritical, m_picExclamation, m_picInformation, m_picQuestion})
        icons->addWidget(pic);
    icons->addStretch();
    // Keeps the text clear of the icon without widening the gaps between the buttons.
    icons->setContentsMargins(0, 0, 10, 0);

    m_timTimer = new QTimer(this);
    m_timTimer->setObjectName(QStringLiteral("timTimer"));
    m_timTimer->setInterval(1000);
    connect(m_timTimer, &QTimer::timeout, this, &frmMsgBox::tick);

    auto *grid = new QGridLayout(this);
    grid->addLayout(icons, 0, 0);
    grid->addWidget(m_txtMessage, 0, 1);
    grid->addLayout(buildButtonRow(), 1, 0, 1, 2);
    grid->setRowStretch(0, 1);
    grid->setColumnStretch(1, 1);
}

QLayout *frmMsgBox::buildButtonRow()
{
    m_cmdPrint = button(this, "cmdPrint", QStringLiteral("&Print"));
    m_cmdYes = button(this, "cmdYes", QStringLiteral("&Yes"));
    m_cmdNo = button(this, "cmdNo", QStringLiteral("&No"));
    m_cmdOk = button(this, "cmdOk", QStringLiteral("&OK"));
    m_cmdAction = button(this, "cmdAction", QString());
    m_cmdAction->hide();
    m_lblCountDown = new QLabel(this);
    m_lblCountDown->setObjectName(QStringLiteral("lblCountDown"));
    m_lblCountDown->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_lblCountDown->setToolTip(QStringLiteral("Seconds until this message closes by itself (Esc stops)"));

    connect(m_cmdOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cmdYes, &QPushButton::clicked, this, [this] {
        m_answer = true;
        accept();
    });
    connect(m_cmdNo, &QPushButton::clicked, this, [this] {
        m_answer = false;
        accept();
    });
    connect(m_cmdPrint, &QPushButton::clicked, this, &frmMsgBox::printMessage);
    connect(m_cmdAction, &QPushButton::clicked, this, [this] {
        // The user is busy with what the action shows: the box must not close under it.
        stopCountdown();
        if (m_action)
            m_action();
    });

    auto *row = new QHBoxLayout;
    row->addWidget(m_cmdPrint);
    row->addWidget(m_cmdAction);
    row->addStretch();
    row->addWidget(m_lblCountDown);
    row->addSpacing(6);
    row->addWidget(m_cmdYes);
    row->addWidget(m_cmdNo);
    row->addWidget(m_cmdOk);
    return row;
}

void frmMsgBox::applyStyle()
{
    const int style = m_request.style();
    m_picCritical->setVisible(style == 1);
    m_picExclamation->setVisible(style == 2);
    m_picInformation->setVisible(style == 3);
    m_picQuestion->setVisible(m_request.isQuestion());
    m_cmdOk->setVisible(!m_request.isQuestion());
    m_cmdYes->setVisible(m_request.isQuestion());
    m_cmdNo->setVisible(m_request.isQuestion());

    QPushButton *defaultButton = m_cmdOk;
    if (style == 4) {
        m_answer = true;
        defaultButton = m_cmdYes;
    } else if (style == 5) {
        m_answer = false;
        defaultButton = m_cmdNo;
    }
    defaultButton->setDefault(true);
    defaultButton->setFocus();
}

// Sizes the text box to its text: wide enough for the longest line within a share of the screen,
// tall enough for every line, then scrolling.
void frmMsgBox::fitToText()
{
    const QFontMetrics fm(m_txtMessage->font());
    const QScreen *screen = parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
    const int charWidth = qMax(1, fm.averageCharWidth());
    const int margin = qRound(m_txtMessage->document()->documentMargin());

    int longest = 0;
    for (const QString &line : m_txtMessage->toPlainText().split(QLatin1Char('\n')))
        longest = qMax(longest, fm.horizontalAdvance(line));
    const int minWidth = kMinChars * charWidth;
    const int maxWidth = qMax(minWidth, qMin(int(area.width() * kMaxWidthShare), kMaxChars * charWidth));
    int width = qBound(minWidth, longest + charWidth, maxWidth) + 2 * margin;

    // The character count of a line is a floor; word wrapping can need more lines, so the
    // laid-out text decides when it is taller. The text box lays out its own document only once
    // it has a size, so a copy of it is measured at the width it will have. Two pixels of slack
    // keep rounding from bringing up a scroll bar for a text that fits.
    const int lines = MsgBoxRequest::lineCount(m_request.text(), (width - 2 * margin) / charWidth);
    const std::unique_ptr<QTextDocument> document(m_txtMessage->document()->clone());
    document->setTextWidth(width);
    const int textHeight = qMax(lines * fm.lineSpacing() + 2 * margin, qCeil(document->size().height())) + 2;
    const int maxHeight = int(area.height() * kMaxHeightShare);
    if (textHeight > maxHeight) {
        // Scrolling: room for the scroll bar so the lines wrap where they were measured, and a
        // frame to show that there is more.
        m_txtMessage->setFrameShape(QFrame::StyledPanel);
        width += style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, m_txtMessage)
            + 2 * m_txtMessage->frameWidth();
    }

    // A message box is not resized by hand: its size is the text's.
    m_txtMessage->setFixedSize(width, qMin(textHeight, maxHeight));
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void frmMsgBox::startCountdown()
{
    const int seconds = m_request.countdown();
    m_lblCountDown->setText(QString::number(seconds));
    if (seconds == 0) {
        m_lblCountDown->hide();
        return;
    }
    m_timTimer->start();
}

void frmMsgBox::stopCountdown()
{
    m_timTimer->stop();
    m_lblCountDown->hide();
}

void frmMsgBox::tick()
{
    const int remaining = m_lblCountDown->text().toInt() - 1;
    m_lblCountDown->setText(QString::number(remaining));
    if (remaining < 1)
        accept();
}

void frmMsgBox::done(int result)
{
    m_timTimer->stop();
    m_lblCountDown->setText(QStringLiteral("0"));
    QDialog::done(result);
}

void frmMsgBox::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        stopCountdown();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frmMsgBox::showEvent(QShowEvent *event)
{
    // A message often comes in the middle of busy work: the user needs the normal pointer to
    // answer it, and gets the busy one back when the box closes.
    if (!m_arrowPushed) {
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
        m_arrowPushed = true;
    }
    QDialog::showEvent(event);
}

void frmMsgBox::hideEvent(QHideEvent *event)
{
    if (m_arrowPushed) {
        QGuiApplication::restoreOverrideCursor();
        m_arrowPushed = false;
    }
    QDialog::hideEvent(event);
}

void frmMsgBox::printMessage()
{
    // Printing takes the user's time: the box must not close under the print dialog.
    stopCountdown();
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(QStringLiteral("Print"));
    if (dialog.exec() != QDialog::Accepted)
        return;
    QTextDocument document;
    document.setPlainText(windowTitle() + QStringLiteral("\n\n") + m_txtMessage->toPlainText());
    document.print(&printer);
}

} // namespace quillet
