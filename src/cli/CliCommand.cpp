#include "cli/CliCommand.h"

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <map>

namespace orvo::cli {

namespace {

std::map<QString, Command> &registry()
{
    static std::map<QString, Command> commands;
    return commands;
}

QString usageLines(const Command &c)
{
    // The help text starts with its usage lines and a blank line after them.
    const QString help = QString::fromUtf8(c.help);
    const qsizetype blank = help.indexOf(QStringLiteral("\n\n"));
    return blank < 0 ? help : help.left(blank);
}

} // namespace

bool Args::isSet(const QString &name) const
{
    return std::any_of(m_options.begin(), m_options.end(), [&](const auto &o) { return o.first == name; });
}

QString Args::value(const QString &name, const QString &fallback) const
{
    // The last one given wins, as users expect of repeated options.
    for (auto it = m_options.rbegin(); it != m_options.rend(); ++it)
        if (it->first == name)
            return it->second;
    return fallback;
}

QStringList Args::values(const QString &name) const
{
    QStringList all;
    for (const auto &o : m_options)
        if (o.first == name)
            all << o.second;
    return all;
}

QString Args::positional(int i, const QString &fallback) const
{
    return i >= 0 && i < m_positionals.size() ? m_positionals.at(i) : fallback;
}

Context::Context(const Command &command, QStringList words, QString libraryOverride)
    : m_command(command), m_words(std::move(words)), m_libraryOverride(std::move(libraryOverride)),
      m_out(stdout), m_err(stderr)
{
}

std::optional<Args> Context::parse(const std::vector<Option> &options, int minPositionals, int maxPositionals,
                                   int skip)
{
    Args args;
    bool optionsEnded = false;
    for (int i = skip; i < m_words.size(); ++i) {
        const QString &w = m_words.at(i);
        if (!optionsEnded && w == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        if (!optionsEnded && w.startsWith(QLatin1String("--"))) {
            QString name = w.mid(2);
            QString inlineValue;
            bool hasInline = false;
            if (const qsizetype eq = name.indexOf(QLatin1Char('=')); eq >= 0) {
                inlineValue = name.mid(eq + 1);
                name = name.left(eq);
                hasInline = true;
            }
            const auto opt = std::find_if(options.begin(), options.end(), [&](const Option &o) { return o.name == name; });
            if (opt == options.end()) {
                usageError(QStringLiteral("unknown option --%1").arg(name));
                return std::nullopt;
            }
            if (opt->takesValue) {
                if (hasInline) {
                    args.m_options.append({name, inlineValue});
                } else if (i + 1 < m_words.size()) {
                    args.m_options.append({name, m_words.at(++i)});
                } else {
                    usageError(QStringLiteral("--%1 needs a value").arg(name));
                    return std::nullopt;
                }
            } else {
                if (hasInline) {
                    usageError(QStringLiteral("--%1 takes no value").arg(name));
                    return std::nullopt;
                }
                args.m_options.append({name, QString()});
            }
            continue;
        }
        args.m_positionals << w;
    }
    if (args.m_positionals.size() < minPositionals) {
        usageError(QStringLiteral("missing argument"));
        return std::nullopt;
    }
    if (maxPositionals >= 0 && args.m_positionals.size() > maxPositionals) {
        usageError(QStringLiteral("unexpected argument \"%1\"").arg(args.m_positionals.at(maxPositionals)));
        return std::nullopt;
    }
    return args;
}

int Context::fail(const QString &message)
{
    m_out.flush();
    m_err << "orvo: " << message << Qt::endl;
    return Failure;
}

int Context::usageError(const QString &message)
{
    m_out.flush();
    m_err << "orvo: " << message << "\nusage:\n" << usageLines(m_command) << Qt::endl;
    return Usage;
}

bool registerCommand(const Command &command)
{
    registry().emplace(QString::fromUtf8(command.name), command);
    return true;
}

const Command *findCommand(const QString &name)
{
    const auto it = registry().find(name);
    return it == registry().end() ? nullptr : &it->second;
}

std::vector<const Command *> allCommands()
{
    std::vector<const Command *> all;
    for (const auto &[name, c] : registry())
        all.push_back(&c);
    return all;
}

void writeStdout(const QByteArray &bytes)
{
    std::fflush(stdout);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

std::optional<QByteArray> readInput(const QString &path, QString *error)
{
    QFile f;
    const bool fromStdin = path.isEmpty() || path == QLatin1String("-");
    const bool opened = fromStdin ? f.open(stdin, QIODevice::ReadOnly) : (f.setFileName(path), f.open(QIODevice::ReadOnly));
    if (!opened) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(fromStdin ? QStringLiteral("standard input") : path, f.errorString());
        return std::nullopt;
    }
    return f.readAll();
}

} // namespace orvo::cli
