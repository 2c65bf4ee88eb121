#pragma once

#include "site/MGTemplateBlock.h"
#include "site/MGTemplateEngineDelegate.h"
#include "site/MGTemplateEngineMatcher.h"
#include "site/MGTemplateFilter.h"
#include "site/MGTemplateMarker.h"
#include "site/MGTemplateRange.h"
#include "site/MGTemplateValue.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class MGTemplatePluginRegistry;

// Expands a text template against a dictionary of variables.
//
// A template is text with markers, `{% name args %}`, and expressions,
// `{{ variable | filter args }}`. One run is a single pass over the template:
// plain text is copied, an expression is replaced by the variable's value, and
// a marker may open or close a block, switch output off and on, or send the
// scan back to an earlier position (which is how loops repeat). The engine
// knows no marker or filter itself: handlers are plug-ins registered by name,
// and the standard set (for, if, section, comment, now, load, cycle, set;
// uppercase, lowercase, capitalized, date_format, color_format) is loaded on
// construction. A matcher plug-in finds the markers; none is installed at
// first.
//
// Errors are reported to the delegate and never thrown; most let the run go
// on (see MGTemplateError.h).
//
// Typical use, one engine for a whole build:
//
//   auto engine = MGTemplateEngine::templateEngine();
//   engine->setMatcher(std::make_unique<ICUTemplateMatcher>(engine.get()));
//   engine->setDelegate(&builder);      // collects errors; any error fails the build
//   for (each output file)
//       std::optional<QString> html = engine->processTemplateWithVariables(text, variables);
//
// Keep the engine (and so its matcher) for every page: the matcher keeps the
// parsed form of the last few templates, so a template met again isn't
// parsed again. Variables are MGTemplateValue maps; build a shared list
// (recent posts, the category tree) once and put the same value into each
// page's variables, since copies share their data.
//
// Threading: an engine is used from one thread at a time, and a run is not
// re-entrant (a handler must not start another run of the same engine). Any
// number of runs may follow each other; globals and loaded plug-ins stay from
// one run to the next.
class MGTemplateEngine
{
public:
    // Guards that keep one run from taking unbounded time or memory on a
    // template that loops without end or nests without end. The defaults are
    // far above what a site's largest page needs (an archive of 10,000 posts
    // is about half a million markers and a few megabytes); a run that goes
    // beyond one reports MGTemplateEngineErrorRunLimitReached and stops.
    struct RunLimits {
        qint64 maxMarkers = 20'000'000;      // markers and expressions processed per run
        qsizetype maxOutputLength = 1 << 28; // UTF-16 units of output (512 MB)
        qsizetype maxOpenBlocks = 1000;      // blocks open at once; values nest as deep
    };

    static std::unique_ptr<MGTemplateEngine> templateEngine();
    static QString engineVersion();

    MGTemplateEngine();
    ~MGTemplateEngine();
    MGTemplateEngine(const MGTemplateEngine &) = delete;
    MGTemplateEngine &operator=(const MGTemplateEngine &) = delete;

    // The engine owns its matcher and tells it which engine it serves.
    void setMatcher(std::unique_ptr<MGTemplateEngineMatcher> matcher);
    MGTemplateEngineMatcher *matcher() const { return _matcher.get(); }
    // Not owned: the delegate must outlive the engine's runs.
    void setDelegate(MGTemplateEngineDelegate *delegate) { _delegate = delegate; }
    MGTemplateEngineDelegate *delegate() const { return _delegate; }

    // Globals: variables that survive from one run to the next.
    void setObjectForKey(const MGTemplateValue &value, const QString &key);
    void addEntriesFromDictionary(const MGTemplateMap &entries);
    MGTemplateValue objectForKey(QStringView key) const;

    // Registers the handler under each name it serves; a name already taken
    // keeps its handler.
    void loadMarker(const std::shared_ptr<MGTemplateMarker> &marker);
    void loadFilter(const std::shared_ptr<MGTemplateFilter> &filter);

    // Where `{% load ClassName %}` finds classes: the process's shared
    // registry unless another is set. Not owned.
    void setPluginRegistry(const MGTemplatePluginRegistry *registry) { m_registry = registry; }
    const MGTemplatePluginRegistry *pluginRegistry() const { return m_registry; }

    void setRunLimits(const RunLimits &limits) { m_limits = limits; }
    const RunLimits &runLimits() const { return m_limits; }

    // One run. Returns the output; when a run stops on an error, the output
    // produced up to that point. Nothing when no matcher is set.
    std::optional<QString> processTemplateWithVariables(const QString &templateString,
                                                        const MGTemplateMap &variables);
    // Reads the file, in the encoding its byte order mark names or else UTF-8
    // (Latin-1 when it isn't valid UTF-8), and runs it. Nothing when the file
    // can't be read.
    std::optional<QString> processTemplateInFileAtPathWithVariables(const QString &path,
                                                                    const MGTemplateMap &variables);

