#include "picturebox.h"

#include <QImageReader>
#include <QMouseEvent>
#include <QPixmap>

namespace quillet {

PictureBox::PictureBox(QWidget *parent)
    : QLabel(parent)
{
    setAlignment(Qt::AlignCenter);
    setMinimumSize(64, 64);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
}

QSize PictureBox::fittedSize(const QSize &picture, const QSize &area)
{
    if (picture.isEmpty() || area.isEmpty())
        return QSize();
    return picture.scaled(area, Qt::KeepAspectRatio);
}

QImage PictureBox::loadScaled(const QString &path, const QSize &area)
{
    QImageReader reader(path);
    reader.setAutoTransform(false); // the file's pixels as they are: rotation is the user's command
    const QSize full = reader.size();
    if (full.isValid() && !area.isEmpty()) {
        // Decoding at twice the shown size keeps the picture sharp on enlargement of the window.
        const QSize wanted = fittedSize(full, area * 2);
        if (wanted.width() < full.width())
            reader.setScaledSize(wanted);
    }
    return reader.read();
}

bool PictureBox::showFile(const QString &path)
{
    QImageReader probe(path);
    m_originalSize = probe.size();
    const QImage image = loadScaled(path, contentsRect().size());
    if (image.isNull()) {
        clearPicture();
        return false;
    }
    m_source = image;
    m_path = path;
    refit();
    return true;
}

void PictureBox::showImage(const QImage &image)
{
    m_path.clear();
    m_source = image;
    refit();
}

void PictureBox::clearPicture()
{
    m_source = QImage();
    m_path.clear();
    clear();
}

void PictureBox::refit()
{
    if (m_source.isNull())
        return;
    // A box that grew past the decoded size gets the file decoded again at the new size.
    if (!m_path.isEmpty() && m_originalSize.isValid()
        && fittedSize(m_source.size(), contentsRect().size()).width() > m_source.width()
        && m_source.width() < m_originalSize.width())
        m_source = loadScaled(m_path, contentsRect().size());
    // The frame takes its share of the box: fit inside what is left.
    const QSize target = fittedSize(m_source.size(), contentsRect().size());
    if (target.isEmpty())
        return;
    setPixmap(QPixmap::fromImage(m_source.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
}

void PictureBox::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    refit();
}

void PictureBox::mouseDoubleClickEvent(QMouseEvent *event)
{
    Q_EMIT doubleClicked();
    event->accept();
}

} // namespace quillet
