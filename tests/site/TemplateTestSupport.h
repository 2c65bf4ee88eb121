#pragma once

#include "site/MGTemplateEngine.h"
#include "site/MGTemplatePluginRegistry.h"

#include <QString>

#include <ostream>
#include <vector>

// Readable texts in test failures.
inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace sitetest
{

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

// The plug-ins `{% load %}` finds in the tests: "TestMarkers" (markers
// "both" starts and ends a block at once, "noend" starts a block without end
// markers, "jump" resumes outside the template, "shout" prints "HEY", and
// "for", a name already taken), "TestFilters" (filter "reverse") and
// "TestBoth" (a filter "twice" and the same markers).
const MGTemplatePluginRegistry &testRegistry();

// An engine with the matcher installed.
std::unique_ptr<MGTemplateEngine> makeEngine();

struct Outcome {
    QString output;
    std::vector<int> codes;
};
// One run with a fresh recording delegate.
Outcome expand(MGTemplateEngine &engine, const QString &text, const MGTemplateMap &variables = {});

} // namespace sitetest
