#pragma once

#include <QHash>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>

class MGTemplateEngine;
class MGTemplateFilter;
class MGTemplateMarker;

// The classes that `{% load ClassName %}` can load into an engine, by name.
// A class may offer a filter handler, a marker handler or both; load prefers
// the filter.
//
// Thread-safe: registration and look-up may happen from any thread.
class MGTemplatePluginRegistry
{
public:
    using MarkerFactory = std::function<std::shared_ptr<MGTemplateMarker>(MGTemplateEngine *engine)>;
    using FilterFactory = std::function<std::shared_ptr<MGTemplateFilter>()>;

    // The process's registry, holding the standard classes
    // "MGTemplateStandardMarkers" and "MGTemplateStandardFilters".
    static MGTemplatePluginRegistry &sharedRegistry();

    // An empty registry (tests, or an engine that may load nothing).
    MGTemplatePluginRegistry() = default;

    // A later registration of the same name replaces the earlier one.
    void registerMarkerClass(const QString &className, MarkerFactory factory);
    void registerFilterClass(const QString &className, FilterFactory factory);

    // A new handler of the class, or null when the class offers none.
    std::shared_ptr<MGTemplateFilter> makeFilter(const QString &className) const;
    std::shared_ptr<MGTemplateMarker> makeMarker(const QString &className, MGTemplateEngine *engine) const;

private:
    mutable std::mutex m_mutex;
    QHash<QString, MarkerFactory> m_markers;
    QHash<QString, FilterFactory> m_filters;
};
