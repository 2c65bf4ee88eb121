#include "app/ORVPreferencesWindow.h"

#include "app/ORVAppShell.h"
#include "app/ORVLibraryWindow.h"
#include "app/ORVShellActions.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "core/ORVNotificationCenter.h"
#include "highlight/HGEditorThemes.h"
#include "library/ORVLibraryFolder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

QStringList previewStyleNames()
{
    QStringList names;
    for (const QString &folder : {ORVAppPaths::innerPreviewCSSFolderURL(), ORVAppPaths::applicationThemesDirectoryPreviewCSS()}) {
        const QStringList files = QDir(folder).entryList({QStringLiteral("*.css")}, QDir::Files, QDir::Name);
        for (const QString &file : files) {
            const QString name = QFileInfo(file).completeBaseName();
            if (!names.contains(name))
                names << name;
        }
    }
    return names;
}

QVariantList asValues(const QStringList &names)
{
    QVariantList values;
    for (const QString &n : names)
        values << n;
    return values;
}

QLabel *sectionNote(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

} // namespace

ORVPreferencesWindow::ORVPreferencesWindow(ORVAppShell *shell, AppDelegate *app, QWidget *parent)
    : QDialog(parent), m_shell(shell), m_app(app)
{
    setWindowTitle(tr("Preferences"));
    m_sidebar = new QListWidget(this);
    m_sidebar->setFixedWidth(170);
    m_sidebar->setIconSize(QSize(20, 20));
    m_sidebar->setFrameShape(QFrame::NoFrame);
    m_sidebar->setSpacing(1);
    // The side list takes the window's colour, in light and dark alike.
    m_sidebar->viewport()->setBackgroundRole(QPalette::Window);
    m_stack = new QStackedWidget(this);

    addPane(QStringLiteral("general"), tr("General"), QStringLiteral("preferences-system"), generalPane());
    addPane(QStringLiteral("editor"), tr("Editor"), QStringLiteral("accessories-text-editor"), editorPane());
    addPane(QStringLiteral("themes"), tr("Themes"), QStringLiteral("preferences-desktop-theme"), themesPane());
    addPane(QStringLiteral("markdown"), tr("Markdown"), QStringLiteral("text-x-generic"), markdownPane());
    addPane(QStringLiteral("preview"), tr("Preview"), QStringLiteral("document-preview"), previewPane());
    addPane(QStringLiteral("library"), tr("Library"), QStringLiteral("folder-documents"), libraryPane());
    addPane(QStringLiteral("backup"), tr("Backup"), QStringLiteral("document-save-all"), backupPane());

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_sidebar);
    layout->addWidget(m_stack, 1);
    connect(m_sidebar, &QListWidget::currentRowChanged, m_stack, &QStackedWidget::setCurrentIndex);
    m_sidebar->setCurrentRow(0);

    ORVNotificationCenter::defaultCenter()->addObserver(PAPreferencesDidChangeNotification, this,
                                                        [this](const ORVNotification &n) {
                                                            refreshControl(n.userInfo.value(QStringLiteral("key")).toString());
                                                        });
    resize(720, 520);
}

void ORVPreferencesWindow::addPane(const QString &name, const QString &title, const QString &icon, QWidget *pane)
{
    auto *item = new QListWidgetItem(QIcon::fromTheme(icon), title, m_sidebar);
    item->setSizeHint(QSize(160, 32));
    auto *holder = new QWidget(m_stack);
    auto *column = new QVBoxLayout(holder);
    column->setContentsMargins(24, 18, 24, 18);
    auto *heading = new QLabel(title, holder);
    QFont f = heading->font();
    f.setPointSizeF(f.pointSizeF() * 1.35);
    f.setBold(true);
    heading->setFont(f);
    column->addWidget(heading);
    column->addSpacing(8);
    column->addWidget(pane);
    column->addStretch(1);
    m_stack->addWidget(holder);
    m_paneNames << name;
}

bool ORVPreferencesWindow::showPane(const QString &name)
{
    const qsizetype at = m_paneNames.indexOf(name);
    if (at < 0)
        return false;
    m_sidebar->setCurrentRow(int(at));
    return true;
}

QString ORVPreferencesWindow::currentPane() const { return m_paneNames.value(m_stack->currentIndex()); }

void ORVPreferencesWindow::setMessage(const QString &message)
{
    m_libraryMessage->setText(message);
    m_libraryMessage->setVisible(!message.isEmpty());
    refreshLibraryPane();
}

QString ORVPreferencesWindow::message() const { return m_libraryMessage->isHidden() ? QString() : m_libraryMessage->text(); }

// ---- Bound controls

