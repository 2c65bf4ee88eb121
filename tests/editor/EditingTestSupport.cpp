#include "EditingTestSupport.h"

namespace editingtest {

ORVStringTextBuffer bufferFromMarked(const QString &marked)
{
    QString text = marked;
    const qsizetype open = text.indexOf(QChar(0x00AB));
    if (open >= 0) {
        text.remove(open, 1);
        const qsizetype close = text.indexOf(QChar(0x00BB));
        text.remove(close, 1);
        return ORVStringTextBuffer(text, {open, close - open});
    }
    const qsizetype caret = text.indexOf(QLatin1Char('|'));
    text.remove(caret, 1);
    return ORVStringTextBuffer(text, {caret, 0});
}

QString markedFromBuffer(const ORVTextBuffer &buffer)
{
    QString text = buffer.string();
    const ORVEditRange sel = buffer.selectedRange();
    if (sel.isEmpty())
        return text.insert(sel.location, QLatin1Char('|'));
    text.insert(sel.end(), QChar(0x00BB));
    return text.insert(sel.location, QChar(0x00AB));
}

std::string show(const QString &text)
{
    QString s = text;
    s.replace(QLatin1Char('\n'), QStringLiteral("\\n")).replace(QLatin1Char('\t'), QStringLiteral("\\t"));
    return s.toStdString();
}

QString run(const QString &before, const Command &command, ORVEditingOptions options)
{
    ORVStringTextBuffer buffer = bufferFromMarked(before);
    ORVMDTextCommands commands(buffer, options);
    command(commands);
    return markedFromBuffer(buffer);
}

} // namespace editingtest
