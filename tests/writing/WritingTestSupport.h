#pragma once

#include <QString>
#include <QVariant>

#include <functional>

class QWebEnginePage;

// Helpers of the editor and preview GUI tests.
namespace writingtest {

// Runs `script` in `page` and waits (events running) for its value; an
// invalid QVariant after `timeoutMs`.
QVariant runJavaScript(QWebEnginePage *page, const QString &script, int timeoutMs = 10000);

// Waits, events running, until `condition` holds; false after `timeoutMs`.
bool waitFor(const std::function<bool()> &condition, int timeoutMs = 20000);

// Whether the preview's script libraries are installed in the build.
bool previewLibrariesInstalled();

// The rust-book chapters joined (about 1.2 MB), "" without the corpus.
QString joinedRustBook();

} // namespace writingtest
