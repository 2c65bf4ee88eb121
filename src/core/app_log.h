#pragma once

#include <QString>

// Diagnostics logs in the caches folder: "orvo-log.txt" for the application
// and "orvo-search-log.txt" for search. A log starts with the line
// "Orvo log"; each entry is one line, without a time stamp. No part of the
// normal flow writes them: they are for tracking a problem down.

// writeApplicationLogWithLogString:. Appends "string\n" to orvo-log.txt.
bool writeApplicationLogWithLogString(const QString &logString);

// Appends "string\n" to the named log in the caches folder (or in `folder`
// when given), making the file with its first line when it is missing.
bool writeLogStringToLogFile(const QString &fileName, const QString &logString, const QString &folder = {});