QWidget *ORVPreferencesWindow::check(const QString &key, const QString &text)
{
    auto *box = new QCheckBox(text);
    m_controls.insert(key, box);
    refreshControl(key);
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) {
        if (m_refreshing)
            return;
        m_app->prfs()->setValue(key, on);
        m_app->prfs()->synchronize();
    });
    return box;
}

QWidget *ORVPreferencesWindow::spin(const QString &key, int min, int max, const QString &suffix)
{
    auto *box = new QSpinBox;
    box->setRange(min, max);
    box->setSuffix(suffix);
    box->setKeyboardTracking(false);
    m_controls.insert(key, box);
    refreshControl(key);
    connect(box, &QSpinBox::valueChanged, this, [this, key](int value) {
        if (m_refreshing)
            return;
        m_app->prfs()->setValue(key, qint64(value));
        m_app->prfs()->synchronize();
    });
    return box;
}

QWidget *ORVPreferencesWindow::combo(const QString &key, const QStringList &labels, const QVariantList &values)
{
    auto *box = new QComboBox;
    for (qsizetype i = 0; i < labels.size(); ++i)
        box->addItem(labels[i], values.value(i));
    m_controls.insert(key, box);
    refreshControl(key);
    connect(box, &QComboBox::currentIndexChanged, this, [this, key, box](int index) {
        if (m_refreshing || index < 0)
            return;
        m_app->prfs()->setValue(key, box->itemData(index));
        m_app->prfs()->synchronize();
    });
    return box;
}

void ORVPreferencesWindow::refreshControl(const QString &key)
{
    QWidget *control = m_controls.value(key);
    if (!control)
        return;
    m_refreshing = true;
    const QVariant value = m_app->prfs()->value(key);
    if (auto *box = qobject_cast<QCheckBox *>(control)) {
        box->setChecked(value.toBool());
    } else if (auto *box = qobject_cast<QSpinBox *>(control)) {
        box->setValue(value.toInt());
    } else if (auto *box = qobject_cast<QComboBox *>(control)) {
        int at = -1;
        for (int i = 0; i < box->count(); ++i)
            if (box->itemData(i).toString() == value.toString())
                at = i;
        if (at < 0 && value.typeId() == QMetaType::QString && !value.toString().isEmpty()) {
            // A value from elsewhere (a theme since removed) still shows.
            box->addItem(value.toString(), value);
            at = box->count() - 1;
        }
        box->setCurrentIndex(std::max(at, 0));
    }
    m_refreshing = false;
}

// ---- Panes

QWidget *ORVPreferencesWindow::generalPane()
{
    auto *pane = new QWidget;
    auto *form = new QFormLayout(pane);
    form->addRow(tr("At start, open:"), combo(QStringLiteral("isLauchExternalModeFirst"),
                                              {tr("The library"), tr("The folders")}, {false, true}));
    form->addRow(QString(), check(QStringLiteral("isDarkThemes"), tr("Use the dark theme")));
    form->addRow(tr("Document list shows:"),
                 combo(QStringLiteral("documentListDisplayType"),
                       {tr("Title, Date and Summary"), tr("Title and Date"), tr("Title Only")},
                       {qint64(0), qint64(1), qint64(2)}));
    QStringList orderLabels;
    QVariantList orderValues;
    for (quint64 order : {0, 1, 3, 4, 5, 6}) {
        orderLabels << ORVShellActions::sortOrderLabel(order);
        orderValues << qint64(order);
    }
    form->addRow(tr("Sort documents by:"), combo(QStringLiteral("libraryDefaultSortType"), orderLabels, orderValues));
    form->addRow(QString(), check(QStringLiteral("isGroupLibDocumentsList"), tr("Group category lists by sub-category")));
    form->addRow(tr("Date in the list:"), [this] {
        auto *edit = new QLineEdit;
        edit->setText(m_app->prfs()->documentListDateformat());
        edit->setPlaceholderText(QStringLiteral("M/d/yyyy H:m aa"));
        connect(edit, &QLineEdit::editingFinished, this, [this, edit] {
            m_app->prfs()->setDocumentListDateformat(edit->text());
            m_app->prfs()->synchronize();
        });
        return edit;
    }());
    return pane;
}

