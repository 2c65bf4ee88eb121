#pragma once

#include "site/MGTemplateEngine.h"

#include <QString>

#include <vector>

namespace sitetest {

// Records what a run reports to its delegate.
class RecordingDelegate : public MGTemplateEngineDelegate
{
public:
    void templateEngineBlockStarted(MGTemplateEngine *, const MGTemplateBlock &block) override;
    void templateEngineBlockEnded(MGTemplateEngine *, const MGTemplateBlock &block) override;
    void templateEngineFinishedProcessingTemplate(MGTemplateEngine *) override { ++finished; }
    void templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *, const MGTemplateError &error,
                                                    bool continuing) override;

    std::vector<int> codes;
    std::vector<MGTemplateError> errors;
    std::vector<bool> continuing;
    QStringList events; // "+name" when a block starts, "-name" when it ends
    int finished = 0;
};

// Variables from JSON text ({"$date": ...} for dates); fails the test on bad
// JSON.
MGTemplateMap variablesFromJson(const char *json);

// An engine with the matcher installed.
std::unique_ptr<MGTemplateEngine> makeEngine();

struct Outcome {
    QString output;
    std::vector<int> codes;
};
// One run with a fresh recording delegate.
Outcome expand(MGTemplateEngine &engine, const QString &text, const MGTemplateMap &variables = {});

} // namespace sitetest
