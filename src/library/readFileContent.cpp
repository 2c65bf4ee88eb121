#include "library/readFileContent.h"

#include "library/textEncoding.h"

#include <QFile>

namespace {

// Longest part of one line that is looked at; see the header.
constexpr qsizetype kMaxLineBytes = 64 * 1024;
// Bytes read from the file at a time: the head of most documents fits.
constexpr qsizetype kChunkBytes = 4096;

// Drops a UTF-8 sequence cut short at the end of `line`.
void dropCutSequence(QByteArray &line)
{
    qsizetype lead = line.size() - 1;
    int continuation = 0;
    while (lead >= 0 && continuation < 3 && (static_cast<unsigned char>(line[lead]) & 0xC0) == 0x80) {
        --lead;
        ++continuation;
    }
    if (lead < 0)
        return;
    const auto c = static_cast<unsigned char>(line[lead]);
    const int need = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    if (continuation < need)
        line.truncate(lead);
}

class LineReader
{
public:
    explicit LineReader(QFile &file) : m_file(file) {}

    // The next line without its "\n", at most kMaxLineBytes of it; `ended`
    // says whether a "\n" ended it. False at the end of the file.
    bool next(QByteArray &line, bool &ended)
    {
        line.clear();
        bool capped = false;
        for (;;) {
            const qsizetype nl = m_buffer.indexOf('\n', m_pos);
            const qsizetype end = nl >= 0 ? nl : m_buffer.size();
            const qsizetype room = kMaxLineBytes - line.size();
            if (end - m_pos > room)
                capped = true;
            line.append(m_buffer.constData() + m_pos, std::min(end - m_pos, room));
            if (nl >= 0) {
                m_pos = nl + 1;
                ended = true;
                break;
            }
            m_buffer.clear();
            m_pos = 0;
            if (m_eof) {
                ended = false;
                if (line.isEmpty())
                    return false;
                break;
            }
            m_buffer.resize(kChunkBytes);
            const qint64 got = m_file.read(m_buffer.data(), kChunkBytes);
            m_buffer.resize(std::max<qint64>(got, 0));
            m_eof = got <= 0;
        }
        if (capped)
            dropCutSequence(line);
        return true;
    }

private:
    QFile &m_file;
    QByteArray m_buffer;
    qsizetype m_pos = 0;
    bool m_eof = false;
};

} // namespace

QString readFileContentWithPath(const QString &path, int maxLine, int length)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return QString();
    LineReader reader(file);
    QString text;
    QByteArray line;
    bool ended = false;
    for (int lines = 0; lines < maxLine && text.size() <= length && reader.next(line, ended); ++lines) {
        if (ended && line.endsWith('\r'))
            line.chop(1);
        if (!isWellFormedUTF8(line.constData(), line.size()))
            continue;
        text += QString::fromUtf8(line);
        if (ended)
            text += QLatin1Char('\n');
    }
    return text;
}
