// Golden files: every tests/data/markdown/<rule>/<feature>.md is rendered in
// each variant that has an expected file <feature>.<variant>.html beside it,
// and the output must match byte for byte. A failure prints a unified diff.
//
// Variants:
//   t<N>[-opt...]   MarkdownWrap's full form with render type N and these
//                   defaults: table of contents on and spliced, math on,
//                   typographic replacement and line breaks off, and the
//                   preferences autolink on, figures off, line numbers off.
//                   Options: -sp (typographic replacement), -br (line breaks),
//                   -notoc, -nomath, -noautolink, -figure, -lines, and -tocout
//                   (the expected text is the table of contents given back).
//                   "@P@" in an expected file stands for the render counter.
//   toconly         MarkdownWrap::markdownToHtmlTOC.
//   parser[-ext<hex>][-html<hex>]
//                   The parser with the standard HTML renderer and no Orvo
//                   overrides, on the raw bytes: extensions 0x237F and renderer
//                   flags 0x8 unless given; headings up to 6 get ids.
//   inline          As parser, through hoedown_document_render_inline.
//
// Regenerate the expected files (only those that exist) with
//   tests/markdown/regenerate-golden.sh
// which runs this test with ORVO_REGEN_GOLDEN=1.
#include "support/TestEnv.h"

#include "core/MyPreferences.h"
#include "hoedown/document.h"
#include "markdown/MarkdownWrap.h"
#include "markdown/html.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct GoldenCase {
    QString input;    // the .md file
    QString expected; // the .html file
    QString variant;  // the part between the feature name and ".html"
};

std::vector<GoldenCase> collectCases()
{
    std::vector<GoldenCase> cases;
    const QString root = orvotest::dataDir() + QStringLiteral("/markdown");
    QDirIterator it(root, {QStringLiteral("*.md")}, QDir::Files, QDirIterator::Subdirectories);
    QStringList inputs;
    while (it.hasNext())
        inputs << it.next();
    inputs.sort();
    for (const QString &input : inputs) {
        const QFileInfo fi(input);
        const QString stem = fi.completeBaseName();
        const QStringList expected =
            QDir(fi.absolutePath()).entryList({stem + QStringLiteral(".*.html")}, QDir::Files, QDir::Name);
        for (const QString &name : expected) {
            const QString variant = name.mid(stem.size() + 1, name.size() - stem.size() - 6);
            cases.push_back({input, fi.absolutePath() + QLatin1Char('/') + name, variant});
        }
    }
    return cases;
}

QByteArray renderParser(const QByteArray &input, const QStringList &opts, bool inlineRender)
{
    unsigned int ext = 0x237F, flags = HOEDOWN_HTML_USE_XHTML;
    for (const QString &o : opts) {
        if (o.startsWith(QLatin1String("ext")))
            ext = o.mid(3).toUInt(nullptr, 16);
        else if (o.startsWith(QLatin1String("html")))
            flags = o.mid(4).toUInt(nullptr, 16);
    }
    hoedown_renderer *renderer = hoedown_html_renderer_new(flags, 6);
    hoedown_document *doc = hoedown_document_new(renderer, ext, 16);
    hoedown_buffer *ob = hoedown_buffer_new(64);
    const auto *data = reinterpret_cast<const uint8_t *>(input.constData());
    if (inlineRender)
        hoedown_document_render_inline(doc, ob, data, size_t(input.size()));
    else
        hoedown_document_render(doc, ob, data, size_t(input.size()));
    QByteArray out(reinterpret_cast<const char *>(ob->data), qsizetype(ob->size));
    hoedown_buffer_free(ob);
    hoedown_document_free(doc);
    hoedown_html_renderer_free(renderer);
    return out;
}

