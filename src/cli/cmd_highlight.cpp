#include "cli/CliCommand.h"
#include "highlight/pmh_parser/pmh_parser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>
#include <vector>

using namespace orvo::cli;

namespace {

struct ElementsDeleter {
    void operator()(pmh_element **elems) const { pmh_free_elements(elems); }
};
using Elements = std::unique_ptr<pmh_element *, ElementsDeleter>;

// UTF-16 offset of every code point offset of bytes, counted the way the
// grammar counts: each byte that does not continue a UTF-8 sequence starts a
// code point, and a four-byte sequence takes two UTF-16 units.
std::vector<unsigned long> utf16Offsets(const QByteArray &bytes)
{
    std::vector<unsigned long> offsets;
    offsets.reserve(size_t(bytes.size()) + 1);
    unsigned long units = 0;
    for (const char ch : bytes) {
        const auto c = static_cast<unsigned char>(ch);
        if ((c & 0xC0) == 0x80)
            continue;
        offsets.push_back(units);
        units += c >= 0xF0 ? 2 : 1;
    }
    offsets.push_back(units);
    return offsets;
}

int runHighlight(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}, {QStringLiteral("utf16")}}, 0, 1);
    if (!args)
        return Usage;
    const QString path = args->positional(0);
    QString error;
    const std::optional<QByteArray> input = readInput(path, &error);
    if (!input)
        return ctx.fail(error);
    // The grammar reads a NUL-terminated text: a NUL inside would end it
    // early and leave the rest unreported.
    if (input->contains('\0'))
        return ctx.fail(QStringLiteral("%1 holds a NUL byte; it is not a text file")
                            .arg(path.isEmpty() || path == QLatin1String("-") ? QStringLiteral("standard input") : path));

    pmh_element **raw = nullptr;
    pmh_markdown_to_elements(input->constData(), pmh_EXT_ALL, &raw);
    const Elements elements(raw);
    pmh_sort_elements_by_pos(raw);

    std::vector<unsigned long> utf16;
    if (args->isSet(QStringLiteral("utf16")))
        utf16 = utf16Offsets(*input);
    const auto offset = [&utf16](unsigned long cp) { return utf16.empty() ? cp : utf16[std::min(cp, utf16.size() - 1)]; };

    if (args->isSet(QStringLiteral("json"))) {
        QJsonArray spans;
        for (const pmh_element *e = raw[pmh_ALL]; e; e = e->all_next) {
            QJsonObject span{{QStringLiteral("type"), QString::fromLatin1(pmh_element_name_from_type(e->type))},
                             {QStringLiteral("start"), qint64(offset(e->start))},
                             {QStringLiteral("end"), qint64(offset(e->end))}};
            if (e->label)
                span.insert(QStringLiteral("label"), QString::fromUtf8(e->label));
            if (e->address)
                span.insert(QStringLiteral("address"), QString::fromUtf8(e->address));
            spans.append(span);
        }
        writeStdout(QJsonDocument(spans).toJson(QJsonDocument::Indented));
        return Success;
    }
    QByteArray out;
    for (const pmh_element *e = raw[pmh_ALL]; e; e = e->all_next) {
        out += pmh_element_name_from_type(e->type);
        out += ' ';
        out += QByteArray::number(qulonglong(offset(e->start)));
        out += ' ';
        out += QByteArray::number(qulonglong(offset(e->end)));
        out += '\n';
    }
    writeStdout(out);
    return Success;
}

} // namespace

ORVO_CLI_COMMAND({"highlight", "list the Markdown elements the editor colours",
                  "orvo highlight [FILE|-] [--json] [--utf16]\n"
                  "\n"
                  "Parses FILE (standard input when absent or \"-\") with the editor's highlight\n"
                  "grammar and prints one element per line as \"TYPE START END\", sorted by start;\n"
                  "END is exclusive. TYPE is an element name of the editor's themes (H1, EMPH,\n"
                  "LINK, VERBATIM...). Offsets count code points, a byte order mark being one;\n"
                  "with --utf16 they count UTF-16 units, as the editor does.\n"
                  "--json prints an array of {\"type\", \"start\", \"end\"}, with \"label\" and\n"
                  "\"address\" for links, references and notes that have them.\n"
                  "Every grammar extension is on: notes, ~~strike~~, ==mark==, $$math$$ (coloured\n"
                  "as CODE) and bare links.",
                  &runHighlight});
