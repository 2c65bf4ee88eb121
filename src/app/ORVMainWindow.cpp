#include "app/ORVMainWindow.h"

#include <QLabel>

ORVMainWindow::ORVMainWindow(QWidget *parent) : QMainWindow(parent)
{
    setWindowTitle(QStringLiteral("Orvo"));
    auto *label = new QLabel(tr("Orvo"), this);
    label->setAlignment(Qt::AlignCenter);
    setCentralWidget(label);
    resize(1100, 720);
}
