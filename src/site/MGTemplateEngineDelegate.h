#pragma once

#include "site/MGTemplateBlock.h"
#include "site/MGTemplateError.h"

class MGTemplateEngine;

// Receives a run's errors and block events. Every operation is optional: the
// defaults do nothing. Called synchronously on the run's thread.
class MGTemplateEngineDelegate
{
public:
    virtual ~MGTemplateEngineDelegate() = default;

    virtual void templateEngineBlockStarted(MGTemplateEngine * /*engine*/, const MGTemplateBlock & /*block*/)
    {
    }
    virtual void templateEngineBlockEnded(MGTemplateEngine * /*engine*/, const MGTemplateBlock & /*block*/) {}
    virtual void templateEngineFinishedProcessingTemplate(MGTemplateEngine * /*engine*/) {}
    virtual void templateEngineEncounteredErrorIsContinuing(MGTemplateEngine * /*engine*/,
                                                            const MGTemplateError & /*error*/,
                                                            bool /*continuing*/)
    {
    }
};
