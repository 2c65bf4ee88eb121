#pragma once

#include "editor/ORVMDTextCommands.h"
#include "editor/ORVStringTextBuffer.h"

#include <QString>

#include <functional>
#include <string>

// Texts with their selection written inline: "|" is an empty selection (the
// caret), "«" and "»" enclose a non-empty one. Exactly one of the two forms
// appears in every marked text.
namespace editingtest {

ORVStringTextBuffer bufferFromMarked(const QString &marked);
QString markedFromBuffer(const ORVTextBuffer &buffer);

// Escapes line ends and tabs so that failures read on one line.
std::string show(const QString &text);

using Command = std::function<void(ORVMDTextCommands &)>;

// Runs `command` on `before` and gives the marked result.
QString run(const QString &before, const Command &command, ORVEditingOptions options = {});

} // namespace editingtest
