#pragma once

#include <QMargins>
#include <QRect>
#include <QWidget>

namespace quillet {

class PictureBox;

// The resizable window that shows the current photo large. It keeps two rectangles, the normal
// one (FormRectEP1) and an alternate one (FormRectEP2), switched by double-clicking the picture;
// closing it in the alternate rectangle returns it to the normal one instead.
class frmLargePic : public QWidget
{
    Q_OBJECT
public:
    explicit frmLargePic(QWidget *parent = nullptr);

    // Shows the window at its normal rectangle and remembers that it is open (FormOpenEP).
    void open();
    // Shows a file (or clears the picture when it cannot be read).
    bool showFile(const QString &path);
    void clearPicture();
    // Fits the picture into the window, centred.
    void SetPicSize();
    bool isAlternate() const { return m_alternate; }
    // Closes as the application ends: FormOpenEP keeps saying the window was open.
    void closeForShutdown();

    PictureBox *picture() const { return m_picture; }

    // `rect` moved and, if need be, shrunk so that it and its window frame lie inside `available`.
    static QRect FitInside(const QRect &rect, const QRect &available, const QMargins &frame);

protected:
    void closeEvent(QCloseEvent *event) override;
    // Escape closes the window, as its close button does.
    void keyPressEvent(QKeyEvent *event) override;

private:
    void toggleRectangle();
    void applyRectangle(const QString &key);
    void storeRectangle(const QString &key);
    QMargins frameMargins() const;

    PictureBox *m_picture = nullptr;
    bool m_alternate = false;
    bool m_shuttingDown = false;
};

} // namespace quillet
