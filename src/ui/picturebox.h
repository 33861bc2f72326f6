#pragma once

#include <QImage>
#include <QLabel>

namespace quillet {

// Shows one picture scaled to the largest size that fits, aspect ratio kept and centred, and
// reports double clicks. Pictures are decoded at the size they are shown, so a 12-megapixel photo
// costs a fraction of a full decode.
class PictureBox : public QLabel
{
    Q_OBJECT
public:
    explicit PictureBox(QWidget *parent = nullptr);

    // Loads and shows a file; false (and an empty box) when it cannot be read.
    bool showFile(const QString &path);
    void showImage(const QImage &image);
    void clearPicture();
    bool hasPicture() const { return !m_source.isNull() || !m_path.isEmpty(); }
    const QString &path() const { return m_path; }

    // Fits the picture to the box's present size again.
    void refit();

    // The size a picture of `picture` takes inside `area`: the longer side fills it.
    static QSize fittedSize(const QSize &picture, const QSize &area);
    // Decodes a file at about the size it will be shown (never larger than the original).
    static QImage loadScaled(const QString &path, const QSize &area);

Q_SIGNALS:
    void doubleClicked();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    QString m_path;
    QImage m_source;
    QSize m_originalSize;
};

} // namespace quillet
