#include "cli/CliCommand.h"
#include "cli/CliSubcommand.h"
#include "core/AppDelegate.h"
#include "editor/ORVDocument.h"
#include "export/ORVHTMLExport.h"
#include "export/ORVHTMLPageAssembler.h"
#include "export/ORVPreviewScripts.h"
#include "markdown/MarkdownWrap.h"

#include <QFile>
#include <QFileInfo>

#include <memory>

using namespace orvo::cli;

namespace {

// A Markdown file opened as the desktop app opens it (library or external
// folder found by its path), without recording it as a recent document.
std::unique_ptr<ORVDocument> openDocument(const QString &path, QString *error)
{
    QFile f(path);
    if (!QFileInfo(path).isFile()) {
        *error = QStringLiteral("%1: no such file").arg(path);
        return nullptr;
    }
    if (!f.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(path, f.errorString());
        return nullptr;
    }
    auto doc = std::make_unique<ORVDocument>(AppDelegate::sharedDelegate());
    const QString absolute = QFileInfo(path).absoluteFilePath();
    doc->setFileURL(absolute);
    doc->checkDocumentIsInLibrary(absolute);
    doc->readFromData(f.readAll());
    if (doc->isUndecodedDocument()) {
        *error = QStringLiteral("%1: the text cannot be decoded").arg(path);
        return nullptr;
    }
    return doc;
}

int runPage(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("export")}, {QStringLiteral("evernote")}, {QStringLiteral("wechat")},
                                 {QStringLiteral("print")}, {QStringLiteral("style"), true}},
                                1, 1);
    if (!args)
        return Usage;
    const int kinds = int(args->isSet(QStringLiteral("export"))) + int(args->isSet(QStringLiteral("evernote"))) +
                      int(args->isSet(QStringLiteral("wechat")));
    if (kinds > 1)
        return ctx.usageError(QStringLiteral("--export, --evernote and --wechat exclude each other"));
    QString error;
    const QString path = args->positional(0);
    const auto doc = openDocument(path, &error);
    if (!doc)
        return ctx.fail(error);

    const ORVHTMLPageAssembler assembler(
        ORVPageDocumentContext::fromDocument(doc.get(), QFileInfo(path).absolutePath()),
        ORVPagePreferences::fromPreferences(), ORVPreviewScripts::shared());
    ORVMakeHTMLRequest request;
    request.string = doc->textStorage()->string();
    request.style = args->value(QStringLiteral("style"));
    request.isShowCode = args->isSet(QStringLiteral("print"));
    if (args->isSet(QStringLiteral("evernote")) || args->isSet(QStringLiteral("wechat"))) {
        // Note pages are made from HTML rendered for them beforehand, as the
        // publishing flow makes them.
        ORVMarkdownToHTMLInfo info;
        const bool evernote = args->isSet(QStringLiteral("evernote"));
        const QString html = evernote ? MarkdownWrap::markdownToEvernotehHtmlInfo(request.string, &info)
                                      : MarkdownWrap::markdownToHtmlRenderTypeInfo(request.string, 0, &info);
        writeStdout((evernote ? assembler.evernotePreviewTemplateHtmlWithString(html, &info)
                              : assembler.weChatPreviewTemplateHtmlWithString(html, &info))
                        .toUtf8());
        return Success;
    }
    request.title = doc->documentTitleRemoveMark();
    request.isPreview = !args->isSet(QStringLiteral("export"));
    writeStdout(assembler.makeHTMLWithString(request).toUtf8());
    return Success;
}

int runExportHTML(Context &given)
{
    // -o is the short form of --output.
    QStringList words = given.words();
    for (QString &w : words) {
        if (w == QLatin1String("-o"))
            w = QStringLiteral("--output");
    }
    Context ctx(given.command(), words, given.libraryOverride());
    const auto args = ctx.parse({{QStringLiteral("output"), true}}, 1, 1, 1);
    if (!args)
        return Usage;
    const QString out = args->value(QStringLiteral("output"));
    if (out.isEmpty())
        return ctx.usageError(QStringLiteral("-o OUT.html is required"));
    QString error;
    const QString path = args->positional(0);
    const auto doc = openDocument(path, &error);
    if (!doc)
        return ctx.fail(error);
    const QString html = ORVHTMLExport::exportPageForDocument(doc.get(), QFileInfo(path).absolutePath());
    if (!ORVHTMLExport::writeHTML(html, out, &error))
        return ctx.fail(QStringLiteral("Error: %1: %2").arg(out, error));
    return Success;
}

int runExport(Context &ctx) { return runSubcommand(ctx, {{"html", &runExportHTML}}); }

} // namespace

ORVO_CLI_COMMAND({"page", "print the HTML page of a Markdown file",
                  "orvo page FILE [--export] [--style NAME] [--print]\n"
                  "orvo page FILE --evernote|--wechat\n"
                  "\n"
                  "Prints the complete HTML page of FILE as Orvo assembles it: the preview's form\n"
                  "by default (style sheet linked, local scripts, front matter shown as a YAML\n"
                  "block), or with --export the form an HTML export writes (style sheet and local\n"
                  "images embedded, scripts from the public delivery network). --style picks a\n"
                  "preview style sheet over the preferences previewCSSName/previewDarkCSSName;\n"
                  "--print lays the page out for printing (no margins). --evernote and --wechat\n"
                  "print the page the note and WeChat flows convert.\n"
                  "Images and relative links resolve against the document's media folder: its\n"
                  "library's docs folder, its external folder's setting, or else its own folder.",
                  &runPage});

ORVO_CLI_COMMAND({"export", "export a Markdown file",
                  "orvo export html FILE -o|--output OUT.html\n"
                  "\n"
                  "Writes the page of FILE as `orvo page FILE --export` prints it to OUT.html,\n"
                  "atomically and in UTF-8: OUT.html is either the whole page or left as it was.",
                  &runExport});
