#pragma once

#include "editor/ORVTextFinder.h"

#include <QPointer>
#include <QWidget>

class ORVMDTextView;
class QCheckBox;
class QLabel;
class QLineEdit;

// Find and replace for one editor: a bar with the needle, the replacement,
// case, whole word and regular expression switches, and a count of matches.
// Return finds the next match, Shift+Return the one before, Escape closes.
class ORVFindBar : public QWidget
{
    Q_OBJECT
public:
    explicit ORVFindBar(ORVMDTextView *view, QWidget *parent = nullptr);

    // Shows the bar with `needle` (when not empty) and focuses it.
    void showWithNeedle(const QString &needle);

    bool findNext(bool backwards = false);
    bool replaceOne();
    qsizetype replaceAll();

    QLineEdit *findField() const { return m_find; }
    QLineEdit *replaceField() const { return m_replace; }
    QString statusText() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    std::optional<QRegularExpression> pattern();
    void updateCount();

    QPointer<ORVMDTextView> m_view;
    QLineEdit *m_find;
    QLineEdit *m_replace;
    QCheckBox *m_case;
    QCheckBox *m_word;
    QCheckBox *m_regex;
    QLabel *m_status;
};
