// Template text, as a theme file holds it, through the engine: every run must
// end, within its limits, without a fault; a second run of the same text,
// from the matches kept by the first, must give the same output. Short texts
// are also matched by ICU's regular-expression engine, which the matcher's
// scanner must agree with exactly.

#include "site/ICUTemplateMatcher.h"
#include "site/MGTemplateEngine.h"

#include <unicode/uregex.h>

#include <cstdint>
#include <cstdlib>

namespace
{

MGTemplateMap fuzzVariables()
{
    MGTemplateList posts;
    for (int i = 0; i < 3; ++i)
        posts.append(MGTemplateMap{{QStringLiteral("title"), QStringLiteral("Post %1").arg(i)},
                                   {QStringLiteral("url"), QStringLiteral("%1.html").arg(i)},
                                   {QStringLiteral("tags"), MGTemplateList{"a", "b"}}});
    return {
        {QStringLiteral("name"), "Ann"},
        {QStringLiteral("empty"), ""},
        {QStringLiteral("zero"), MGTemplateValue::integer(0)},
        {QStringLiteral("n"), MGTemplateValue::integer(3)},
        {QStringLiteral("f"), MGTemplateValue::number(2.5)},
        {QStringLiteral("yes"), MGTemplateValue::boolean(true)},
        {QStringLiteral("d"), MGTemplateValue::Date{1577934245000}},
        {QStringLiteral("c"), MGTemplateValue::Colour{1, 0.5, 0, 1}},
        {QStringLiteral("posts"), posts},
        {QStringLiteral("none"), MGTemplateList{}},
        {QStringLiteral("m"), MGTemplateMap{{QStringLiteral("k"), "v"}, {QStringLiteral("l"), posts}}},
    };
}

// Matches from the start, and behind each match, as a run scans them.
void checkAgainstRegex(ICUTemplateMatcher &matcher, const QString &text)
{
    static URegularExpression *re = [&] { // the default delimiters' expression, for the whole process
        UErrorCode status = U_ZERO_ERROR;
        const QString pattern = matcher.regex();
        URegularExpression *r = uregex_open(reinterpret_cast<const UChar *>(pattern.utf16()),
                                            int32_t(pattern.size()), 0, nullptr, &status);
        if (U_FAILURE(status))
            std::abort();
        return r;
    }();
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(re, reinterpret_cast<const UChar *>(text.utf16()), int32_t(text.size()), &status);
    qsizetype from = 0;
    while (from <= text.size()) {
        uregex_setRegion(re, int32_t(from), int32_t(text.size()), &status);
        const bool found = uregex_findNext(re, &status);
        const MGTemplateMatch *match = matcher.firstMarkerWithinRange({from, text.size() - from});
        if (found != (match != nullptr))
            std::abort();
        if (!found)
            return;
        const qsizetype start = uregex_start(re, 0, &status);
        const qsizetype end = uregex_end(re, 0, &status);
        const bool marker = uregex_start(re, 1, &status) >= 0;
        if (match->range.location != start || match->range.end() != end ||
            (match->type == MGTemplateMatch::Type::Marker) != marker)
            std::abort();
        from = end;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const MGTemplateMap variables = fuzzVariables();
    // A fresh engine for each input, so that everything an input allocates is
    // freed by its end and the leak checker has nothing to chase.
    MGTemplateEngine engine;
    engine.setMatcher(std::make_unique<ICUTemplateMatcher>(&engine));
    // Small limits keep each input quick; the checks are the same.
    engine.setRunLimits({20'000, 1 << 20, 200});
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QString> first = engine.processTemplateWithVariables(text, variables);
    const std::optional<QString> second = engine.processTemplateWithVariables(text, variables);
    if (!first || !second)
        std::abort();
    // `now` may tick between the runs.
    if (*first != *second && !text.contains(QLatin1String("now")))
        std::abort();
    // The regular expression needs cubic time on some texts: short ones only.
    if (text.size() <= 160)
        checkAgainstRegex(*static_cast<ICUTemplateMatcher *>(engine.matcher()), text);
    return 0;
}
