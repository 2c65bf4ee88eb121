#pragma once

#include <QMainWindow>

// The first window of the desktop app.
class ORVMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit ORVMainWindow(QWidget *parent = nullptr);
};
