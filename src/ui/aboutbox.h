#pragma once

#include <QDialog>

namespace quillet {

// Help > About: the program's name and version, the Qt version it runs on, where its data lives
// and the licences of the program and of the libraries it ships with.
class AboutBox : public QDialog
{
    Q_OBJECT
public:
    explicit AboutBox(QWidget *parent = nullptr);

    // The box's text (rich text), also for tests.
    static QString text();
};

} // namespace quillet
