#include "site/MGTemplatePluginRegistry.h"

#include "site/MGTemplateStandardFilters.h"
#include "site/MGTemplateStandardMarkers.h"

MGTemplatePluginRegistry &MGTemplatePluginRegistry::sharedRegistry()
{
    static MGTemplatePluginRegistry *registry = [] {
        auto *r = new MGTemplatePluginRegistry; // lives until exit: engines may be torn down late
        r->registerMarkerClass(QStringLiteral("MGTemplateStandardMarkers"), [](MGTemplateEngine *engine) {
            return std::make_shared<MGTemplateStandardMarkers>(engine);
        });
        r->registerFilterClass(QStringLiteral("MGTemplateStandardFilters"),
                               [] { return std::make_shared<MGTemplateStandardFilters>(); });
        return r;
    }();
    return *registry;
}

void MGTemplatePluginRegistry::registerMarkerClass(const QString &className, MarkerFactory factory)
{
    std::lock_guard lock(m_mutex);
    m_markers.insert(className, std::move(factory));
}

void MGTemplatePluginRegistry::registerFilterClass(const QString &className, FilterFactory factory)
{
    std::lock_guard lock(m_mutex);
    m_filters.insert(className, std::move(factory));
}

std::shared_ptr<MGTemplateFilter> MGTemplatePluginRegistry::makeFilter(const QString &className) const
{
    FilterFactory factory;
    {
        std::lock_guard lock(m_mutex);
        factory = m_filters.value(className);
    }
    return factory ? factory() : nullptr;
}

std::shared_ptr<MGTemplateMarker> MGTemplatePluginRegistry::makeMarker(const QString &className,
                                                                       MGTemplateEngine *engine) const
{
    MarkerFactory factory;
    {
        std::lock_guard lock(m_mutex);
        factory = m_markers.value(className);
    }
    return factory ? factory(engine) : nullptr;
}
