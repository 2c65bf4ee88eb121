#pragma once

#include <QString>

// The errors a template run reports to its delegate. Runs never throw: each
// error is handed to the delegate and the run goes on or stops as the code
// says.
enum MGTemplateEngineErrorCode : int {
    // A marker both began and ended a block at once. The run goes on.
    MGTemplateEngineErrorBlockStartedAndEndedSimultaneously = 0,
    // A marker ended a block that isn't open, or that it may not end. Stops.
    MGTemplateEngineErrorBlockEndedWithoutBeingStarted = 1,
    // No marker of that name is loaded. The run goes on.
    MGTemplateEngineErrorInvalidMarker = 2,
    // An expression named a variable that has no value. The run goes on.
    MGTemplateEngineErrorInvalidVariable = 3,
    // A marker started a block without naming the markers that end it.
    MGTemplateEngineErrorNoEndMarkersForBlock = 4,
    // A marker asked to resume the scan outside the template. Stops.
    MGTemplateEngineErrorInvalidRange = 5,
    // The template ended with blocks still open.
    MGTemplateEngineErrorBlocksLeftOpen = 6,
    // The engine has no matcher; nothing is produced.
    MGTemplateEngineErrorNoMatcher = 7,
    // A run went beyond one of the engine's run limits (MGTemplateEngine::
    // RunLimits): too many markers and expressions, too much output, or
    // blocks nested too deep. Stops.
    MGTemplateEngineErrorRunLimitReached = 8,
};

struct MGTemplateError {
    QString domain;      // "MGTemplateEngineErrorDomain"
    int code = 0;        // an MGTemplateEngineErrorCode
    QString description; // the message, prefixed "Fatal Error: " when reported as not continuing
};