QByteArray renderWrap(const QByteArray &input, const QString &variant, QByteArray *expectedCounter)
{
    QStringList opts = variant.split(QLatin1Char('-'));
    MarkdownWrap::Options o;
    o.renderType = opts.takeFirst().mid(1).toInt();
    o.toc = o.replaceTOC = true;
    o.isMath = true;
    bool autolinkOff = false, figures = false, lineNumbers = false, tocOut = false;
    for (const QString &opt : opts) {
        if (opt == QLatin1String("sp"))
            o.smartypants = true;
        else if (opt == QLatin1String("br"))
            o.newlineToBR = true;
        else if (opt == QLatin1String("notoc"))
            o.toc = o.replaceTOC = false;
        else if (opt == QLatin1String("nomath"))
            o.isMath = false;
        else if (opt == QLatin1String("noautolink"))
            autolinkOff = true;
        else if (opt == QLatin1String("figure"))
            figures = true;
        else if (opt == QLatin1String("lines"))
            lineNumbers = true;
        else if (opt == QLatin1String("tocout"))
            tocOut = true;
        else
            ADD_FAILURE() << "unknown variant option " << opt.toStdString();
    }
    // Writing a preference syncs the settings file: write only changes.
    MyPreferences *prefs = MyPreferences::sharedInstance();
    if (prefs->isDisableAutolink() != autolinkOff)
        prefs->setIsDisableAutolink(autolinkOff);
    if (prefs->isEnableImgTagToFigureTag() != figures)
        prefs->setIsEnableImgTagToFigureTag(figures);
    if (prefs->isEnableCodeblockLineNumber() != lineNumbers)
        prefs->setIsEnableCodeblockLineNumber(lineNumbers);
    QString toc;
    if (tocOut)
        o.tocString = &toc;
    *expectedCounter = QByteArray::number(MarkdownWrap::renderCounter() + 1);
    const QString html = MarkdownWrap::markdownToHtml(QString::fromUtf8(input), o);
    return (tocOut ? toc : html).toUtf8();
}

QByteArray render(const GoldenCase &c, const QByteArray &input, QByteArray *counter)
{
    if (c.variant == QLatin1String("toconly"))
        return MarkdownWrap::markdownToHtmlTOC(QString::fromUtf8(input)).toUtf8();
    QStringList opts = c.variant.split(QLatin1Char('-'));
    const QString kind = opts.takeFirst();
    if (kind == QLatin1String("parser") || kind == QLatin1String("inline"))
        return renderParser(input, opts, kind == QLatin1String("inline"));
    return renderWrap(input, c.variant, counter);
}

QString unifiedDiff(const QByteArray &expected, const QByteArray &actual)
{
    QTemporaryDir dir;
    const QString e = dir.path() + QStringLiteral("/expected"), a = dir.path() + QStringLiteral("/actual");
    orvotest::writeFile(e, expected);
    orvotest::writeFile(a, actual);
    QByteArray out;
    if (orvotest::runProcess(QStringLiteral("diff"), {QStringLiteral("-u"), e, a}, &out) < 0)
        return QStringLiteral("expected:\n%1\nactual:\n%2").arg(QString::fromUtf8(expected), QString::fromUtf8(actual));
    return QString::fromUtf8(out);
}

class Golden : public ::testing::TestWithParam<GoldenCase>
{
};

TEST_P(Golden, MatchesExpectedOutput)
{
    const GoldenCase &c = GetParam();
    const QByteArray input = orvotest::readFile(c.input);
    QByteArray counter;
    const QByteArray actual = render(c, input, &counter);
    if (qEnvironmentVariableIntValue("ORVO_REGEN_GOLDEN")) {
        QByteArray stored = actual;
        if (!counter.isEmpty())
            stored.replace("_p" + counter, "_p@P@").replace("\"p" + counter + "_", "\"p@P@_")
                .replace("//p" + counter + "_", "//p@P@_");
        ASSERT_TRUE(orvotest::writeFile(c.expected, stored)) << c.expected.toStdString();
        return;
    }
    QByteArray expected = orvotest::readFile(c.expected);
    if (!counter.isEmpty())
        expected.replace("@P@", counter);
    if (actual != expected)
        ADD_FAILURE() << c.expected.toStdString() << "\n" << unifiedDiff(expected, actual).toStdString();
}

std::string caseName(const ::testing::TestParamInfo<GoldenCase> &info)
{
    const QString rel = QDir(orvotest::dataDir() + QStringLiteral("/markdown")).relativeFilePath(info.param.expected);
    std::string name;
    for (const QChar ch : rel.chopped(5)) {
        const char c = ch.toLatin1();
        name += (std::isalnum(static_cast<unsigned char>(c)) ? c : '_');
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Markdown, Golden, ::testing::ValuesIn(collectCases()), caseName);

} // namespace