    // A variable's value, null when it has none. A path like `post.cats` is
    // cut at dots; its first component is looked up in the run's variables,
    // then the globals, then the variables of the open blocks from the
    // innermost outward, and the rest is read from there: map keys; on a
    // list, a key taken from every element or else a decimal index
    // (`posts.0.title`); "@count" of a list or map; "length" of a text.
    MGTemplateValue resolveVariable(QStringView name) const;
    // The same and, when asked, the value that holds the last component and
    // that component (for a one-part path: the container it was found in and
    // the path).
    MGTemplateValue valueForVariableParentParentKey(QStringView name, MGTemplateValue *parent,
                                                    QString *parentKey) const;
    // Assigns a variable. With `force`, or when the variable has no value yet,
    // the value goes into the innermost open block (or the run's variables
    // when none is open), under the whole name. Otherwise it replaces the
    // value where it lives: a map's key, or a list's element when the last
    // component is an index of it.
    void setValueForVariableForceCurrentStackFrame(const MGTemplateValue &value, const QString &name,
                                                   bool force);
    // A variable's value where it is stored, to change in place; null when it
    // has none or its value is computed (as a key taken over a list). Valid
    // until the next assignment, block change or run.
    MGTemplateValue *mutableValueForVariable(QStringView name);
    // A copy of the run's variables.
    MGTemplateMap templateVariables() const { return _templateVariables; }

    // Delegate calls. reportErrorCodeContinuing does nothing without a
    // delegate.
    void reportErrorCodeContinuing(const QString &message, int code, bool continuing);
    // Tells the delegate that the innermost open block started (or, with
    // false, is about to end).
    void reportBlockBoundaryStarted(bool started);
    void reportTemplateProcessingFinished();

    // What the matcher reads at the start of a run.
    const QString &markerStartDelimiter() const { return _markerStartDelimiter; }
    const QString &markerEndDelimiter() const { return _markerEndDelimiter; }
    const QString &expressionStartDelimiter() const { return _expressionStartDelimiter; }
    const QString &expressionEndDelimiter() const { return _expressionEndDelimiter; }
    const QString &filterDelimiter() const { return _filterDelimiter; }
    const QString &templateContents() const { return _templateContents; }

private:
    void setRunGlobals();
    bool outputEnabled() const { return _outputDisabledCount == 0; }
    // The value of a path's first component in the first scope that holds
    // one (run variables, globals, blocks innermost first), and that scope.
    const MGTemplateValue *findInScopes(QStringView first, const MGTemplateMap **container) const;
    // A variable's value, pointing into the scopes or into `scratch`; null for
    // nothing. `parent` and `parentKey` as in valueForVariableParentParentKey.
    const MGTemplateValue *lookUp(QStringView name, MGTemplateValue &scratch, MGTemplateValue *parent,
                                  QString *parentKey) const;
    class Output;
    // Runs one marker; returns false when the run must stop.
    bool processMarker(const MGTemplateMatch &match, Output &output);
    void printValue(const MGTemplateMatch &match, const MGTemplateValue &value, Output &output);
    bool checkOutputLimit(const Output &output);

    std::vector<MGTemplateBlock> _openBlocksStack;
    // The handler of each open block's marker (a block's name always maps to
    // the same handler: a taken name is never given to another).
    std::vector<const MGTemplateMarker *> m_blockHandlers;
    MGTemplateMap _globals;
    qint64 _outputDisabledCount = 0;
    qsizetype _templateLength = 0;
    QHash<QString, std::shared_ptr<MGTemplateFilter>> _filters;
    QHash<QString, std::shared_ptr<MGTemplateMarker>> _markers;
    // The same, sorted by name for a search without hashing: every marker
    // of a run is looked up here.
    std::vector<std::pair<QString, MGTemplateMarker *>> m_markersByName;
    MGTemplateMarker *handlerForMarker(const QString &name);
    // Each loaded marker handler once, in load order, for the end-of-run call.
    std::vector<std::shared_ptr<MGTemplateMarker>> m_markerHandlers;
    MGTemplateMap _templateVariables;
    bool _literal = false;
    QString _markerStartDelimiter;
    QString _markerEndDelimiter;
    QString _expressionStartDelimiter;
    QString _expressionEndDelimiter;
    QString _filterDelimiter;
    QString _literalStartMarker;
    QString _literalEndMarker;
    MGTemplateEngineDelegate *_delegate = nullptr;
    std::unique_ptr<MGTemplateEngineMatcher> _matcher;
    QString _templateContents;
    MGTemplateRange _remainingRange;

    const MGTemplatePluginRegistry *m_registry = nullptr;
    RunLimits m_limits;
    qint64 m_markersThisRun = 0;
    MGTemplateValue m_engineGlobal; // the "engine" global, made once
    qsizetype m_outputSizeHint = 0; // last run's output length, to reserve
};