QWidget *ORVPreferencesWindow::editorPane()
{
    auto *pane = new QWidget;
    auto *form = new QFormLayout(pane);
    auto *font = new QFontComboBox;
    font->setCurrentFont(QFont(m_app->prfs()->editorFontName()));
    auto *size = new QSpinBox;
    size->setRange(8, 72);
    size->setValue(int(m_app->prfs()->editorFontSize()));
    const auto writeFont = [this, font, size] {
        QVariantMap info{{QStringLiteral("name"), font->currentFont().family()},
                         {QStringLiteral("size"), double(size->value())}};
        m_app->prfs()->setEditorFontInfo(info);
        m_app->prfs()->synchronize();
    };
    connect(font, &QFontComboBox::currentFontChanged, this, writeFont);
    connect(size, &QSpinBox::valueChanged, this, writeFont);
    auto *fontRow = new QHBoxLayout;
    fontRow->addWidget(font, 1);
    fontRow->addWidget(size);
    form->addRow(tr("Font:"), fontRow);
    form->addRow(tr("Line spacing:"), spin(QStringLiteral("editorLineSpacing"), 0, 40, tr(" px")));
    form->addRow(tr("Text width:"), spin(QStringLiteral("editorContentMaxWidth"), 0, 4000, tr(" px")));
    form->addRow(tr("Side margin:"), spin(QStringLiteral("editorTextInsetsH"), 0, 400, tr(" px")));
    form->addRow(tr("Top and bottom margin:"), spin(QStringLiteral("editorTextInsetsV"), 0, 400, tr(" px")));
    form->addRow(QString(), check(QStringLiteral("changeCurrentLineBGColor"), tr("Highlight the current line")));
    form->addRow(QString(), check(QStringLiteral("isSpaceInsteadTabs"), tr("Insert spaces for Tab")));
    form->addRow(tr("Typewriter scrolling:"),
                 combo(QStringLiteral("typewriterScrollingState"), {tr("Off"), tr("On")}, {qint64(0), qint64(1)}));
    form->addRow(QString(), check(QStringLiteral("isMakeLinksClickableInEditor"), tr("Ctrl-click opens links")));
    form->addRow(QString(), check(QStringLiteral("isDisableAutoCorrectOrderListNumber"),
                                  tr("Leave ordered list numbers as typed")));
    form->addRow(QString(), check(QStringLiteral("isContinuousSpellCheckingEnabled"), tr("Check spelling while typing")));
    return pane;
}

QWidget *ORVPreferencesWindow::themesPane()
{
    auto *pane = new QWidget;
    auto *form = new QFormLayout(pane);
    const QStringList editorThemes = HGEditorThemes::availableThemeNames();
    form->addRow(tr("Editor theme:"), combo(QStringLiteral("editorThemeName"), editorThemes, asValues(editorThemes)));
    form->addRow(tr("Editor theme, dark:"),
                 combo(QStringLiteral("editorDarkThemeName"), editorThemes, asValues(editorThemes)));
    const QStringList styles = previewStyleNames();
    form->addRow(tr("Preview style:"), combo(QStringLiteral("previewCSSName"), styles, asValues(styles)));
    form->addRow(tr("Preview style, dark:"), combo(QStringLiteral("previewDarkCSSName"), styles, asValues(styles)));
    form->addRow(QString(), sectionNote(tr("Your own themes go in %1 and %2.")
                                            .arg(QDir::toNativeSeparators(ORVAppPaths::applicationThemesDirectoryEditorThemes()),
                                                 QDir::toNativeSeparators(ORVAppPaths::applicationThemesDirectoryPreviewCSS())),
                                        pane));
    return pane;
}

QWidget *ORVPreferencesWindow::markdownPane()
{
    auto *pane = new QWidget;
    auto *column = new QVBoxLayout(pane);
    column->addWidget(check(QStringLiteral("isTranslateNewlineToBRtags"), tr("A line break is a new line (<br>)")));
    column->addWidget(check(QStringLiteral("isSmartypants"), tr("Typographic quotes and dashes")));
    column->addWidget(check(QStringLiteral("isRenderTOC"), tr("Render [TOC] as a table of contents")));
    column->addWidget(check(QStringLiteral("isEnableMath"), tr("Math (TeX between $ and $$)")));
    column->addWidget(check(QStringLiteral("isDisableAutolink"), tr("Do not turn web addresses into links")));
    column->addWidget(check(QStringLiteral("isEnableImgTagToFigureTag"), tr("Images with a title become figures")));
    column->addWidget(check(QStringLiteral("isEnableCodeblockLineNumber"), tr("Line numbers in code blocks")));
    return pane;
}

QWidget *ORVPreferencesWindow::previewPane()
{
    auto *pane = new QWidget;
    auto *form = new QFormLayout(pane);
    form->addRow(QString(), check(QStringLiteral("isLivePreviewSync"), tr("Scroll the preview with the editor")));
    form->addRow(QString(), check(QStringLiteral("isShowLocalPictrueInEditor"), tr("Show local images in the editor")));
    form->addRow(QString(), check(QStringLiteral("isDisableEditorMathJaxPreview"), tr("Do not render math in the preview")));
    form->addRow(tr("Math font:"), combo(QStringLiteral("latexFontName"), {QStringLiteral("Latin-Modern"), QStringLiteral("TeX"), QStringLiteral("STIX-Web"), QStringLiteral("Neo-Euler")},
                                         asValues({QStringLiteral("Latin-Modern"), QStringLiteral("TeX"), QStringLiteral("STIX-Web"), QStringLiteral("Neo-Euler")})));
    form->addRow(tr("Default view:"), combo(QStringLiteral("editorAreaViewState"),
                                           {tr("Editor and Preview"), tr("Editor Only"), tr("Preview Only")},
                                           {qint64(0), qint64(1), qint64(2)}));
    return pane;
}

