#include "app/ORVFindBar.h"

#include "app/ORVMDTextView.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

ORVFindBar::ORVFindBar(ORVMDTextView *view, QWidget *parent) : QWidget(parent), m_view(view)
{
    m_find = new QLineEdit(this);
    m_find->setPlaceholderText(tr("Find"));
    m_find->setClearButtonEnabled(true);
    m_replace = new QLineEdit(this);
    m_replace->setPlaceholderText(tr("Replace"));
    m_case = new QCheckBox(tr("Aa"), this);
    m_case->setToolTip(tr("Match case"));
    m_word = new QCheckBox(tr("Word"), this);
    m_word->setToolTip(tr("Whole words"));
    m_regex = new QCheckBox(tr(".*"), this);
    m_regex->setToolTip(tr("Regular expression ($1 in the replacement)"));
    auto *previous = new QPushButton(tr("Previous"), this);
    auto *next = new QPushButton(tr("Next"), this);
    auto *replace = new QPushButton(tr("Replace"), this);
    auto *all = new QPushButton(tr("All"), this);
    auto *close = new QPushButton(tr("Done"), this);
    m_status = new QLabel(this);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(6, 4, 6, 4);
    row->addWidget(m_find, 2);
    row->addWidget(m_case);
    row->addWidget(m_word);
    row->addWidget(m_regex);
    row->addWidget(previous);
    row->addWidget(next);
    row->addWidget(m_replace, 2);
    row->addWidget(replace);
    row->addWidget(all);
    row->addWidget(m_status);
    row->addWidget(close);

    connect(m_find, &QLineEdit::textChanged, this, &ORVFindBar::updateCount);
    for (QCheckBox *box : {m_case, m_word, m_regex})
        connect(box, &QCheckBox::toggled, this, &ORVFindBar::updateCount);
    connect(m_find, &QLineEdit::returnPressed, this, [this] { findNext(false); });
    connect(m_replace, &QLineEdit::returnPressed, this, [this] { replaceOne(); });
    connect(previous, &QPushButton::clicked, this, [this] { findNext(true); });
    connect(next, &QPushButton::clicked, this, [this] { findNext(false); });
    connect(replace, &QPushButton::clicked, this, [this] { replaceOne(); });
    connect(all, &QPushButton::clicked, this, [this] { replaceAll(); });
    connect(close, &QPushButton::clicked, this, [this] {
        hide();
        if (m_view)
            m_view->setFocus();
    });
    if (m_view)
        connect(m_view, &ORVMDTextView::markdownTextChanged, this, [this] {
            if (isVisible())
                updateCount();
        });
}

void ORVFindBar::showWithNeedle(const QString &needle)
{
    if (!needle.isEmpty() && !needle.contains(QChar::ParagraphSeparator))
        m_find->setText(needle);
    show();
    m_find->setFocus();
    m_find->selectAll();
    updateCount();
}

std::optional<QRegularExpression> ORVFindBar::pattern()
{
    ORVFindOptions o;
    o.caseSensitive = m_case->isChecked();
    o.wholeWord = m_word->isChecked();
    o.regularExpression = m_regex->isChecked();
    QString error;
    auto re = ORVTextFinder::patternFor(m_find->text(), o, &error);
    if (!re && !m_find->text().isEmpty())
        m_status->setText(error);
    return re;
}

void ORVFindBar::updateCount()
{
    m_status->clear();
    if (!m_view)
        return;
    if (const auto re = pattern()) {
        const qsizetype n = ORVTextFinder::countMatches(m_view->markdownText(), *re);
        m_status->setText(n == 0 ? tr("Not found") : tr("%n match(es)", nullptr, int(n)));
    }
}

QString ORVFindBar::statusText() const { return m_status->text(); }

bool ORVFindBar::findNext(bool backwards)
{
    const auto re = pattern();
    if (!re || !m_view)
        return false;
    const ORVEditRange sel = m_view->textBuffer().selectedRange();
    const ORVEditRange found =
        ORVTextFinder::findNext(m_view->markdownText(), *re, backwards ? sel.location : sel.end(), backwards, true);
    if (found.location < 0) {
        m_status->setText(tr("Not found"));
        return false;
    }
    m_view->textBuffer().setSelectedRange(found);
    m_view->ensureCursorVisible();
    return true;
}

bool ORVFindBar::replaceOne()
{
    const auto re = pattern();
    if (!re || !m_view || m_view->isReadOnly())
        return false;
    ORVUndoGroup group(m_view->textBuffer());
    const bool replaced = ORVTextFinder::replaceSelectionAndFindNext(m_view->textBuffer(), *re, m_replace->text(),
                                                                     m_regex->isChecked(), true);
    m_view->ensureCursorVisible();
    return replaced;
}

qsizetype ORVFindBar::replaceAll()
{
    const auto re = pattern();
    if (!re || !m_view || m_view->isReadOnly())
        return 0;
    const qsizetype n = ORVTextFinder::replaceAll(m_view->textBuffer(), *re, m_replace->text(), m_regex->isChecked());
    m_status->setText(tr("%n replaced", nullptr, int(n)));
    return n;
}

void ORVFindBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        if (m_view)
            m_view->setFocus();
        return;
    }
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && (event->modifiers() & Qt::ShiftModifier)) {
        findNext(true);
        return;
    }
    QWidget::keyPressEvent(event);
}
