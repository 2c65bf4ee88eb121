#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <optional>
#include <vector>

// The `orvo` command line.
//
// Each command lives in its own cmd_<name>.cpp in this folder and registers
// itself with ORVO_CLI_COMMAND; the registry is filled before main runs.
// Conventions: results on stdout (with --json where a script wants them),
// errors on stderr as "orvo: ...", exit 0 on success, 1 on failure, 2 on
// bad usage.

namespace orvo::cli {

enum ExitCode { Success = 0, Failure = 1, Usage = 2 };

// An option a command accepts: `--name` alone, or `--name VALUE` when it
// takes a value. Options may repeat; values() returns all of them.
struct Option {
    QString name;
    bool takesValue = false;
};

// The parsed words of one command.
class Args
{
public:
    bool isSet(const QString &name) const;
    QString value(const QString &name, const QString &fallback = {}) const;
    QStringList values(const QString &name) const;
    const QStringList &positionals() const { return m_positionals; }
    QString positional(int i, const QString &fallback = {}) const;

private:
    friend class Context;
    QList<QPair<QString, QString>> m_options;
    QStringList m_positionals;
};

class Context;
struct Command {
    const char *name;    // the first word: "library", "doc", "render"...
    const char *summary; // one line for `orvo help`
    const char *help;    // the full text for `orvo help NAME`: usage lines first
    int (*run)(Context &ctx);
};

class Context
{
public:
    Context(const Command &command, QStringList words, QString libraryOverride);

    const Command &command() const { return m_command; }
    // The words after the command's name.
    const QStringList &words() const { return m_words; }
    // --library DIR given before or after the command, "" when absent.
    const QString &libraryOverride() const { return m_libraryOverride; }

    // Parses words() (from `skip` on, so a subcommand can be taken off
    // first) against the options given. Between minPositionals and
    // maxPositionals (-1: any number) plain words are allowed; "--" ends the
    // options. On a usage error prints it and returns nullopt; the caller
    // then returns Usage.
    std::optional<Args> parse(const std::vector<Option> &options, int minPositionals = 0,
                              int maxPositionals = 0, int skip = 0);

    QTextStream &out() { return m_out; }
    QTextStream &err() { return m_err; }

    // Prints "orvo: message" on stderr and returns Failure.
    int fail(const QString &message);
    // Prints "orvo: message" and the command's usage lines, returns Usage.
    int usageError(const QString &message);

private:
    const Command &m_command;
    QStringList m_words;
    QString m_libraryOverride;
    QTextStream m_out;
    QTextStream m_err;
};

// The registry of commands.
bool registerCommand(const Command &command);
const Command *findCommand(const QString &name);
std::vector<const Command *> allCommands(); // sorted by name

// Writes bytes to stdout as they are (for output that must not pass through
// text encoding, such as rendered HTML of a file that is not UTF-8).
void writeStdout(const QByteArray &bytes);
// Reads a FILE argument, "-" or nothing meaning standard input.
std::optional<QByteArray> readInput(const QString &path, QString *error);

} // namespace orvo::cli

#define ORVO_CLI_CONCAT_(a, b) a##b
#define ORVO_CLI_CONCAT(a, b) ORVO_CLI_CONCAT_(a, b)
// ORVO_CLI_COMMAND({"name", "summary", "help", &runFunction});
#define ORVO_CLI_COMMAND(...)                                                                                \
    static const bool ORVO_CLI_CONCAT(orvoCliRegistered_, __LINE__) = ::orvo::cli::registerCommand(__VA_ARGS__)
