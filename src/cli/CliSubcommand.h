#pragma once

// Commands made of subcommands ("orvo doc new", "orvo doc list", ...): each
// subcommand is a function that parses its own words (from index 1, after
// the subcommand's name). Adding one is adding a row to the command's table
// and its usage line to the command's help.

#include "cli/CliCommand.h"

#include <initializer_list>

namespace orvo::cli {

struct Subcommand {
    const char *name;
    int (*run)(Context &ctx);
};

inline int runSubcommand(Context &ctx, std::initializer_list<Subcommand> table)
{
    const QString word = ctx.words().value(0);
    if (word.isEmpty())
        return ctx.usageError(QStringLiteral("missing subcommand"));
    for (const Subcommand &s : table)
        if (word == QLatin1String(s.name))
            return s.run(ctx);
    return ctx.usageError(QStringLiteral("unknown subcommand \"%1\"").arg(word));
}

} // namespace orvo::cli
