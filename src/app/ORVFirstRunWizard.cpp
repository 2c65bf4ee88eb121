#include "app/ORVFirstRunWizard.h"

#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "library/ORVLibraryFolder.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

ORVFirstRunWizard::ORVFirstRunWizard(AppDelegate *app, QWidget *parent) : QWizard(parent), m_app(app)
{
    setWindowTitle(tr("Welcome to Orvo"));
    setWizardStyle(QWizard::ModernStyle);
    setOption(QWizard::NoBackButtonOnLastPage, false);
    setOption(QWizard::NoCancelButtonOnLastPage, false);
    setButtonText(QWizard::FinishButton, tr("Start Using Orvo"));

    auto *place = new QWizardPage(this);
    place->setTitle(tr("Where should your library live?"));
    place->setSubTitle(tr("Orvo keeps your documents in a library: a folder with one Markdown file per document "
                          "and a small database for categories and tags."));
    m_location = new QLineEdit(place);
    m_location->setReadOnly(true);
    m_location->setText(QDir::toNativeSeparators(defaultLibraryLocation()));
    auto *choose = new QPushButton(tr("Choose…"), place);
    connect(choose, &QPushButton::clicked, this, &ORVFirstRunWizard::chooseFolder);
    m_note = new QLabel(place);
    m_note->setWordWrap(true);
    auto *row = new QHBoxLayout;
    row->addWidget(m_location, 1);
    row->addWidget(choose);
    auto *placeLayout = new QVBoxLayout(place);
    placeLayout->addWidget(new QLabel(tr("Library location:"), place));
    placeLayout->addLayout(row);
    placeLayout->addWidget(m_note);
    placeLayout->addStretch(1);
    addPage(place);

    auto *start = new QWizardPage(this);
    start->setTitle(tr("Ready to write"));
    m_summary = new QLabel(start);
    m_summary->setWordWrap(true);
    m_failure = new QLabel(start);
    m_failure->setWordWrap(true);
    m_failure->setStyleSheet(QStringLiteral("color:#b3261e;"));
    m_failure->hide();
    auto *startLayout = new QVBoxLayout(start);
    startLayout->addWidget(m_summary);
    startLayout->addWidget(m_failure);
    startLayout->addStretch(1);
    addPage(start);
    start->setFinalPage(true);

    connect(this, &QWizard::currentIdChanged, this, [this](int) { updateLocationNote(); });
    updateLocationNote();
    resize(620, 420);
}

QString ORVFirstRunWizard::defaultLibraryLocation()
{
    // Proposed, not made: the folder appears only when the user starts.
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(documents.isEmpty() ? QDir::homePath() : documents).filePath(QStringLiteral("mainlib"));
}

QString ORVFirstRunWizard::libraryLocation() const { return QDir::fromNativeSeparators(m_location->text()); }

bool ORVFirstRunWizard::setLibraryLocation(const QString &path, bool confirmExisting)
{
    if (path.isEmpty())
        return false;
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (confirmExisting && ORVLibraryFolder::checkIsLibraryWithURL(absolute)) {
        const auto answer = QMessageBox::question(
            this, tr("This folder holds a library"),
            tr("The folder you chose already holds an Orvo library. Use it as it is?"),
            QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok);
        if (answer != QMessageBox::Ok)
            return false;
    }
    m_location->setText(QDir::toNativeSeparators(absolute));
    updateLocationNote();
    return true;
}

void ORVFirstRunWizard::chooseFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Choose the Library Folder"), libraryLocation());
    if (!folder.isEmpty())
        setLibraryLocation(folder, true);
}

void ORVFirstRunWizard::updateLocationNote()
{
    const QString path = libraryLocation();
    const bool isLibrary = ORVLibraryFolder::checkIsLibraryWithURL(path);
    m_note->setText(isLibrary ? tr("This folder already holds a library; Orvo will open it as it is.")
                              : tr("A new library will be made in this folder."));
    m_summary->setText(isLibrary ? tr("Orvo will open the library in\n%1").arg(QDir::toNativeSeparators(path))
                                 : tr("Orvo will make your library in\n%1\n\nIt starts with one category and a "
                                      "welcome document.")
                                       .arg(QDir::toNativeSeparators(path)));
}

bool ORVFirstRunWizard::validateCurrentPage()
{
    if (currentId() == 0 && libraryLocation().isEmpty()) {
        QMessageBox::warning(this, tr("Choose a library location"),
                             tr("Choose the folder where Orvo keeps your documents."));
        return false;
    }
    if (currentId() == 1)
        return startToUse();
    return true;
}

bool ORVFirstRunWizard::startToUse(QString *error)
{
    if (m_started)
        return true;
    const QString path = libraryLocation();
    QString reason;
    const auto fail = [&](const QString &text) {
        m_failure->setText(text);
        m_failure->show();
        if (error)
            *error = text;
        return false;
    };
    if (path.isEmpty())
        return fail(tr("Choose the folder where Orvo keeps your documents."));
    if (!ORVLibraryFolder::checkIsLibraryWithURL(path)) {
        button(QWizard::FinishButton)->setEnabled(false);
        const bool made = QDir().mkpath(path) &&
                          ORVLibraryFolder::libraryModeSetupMainDatabase(path, AppDelegate::fetchWelcomeContent(), &reason);
        button(QWizard::FinishButton)->setEnabled(true);
        if (!made)
            return fail(tr("The library could not be made in %1: %2").arg(path, reason));
    }
    if (!m_app->setLibraryModeMainURL(path, &reason))
        return fail(tr("The library's location could not be stored: %1").arg(reason));
    m_app->prfs()->setIsAppInstalled(true);
    m_app->prfs()->synchronize();
    m_started = true;
    m_failure->hide();
    emit libraryReady(path);
    return true;
}
