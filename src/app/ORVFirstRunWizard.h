#pragma once

#include <QWizard>

class AppDelegate;
class QLabel;
class QLineEdit;
class QPushButton;

// The first run: where the library lives. Page one proposes the folder
// "mainlib" in the user's documents and lets the user pick another; page two
// makes the library there (or takes the library found there) and starts.
//
// On success the location is stored (libraryLocationURL.data and the
// preference), isAppInstalled is set and libraryReady() is emitted; a
// database that cannot be made leaves the wizard open with the reason.
class ORVFirstRunWizard : public QWizard
{
    Q_OBJECT
public:
    explicit ORVFirstRunWizard(AppDelegate *app, QWidget *parent = nullptr);

    // The proposed location, before the user chose one.
    static QString defaultLibraryLocation();

    QString libraryLocation() const;
    // The same as choosing a folder in the dialog (tests, scripted starts).
    // A folder that is already a library asks whether to take it as it is
    // when `confirmExisting` is set.
    bool setLibraryLocation(const QString &path, bool confirmExisting = false);
    // startToUseAction: makes or takes the library and stores its location.
    // False, with the reason shown and in `error`, when it could not.
    bool startToUse(QString *error = nullptr);

signals:
    void libraryReady(const QString &libraryPath);

protected:
    bool validateCurrentPage() override;

private:
    void chooseFolder();
    void updateLocationNote();

    AppDelegate *m_app;
    QLineEdit *m_location;
    QLabel *m_note;
    QLabel *m_summary;
    QLabel *m_failure;
    bool m_started = false;
};
