#pragma once

#include "site/MGTemplateMatch.h"
#include "site/MGTemplateRange.h"

class MGTemplateEngine;

// Finds markers and expressions in the template of a run. The engine owns its
// matcher and calls it from the thread of the run.
class MGTemplateEngineMatcher
{
public:
    virtual ~MGTemplateEngineMatcher() = default;

    virtual MGTemplateEngine *engine() const = 0;
    // The engine is not owned; setMatcher sets it.
    virtual void setEngine(MGTemplateEngine *engine) = 0;
    // Called once at the start of each run: reads the delimiters and the
    // template from the engine.
    virtual void engineSettingsChanged() = 0;
    // The first marker or expression that lies wholly within `range` of the
    // template, or null when there is none. The record belongs to the
    // matcher and stays valid until the next call of this or of
    // engineSettingsChanged.
    virtual const MGTemplateMatch *firstMarkerWithinRange(MGTemplateRange range) = 0;
};
