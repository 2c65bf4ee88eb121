// Every file of the shared corpus renders through every path a document
// takes (preview, table of contents, notes, PDF, ePub), which under the
// sanitizer build means: without a memory or undefined-behaviour error.
#include "support/TestEnv.h"

#include "markdown/MarkdownWrap.h"

#include <QDirIterator>

#include <gtest/gtest.h>

namespace {

TEST(Corpus, EveryFileRenders)
{
    const QString corpus = orvotest::corpusDir();
    if (corpus.isEmpty())
        GTEST_SKIP() << "the shared corpus is absent";
    QDirIterator it(corpus, {QStringLiteral("*.md")}, QDir::Files, QDirIterator::Subdirectories);
    int files = 0;
    while (it.hasNext()) {
        const QString path = it.next();
        const QString text = QString::fromUtf8(orvotest::readFile(path));
        MarkdownWrap::Options o;
        o.smartypants = o.toc = o.replaceTOC = o.newlineToBR = o.isMath = true;
        QString toc;
        o.tocString = &toc;
        // Files in the book are long: every render type on those, the
        // preview on the many small pages.
        const bool book = path.contains(QLatin1String("rust-book"));
        for (int type = ORVRenderTypePlain; type <= (book ? ORVRenderTypeMathImage : ORVRenderTypePlain); ++type) {
            o.renderType = type;
            const QString html = MarkdownWrap::markdownToHtml(text, o);
            if (!text.trimmed().isEmpty()) {
                EXPECT_FALSE(html.isEmpty()) << path.toStdString() << " type " << type;
            }
        }
        if (text.contains(QLatin1Char('#'))) {
            EXPECT_FALSE(MarkdownWrap::markdownToHtmlTOC(text).isEmpty()) << path.toStdString();
        }
        ++files;
    }
    EXPECT_GT(files, 7000);
}

} // namespace