QWidget *ORVPreferencesWindow::libraryPane()
{
    auto *pane = new QWidget;
    auto *column = new QVBoxLayout(pane);
    m_libraryMessage = new QLabel(pane);
    m_libraryMessage->setWordWrap(true);
    m_libraryMessage->setObjectName(QStringLiteral("libraryMessage"));
    m_libraryMessage->setAutoFillBackground(true);
    QPalette warn = m_libraryMessage->palette();
    warn.setColor(QPalette::Window, QColor(0xff, 0xf4, 0xe5));
    warn.setColor(QPalette::WindowText, QColor(0x66, 0x3c, 0x00));
    m_libraryMessage->setPalette(warn);
    m_libraryMessage->setMargin(10);
    m_libraryMessage->hide();
    column->addWidget(m_libraryMessage);
    auto *form = new QFormLayout;
    m_libraryPath = new QLabel(pane);
    m_libraryPath->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_libraryPath->setWordWrap(true);
    form->addRow(tr("Location:"), m_libraryPath);
    column->addLayout(form);
    auto *buttons = new QHBoxLayout;
    auto *choose = new QPushButton(tr("Choose Library…"), pane);
    auto *make = new QPushButton(tr("New Library…"), pane);
    buttons->addWidget(choose);
    buttons->addWidget(make);
    buttons->addStretch(1);
    column->addLayout(buttons);
    column->addWidget(sectionNote(tr("Choose a folder that holds a library to switch to it, or make a new library in "
                                     "an empty folder. Open documents are saved first."),
                                  pane));
    const auto pick = [this](bool create) {
        const QString folder = QFileDialog::getExistingDirectory(this, create ? tr("New Library") : tr("Choose Library"));
        if (folder.isEmpty())
            return;
        QString error;
        if (!switchLibrary(folder, create, &error))
            QMessageBox::warning(this, tr("Error:"), error);
    };
    connect(choose, &QPushButton::clicked, this, [pick] { pick(false); });
    connect(make, &QPushButton::clicked, this, [pick] { pick(true); });
    refreshLibraryPane();
    return pane;
}

void ORVPreferencesWindow::refreshLibraryPane()
{
    if (!m_libraryPath)
        return;
    const QString main = m_app->libraryModeMainURL();
    m_libraryPath->setText(main.isEmpty() ? tr("No library chosen") : QDir::toNativeSeparators(main));
}

bool ORVPreferencesWindow::switchLibrary(const QString &folder, bool create, QString *error)
{
    QString reason;
    const QString path = QFileInfo(folder).absoluteFilePath();
    if (!ORVLibraryFolder::checkIsLibraryWithURL(path)) {
        if (!create) {
            if (error)
                *error = tr("%1 holds no Orvo library. Choose another folder, or make a new library there.").arg(path);
            return false;
        }
        if (!ORVLibraryFolder::libraryModeSetupMainDatabase(path, AppDelegate::fetchWelcomeContent(), &reason)) {
            if (error)
                *error = tr("The library could not be made in %1: %2").arg(path, reason);
            return false;
        }
    }
    if (m_shell && !m_shell->saveAllDocuments())
        return false;
    if (m_shell && !m_shell->closeLibraryWindowsForSwitch())
        return false;
    if (!m_app->setLibraryModeMainURL(path, &reason)) {
        if (error)
            *error = reason;
        return false;
    }
    m_app->prfs()->setIsAppInstalled(true);
    m_app->prfs()->synchronize();
    setMessage(QString());
    if (m_shell)
        m_shell->showLibraryWindow();
    return true;
}

QWidget *ORVPreferencesWindow::backupPane()
{
    auto *pane = new QWidget;
    auto *form = new QFormLayout(pane);
    form->addRow(tr("Back up every:"), spin(QStringLiteral("backupPerMinutes"), 0, 24 * 60, tr(" minutes")));
    form->addRow(QString(), sectionNote(tr("0 turns the backup off. Backups copy the whole library folder."), pane));
    const QDateTime last = m_app->prfs()->backupLastBackupDate();
    form->addRow(tr("Last backup:"), new QLabel(last.isValid() ? QLocale().toString(last.toLocalTime(), QLocale::LongFormat)
                                                               : tr("Never"),
                                                pane));
    return pane;
}
