// MarkdownWrap's full render on arbitrary text: the UTF-16 round trip, the
// table of contents and its splice, typographic replacement. The first byte
// picks the options, the rest is the text (as UTF-8, invalid bytes and all).
#include "markdown/MarkdownWrap.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Preferences go to a folder of the fuzzer's own.
    static QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    setenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toLocal8Bit().constData(), 1);
    static QCoreApplication app(*argc, *argv);
    QCoreApplication::setApplicationName(QStringLiteral("Orvo"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const uint8_t a = data[0];
    MarkdownWrap::Options o;
    o.renderType = a & 7;
    o.smartypants = a & 0x8;
    o.toc = a & 0x10;
    o.replaceTOC = a & 0x20;
    o.newlineToBR = a & 0x40;
    o.isMath = a & 0x80;
    QString toc;
    o.tocString = (a & 0x30) == 0x30 ? &toc : nullptr;
    ORVMarkdownToHTMLInfo info;
    o.info = &info;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    MarkdownWrap::markdownToHtml(text, o);
    if (a & 0x1)
        MarkdownWrap::markdownToHtmlTOC(text);
    return 0;
}
