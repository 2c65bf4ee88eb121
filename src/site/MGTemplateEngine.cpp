#include "site/MGTemplateEngine.h"

#include "site/MGTemplatePluginRegistry.h"
#include "site/MGTemplateStandardFilters.h"
#include "site/MGTemplateStandardMarkers.h"
#include "site/templatetext.h"

#include <QFile>
#include <QStringDecoder>

namespace
{

const QLatin1String kCountKey("@count");
const QLatin1String kTextLengthKey("length");

// A decimal index at the start of a path component; nothing when the
// component doesn't begin with a digit. Large numbers saturate (and so lie
// past the end of any list).
std::optional<qsizetype> indexFromComponent(QStringView component)
{
    if (component.isEmpty() || component[0] < u'0' || component[0] > u'9')
        return std::nullopt;
    qsizetype index = 0;
    for (QChar c : component) {
        if (c < u'0' || c > u'9')
            break;
        index = index > (std::numeric_limits<qsizetype>::max() - 9) / 10
                    ? std::numeric_limits<qsizetype>::max()
                    : index * 10 + (c.unicode() - u'0');
    }
    return index;
}

// A key read from a value that has no stored entry for it: "@count" of a
// list or map, "length" of a text, and a key taken from every element of a
// list. Null when there is nothing to read.
MGTemplateValue computedValueForKey(const MGTemplateValue &object, QStringView key)
{
    if (const MGTemplateList *list = object.list()) {
        if (key == kCountKey)
            return MGTemplateValue::integer(list->size());
        // Mapped over the elements; elements without the key stand as null.
        // When no element has it, the key reads as nothing, which lets a
        // numeric component fall back to an index.
        MGTemplateList mapped;
        bool any = false;
        for (const MGTemplateValue &element : *list) {
            const MGTemplateMap *map = element.map();
            const MGTemplateValue *stored = map ? map->find(key) : nullptr;
            MGTemplateValue v = stored ? *stored : computedValueForKey(element, key);
            any = any || !v.isNull();
            mapped.append(std::move(v));
        }
        return any ? MGTemplateValue(std::move(mapped)) : MGTemplateValue();
    }
    if (const MGTemplateMap *map = object.map())
        return key == kCountKey ? MGTemplateValue::integer(map->size()) : MGTemplateValue();
    if (const QString *text = object.text())
        return key == kTextLengthKey ? MGTemplateValue::integer(text->size()) : MGTemplateValue();
    return MGTemplateValue();
}

QStringView firstComponent(QStringView path)
{
    qsizetype dot = 0;
    while (dot < path.size() && path[dot] != u'.')
        ++dot;
    return path.left(dot);
}

// The component that starts at `from` (just behind a dot, or 0).
QStringView componentAt(QStringView path, qsizetype from)
{
    qsizetype end = from;
    while (end < path.size() && path[end] != u'.')
        ++end;
    return path.mid(from, end - from);
}

// Reads the components of `path` after the first from `current`, the first
// component's value. Each is a stored key, else a computed one, else (on a
// list) an index. Returns null when a step yields nothing; the result may
// point into `computed`. With `parent`, also gives the value that holds the
// last component.
const MGTemplateValue *walkPath(const MGTemplateValue *current, QStringView path, qsizetype firstLength,
                                MGTemplateValue &computed, MGTemplateValue *parent)
{
    for (qsizetype pos = firstLength; pos < path.size();) {
        const QStringView component = componentAt(path, pos + 1);
        pos += 1 + component.size();
        if (parent)
            *parent = *current;
        const MGTemplateMap *map = current->map();
        if (const MGTemplateValue *stored = map ? map->find(component) : nullptr) {
            current = stored;
            continue;
        }
        MGTemplateValue v = computedValueForKey(*current, component);
        if (v.isNull()) {
            const MGTemplateList *list = current->list();
            const std::optional<qsizetype> index = list ? indexFromComponent(component) : std::nullopt;
            if (!index || *index >= list->size())
                return nullptr;
            current = &list->at(*index);
            continue;
        }
        computed = std::move(v);
        current = &computed;
    }
    return current;
}

// Walks the components of `path` that lie in [from, to) (`from` at a dot)
// from `current`, through stored places only: map keys and list indexes.
// Null when one isn't there.
MGTemplateValue *walkMutable(MGTemplateValue *current, QStringView path, qsizetype from, qsizetype to)
{
    for (qsizetype pos = from; current && pos < to;) {
        const QStringView component = componentAt(path, pos + 1);
        pos += 1 + component.size();
        if (MGTemplateMap *map = current->mutableMap()) {
            current = map->findMutable(component);
        } else if (MGTemplateList *list = current->mutableList()) {
            const std::optional<qsizetype> index = indexFromComponent(component);
            current = index && *index < list->size() ? &list->mutableAt(*index) : nullptr;
        } else {
            current = nullptr;
        }
    }
    return current;
}

} // namespace

// The output of a run. Pieces are copied into a buffer that grows by
// doubling, through a pointer kept at hand: a page is hundreds of small
// pieces, and QString's own append checks sharing and room on each.
class MGTemplateEngine::Output
{
public:
    explicit Output(qsizetype capacity)
    {
        m_text.resize(std::max<qsizetype>(capacity, 1024));
        m_data = reinterpret_cast<char16_t *>(m_text.data());
    }

    qsizetype size() const { return m_size; }

    // Room for n more units, to be filled by the caller.
    char16_t *extend(qsizetype n)
    {
        if (n > m_text.size() - m_size) {
            m_text.resize(std::max(m_text.size() * 2, m_size + n));
            m_data = reinterpret_cast<char16_t *>(m_text.data());
        }
        char16_t *at = m_data + m_size;
        m_size += n;
        return at;
    }
    void append(const QChar *text, qsizetype n)
    {
        if (n > 0)
            std::copy_n(reinterpret_cast<const char16_t *>(text), n, extend(n));
    }
    void append(QStringView text) { append(text.data(), text.size()); }
    void shrink(qsizetype n) { m_size = n; }

    QString take()
    {
        m_text.resize(m_size);
        return std::move(m_text);
    }

private:
    QString m_text;
    char16_t *m_data = nullptr;
    qsizetype m_size = 0;
};

std::unique_ptr<MGTemplateEngine> MGTemplateEngine::templateEngine()
{
    return std::make_unique<MGTemplateEngine>();
}

QString MGTemplateEngine::engineVersion()
{
    return QStringLiteral("1.0.1");
}

MGTemplateEngine::MGTemplateEngine()
    : _markerStartDelimiter(QStringLiteral("{%")), _markerEndDelimiter(QStringLiteral("%}")),
      _expressionStartDelimiter(QStringLiteral("{{")), _expressionEndDelimiter(QStringLiteral("}}")),
      _filterDelimiter(QStringLiteral("|")), _literalStartMarker(QStringLiteral("literal")),
      _literalEndMarker(QStringLiteral("/literal")), m_registry(&MGTemplatePluginRegistry::sharedRegistry())
{
    loadMarker(std::make_shared<MGTemplateStandardMarkers>(this));
    loadFilter(std::make_shared<MGTemplateStandardFilters>());
    m_engineGlobal =
        MGTemplateMap{{QStringLiteral("delimiters"),
                       MGTemplateMap{{QStringLiteral("markerStart"), _markerStartDelimiter},
                                     {QStringLiteral("markerEnd"), _markerEndDelimiter},
                                     {QStringLiteral("expressionStart"), _expressionStartDelimiter},
                                     {QStringLiteral("expressionEnd"), _expressionEndDelimiter},
                                     {QStringLiteral("filter"), _filterDelimiter}}}};
}

MGTemplateEngine::~MGTemplateEngine() = default;

void MGTemplateEngine::setMatcher(std::unique_ptr<MGTemplateEngineMatcher> matcher)
{
    _matcher = std::move(matcher);
    if (_matcher)
        _matcher->setEngine(this);
}

void MGTemplateEngine::setObjectForKey(const MGTemplateValue &value, const QString &key)
{
    _globals.insert(key, value);
}

void MGTemplateEngine::addEntriesFromDictionary(const MGTemplateMap &entries)
{
    for (const MGTemplateMap::Entry &e : entries)
        _globals.insert(e.first, e.second);
}

MGTemplateValue MGTemplateEngine::objectForKey(QStringView key) const
{
    const MGTemplateValue *v = _globals.find(key);
    return v ? *v : MGTemplateValue();
}

void MGTemplateEngine::loadMarker(const std::shared_ptr<MGTemplateMarker> &marker)
{
    if (!marker)
        return;
    bool registered = false;
    for (const QString &name : marker->markers()) {
        if (!_markers.contains(name)) {
            _markers.insert(name, marker);
            registered = true;
        }
    }
    if (!registered)
        return;
    m_markerHandlers.push_back(marker);
    m_markersByName.clear();
    for (auto it = _markers.constBegin(); it != _markers.constEnd(); ++it)
        m_markersByName.emplace_back(it.key(), it.value().get());
    std::sort(m_markersByName.begin(), m_markersByName.end(),
              [](const auto &a, const auto &b) { return mgtemplatemap::compareKeys(a.first, b.first) < 0; });
}

MGTemplateMarker *MGTemplateEngine::handlerForMarker(const QString &name)
{
    const auto it = std::lower_bound(
        m_markersByName.begin(), m_markersByName.end(), name,
        [](const auto &entry, const QString &n) { return mgtemplatemap::compareKeys(entry.first, n) < 0; });
    return it != m_markersByName.end() && mgtemplate::sameText(it->first, name) ? it->second : nullptr;
}

void MGTemplateEngine::loadFilter(const std::shared_ptr<MGTemplateFilter> &filter)
{
    if (!filter)
        return;
    for (const QString &name : filter->filters()) {
        if (!_filters.contains(name))
            _filters.insert(name, filter);
    }
}

void MGTemplateEngine::setRunGlobals()
{
    static const QString truths[] = {QStringLiteral("true"), QStringLiteral("YES"), QStringLiteral("yes")};
    static const QString falsities[] = {QStringLiteral("false"), QStringLiteral("NO"), QStringLiteral("no")};
    _globals.insert(QStringLiteral("engine"), m_engineGlobal);
    for (const QString &name : truths)
        _globals.insert(name, MGTemplateValue::boolean(true));
    for (const QString &name : falsities)
        _globals.insert(name, MGTemplateValue::boolean(false));
}

const MGTemplateValue *MGTemplateEngine::findInScopes(QStringView first,
                                                      const MGTemplateMap **container) const
{
    const MGTemplateMap::Probe probe(first);
    const auto held = [&probe](const MGTemplateMap &map) {
        const MGTemplateValue *v = map.find(probe);
        return v && !v->isNull() ? v : nullptr;
    };
    const MGTemplateValue *v = held(_templateVariables);
    if (v) {
        *container = &_templateVariables;
        return v;
    }
    if ((v = held(_globals))) {
        *container = &_globals;
        return v;
    }
    for (auto block = _openBlocksStack.rbegin(); block != _openBlocksStack.rend(); ++block) {
        if ((v = held(block->vars))) {
            *container = &block->vars;
            return v;
        }
    }
    return nullptr;
}

const MGTemplateValue *MGTemplateEngine::lookUp(QStringView name, MGTemplateValue &scratch,
                                                MGTemplateValue *parent, QString *parentKey) const
{
    const QStringView first = firstComponent(name);
    const MGTemplateMap *container = nullptr;
    const MGTemplateValue *value = findInScopes(first, &container);
    if (!value)
        return nullptr;
    if (parent)
        *parent = *container;
    if (parentKey)
        *parentKey = componentAt(name, qsizetype(name.lastIndexOf(u'.') + 1)).toString();
    return walkPath(value, name, first.size(), scratch, parent);
}

MGTemplateValue MGTemplateEngine::resolveVariable(QStringView name) const
{
    MGTemplateValue scratch;
    const MGTemplateValue *v = lookUp(name, scratch, nullptr, nullptr);
    if (!v)
        return MGTemplateValue();
    return v == &scratch ? std::move(scratch) : *v;
}

MGTemplateValue MGTemplateEngine::valueForVariableParentParentKey(QStringView name, MGTemplateValue *parent,
                                                                  QString *parentKey) const
{
    MGTemplateValue scratch;
    MGTemplateValue holder;
    const MGTemplateValue *v = lookUp(name, scratch, &holder, parentKey);
    if (parent)
        *parent = v ? holder : MGTemplateValue();
    return v ? *v : MGTemplateValue();
}

void MGTemplateEngine::setValueForVariableForceCurrentStackFrame(const MGTemplateValue &value,
                                                                 const QString &name, bool force)
{
    const QStringView first = firstComponent(name);
    const MGTemplateMap *found = nullptr;
    const MGTemplateValue *firstValue = force ? nullptr : findInScopes(first, &found);
    // The scopes are this engine's own.
    MGTemplateMap *container = const_cast<MGTemplateMap *>(found);
    if (firstValue && first.size() == name.size()) {
        container->insert(name, value); // replaces the value where it lives
        return;
    }
    MGTemplateValue scratch;
    if (!firstValue || !walkPath(firstValue, name, first.size(), scratch, nullptr)) {
        MGTemplateMap &target = _openBlocksStack.empty() ? _templateVariables : _openBlocksStack.back().vars;
        target.insert(name, value);
        return;
    }
    // The variable has a value: replace it where it lives. Only stored
    // places can be written; a key computed over a list's elements or a
    // counted size holds nothing to replace.
    const qsizetype lastDot = name.lastIndexOf(u'.');
    MGTemplateValue *parent = walkMutable(container->findMutable(first), name, first.size(), lastDot);
    const QStringView key = QStringView(name).mid(lastDot + 1);
    if (!parent)
        return;
    if (MGTemplateMap *map = parent->mutableMap()) {
        map->insert(key.toString(), value);
    } else if (MGTemplateList *list = parent->mutableList()) {
        const std::optional<qsizetype> index = indexFromComponent(key);
        if (index && *index < list->size())
            list->mutableAt(*index) = value;
    }
}

MGTemplateValue *MGTemplateEngine::mutableValueForVariable(QStringView name)
{
    const QStringView first = firstComponent(name);
    const MGTemplateMap *found = nullptr;
    if (!findInScopes(first, &found))
        return nullptr;
    // The scopes are this engine's own.
    MGTemplateMap *container = const_cast<MGTemplateMap *>(found);
    return walkMutable(container->findMutable(first), name, first.size(), name.size());
}

void MGTemplateEngine::reportErrorCodeContinuing(const QString &message, int code, bool continuing)
{
    if (!_delegate)
        return;
    MGTemplateError error;
    error.domain = QStringLiteral("MGTemplateEngineErrorDomain");
    error.code = code;
    error.description = continuing ? message : QStringLiteral("Fatal Error: %1").arg(message);
    _delegate->templateEngineEncounteredErrorIsContinuing(this, error, continuing);
}

void MGTemplateEngine::reportBlockBoundaryStarted(bool started)
{
    if (!_delegate || _openBlocksStack.empty())
        return;
    if (started)
        _delegate->templateEngineBlockStarted(this, _openBlocksStack.back());
    else
        _delegate->templateEngineBlockEnded(this, _openBlocksStack.back());
}

void MGTemplateEngine::reportTemplateProcessingFinished()
{
    if (_delegate)
        _delegate->templateEngineFinishedProcessingTemplate(this);
}

bool MGTemplateEngine::checkOutputLimit(const Output &output)
{
    if (output.size() <= m_limits.maxOutputLength)
        return true;
    reportErrorCodeContinuing(
        QStringLiteral("Template processing stopped: the output grew beyond %1 characters")
            .arg(m_limits.maxOutputLength),
        MGTemplateEngineErrorRunLimitReached, false);
    return false;
}

std::optional<QString> MGTemplateEngine::processTemplateWithVariables(const QString &templateString,
                                                                      const MGTemplateMap &variables)
{
    _openBlocksStack.clear();
    m_blockHandlers.clear();
    setRunGlobals();
    _outputDisabledCount = 0;
    _templateContents = templateString;
    _templateLength = templateString.size();
    _templateVariables = variables;
    _remainingRange = {0, _templateLength};
    _literal = false;
    m_markersThisRun = 0;

    if (!_matcher) {
        reportErrorCodeContinuing(QStringLiteral("No matcher has been configured for the template engine"),
                                  MGTemplateEngineErrorNoMatcher, false);
        return std::nullopt;
    }
    _matcher->engineSettingsChanged();

    Output output(std::min(m_outputSizeHint, m_limits.maxOutputLength));
    const QChar *text = _templateContents.constData();
    while (_remainingRange.location != MGTemplateRange::NotFound) {
        const MGTemplateMatch *found = _matcher->firstMarkerWithinRange(_remainingRange);
        if (!found) {
            if (outputEnabled())
                output.append(text + _remainingRange.location, _remainingRange.length);
            checkOutputLimit(output);
            if (!_openBlocksStack.empty()) {
                QStringList names;
                for (const MGTemplateBlock &block : _openBlocksStack)
                    names.append(block.name);
                const auto count = qulonglong(names.size());
                reportErrorCodeContinuing(
                    QStringLiteral("Finished processing template, but %1 %2 left open (%3).")
                        .arg(count)
                        .arg(count == 1 ? QStringLiteral("block was") : QStringLiteral("blocks were"),
                             names.join(QStringLiteral(", "))),
                    MGTemplateEngineErrorBlocksLeftOpen, true);
            }
            break;
        }
        const MGTemplateMatch &match = *found;
        if (match.range.location < _remainingRange.location || match.range.end() > _templateLength) {
            reportErrorCodeContinuing(
                QStringLiteral("Marker handler \"%1\" specified an invalid range to resume "
                               "processing from")
                    .arg(match.name),
                MGTemplateEngineErrorInvalidRange, false);
            break;
        }
        if (++m_markersThisRun > m_limits.maxMarkers) {
            reportErrorCodeContinuing(
                QStringLiteral("Template processing stopped after %1 markers and expressions")
                    .arg(m_limits.maxMarkers),
                MGTemplateEngineErrorRunLimitReached, false);
            break;
        }
        if (outputEnabled())
            output.append(text + _remainingRange.location, match.range.location - _remainingRange.location);
        _remainingRange = {match.range.end(), _templateLength - match.range.end()};

        if (mgtemplate::sameText(match.name, _literalStartMarker)) {
            if (!_literal || !outputEnabled())
                _literal = true;
            else
                output.append(text + match.range.location, match.range.length);
        } else if (mgtemplate::sameText(match.name, _literalEndMarker)) {
            _literal = false;
        } else if (_literal && outputEnabled()) {
            output.append(text + match.range.location, match.range.length);
        } else if (match.type == MGTemplateMatch::Type::Expression) {
            MGTemplateValue scratch;
            if (const MGTemplateValue *value = lookUp(match.name, scratch, nullptr, nullptr)) {
                if (outputEnabled())
                    printValue(match, *value, output);
            } else if (outputEnabled()) {
                reportErrorCodeContinuing(
                    QStringLiteral("\"%1\" is not a valid %2").arg(match.name, QStringLiteral("variable")),
                    MGTemplateEngineErrorInvalidVariable, true);
            }
        } else if (!processMarker(match, output)) {
            break;
        }
        if (!checkOutputLimit(output))
            break;
    }

    for (const std::shared_ptr<MGTemplateMarker> &handler : m_markerHandlers)
        handler->engineFinishedProcessingTemplate();
    reportTemplateProcessingFinished();
    m_outputSizeHint = output.size();
    return output.take();
}

bool MGTemplateEngine::processMarker(const MGTemplateMatch &match, Output &output)
{
    // Handlers stay alive as long as the engine (m_markerHandlers holds them),
    // also when a `load` marker registers more during the call.
    MGTemplateMarker *handler = handlerForMarker(match.name);
    if (!handler) {
        reportErrorCodeContinuing(
            QStringLiteral("\"%1\" is not a valid %2").arg(match.name, QStringLiteral("marker")),
            MGTemplateEngineErrorInvalidMarker, true);
        return true;
    }

    MGTemplateMarkerCall call(match.name, match.args, match.range);
    const bool wasEnabled = outputEnabled();
    call.outputEnabled = wasEnabled;
    call.nextRange = _remainingRange;
    if (!_openBlocksStack.empty() && m_blockHandlers.back() == handler)
        call.currentBlockInfo = &_openBlocksStack.back();
    const MGTemplateValue result = handler->markerEncountered(call);

    if (call.outputEnabled != wasEnabled)
        _outputDisabledCount += call.outputEnabled ? -1 : 1;

    const MGTemplateRange next = call.nextRange;
    if (next.location < 0 || next.length < 0 || next.location > _templateLength ||
        next.length > _templateLength - next.location) {
        reportErrorCodeContinuing(
            QStringLiteral("Marker handler \"%1\" specified an invalid range to resume processing from")
                .arg(match.name),
            MGTemplateEngineErrorInvalidRange, false);
        return false;
    }
    _remainingRange = next;

    if (call.blockStarted && call.blockEnded) {
        reportErrorCodeContinuing(
            QStringLiteral("Marker \"%1\" reported that a block simultaneously began and ended")
                .arg(match.name),
            MGTemplateEngineErrorBlockStartedAndEndedSimultaneously, true);
    } else if (call.blockStarted) {
        QStringList endNames = handler->endMarkersForMarker(match.name);
        if (endNames.isEmpty()) {
            reportErrorCodeContinuing(
                QStringLiteral("Marker \"%1\" started a block but did not supply any suitable end-markers")
                    .arg(match.name),
                MGTemplateEngineErrorNoEndMarkersForBlock, true);
            return true;
        }
        if (qsizetype(_openBlocksStack.size()) >= m_limits.maxOpenBlocks) {
            reportErrorCodeContinuing(
                QStringLiteral("Template processing stopped: more than %1 blocks were open at once")
                    .arg(m_limits.maxOpenBlocks),
                MGTemplateEngineErrorRunLimitReached, false);
            return false;
        }
        _openBlocksStack.push_back(
            MGTemplateBlock{match.name, std::move(endNames), match.args, match.range, {}});
        m_blockHandlers.push_back(handler);
        reportBlockBoundaryStarted(true);
    } else if (call.blockEnded) {
        const MGTemplateBlock *top = _openBlocksStack.empty() ? nullptr : &_openBlocksStack.back();
        if (!top || !call.currentBlockInfo || !top->endNames.contains(match.name)) {
            reportErrorCodeContinuing(
                top ? QStringLiteral(
                          "Marker \"%1\" reported that a block ended, but current block was started by "
                          "\"%2\" marker")
                          .arg(match.name, top->name)
                    : QStringLiteral("Marker \"%1\" reported that a non-existent block ended")
                          .arg(match.name),
                MGTemplateEngineErrorBlockEndedWithoutBeingStarted, true);
            return false;
        }
        reportBlockBoundaryStarted(false);
        _openBlocksStack.pop_back();
        m_blockHandlers.pop_back();
    }

    for (const MGTemplateMap::Entry &entry : call.newVariables)
        setValueForVariableForceCurrentStackFrame(entry.second, entry.first, call.blockStarted);

    if (!result.isNull() && outputEnabled())
        printValue(match, result, output);
    return true;
}

void MGTemplateEngine::printValue(const MGTemplateMatch &match, const MGTemplateValue &value, Output &output)
{
    MGTemplateValue filtered;
    const MGTemplateValue *shown = &value;
    if (!match.filter.isEmpty()) {
        const auto filter = _filters.constFind(match.filter);
        if (filter != _filters.constEnd()) {
            filtered = (*filter)->filterInvokedWithArgumentsOnValue(match.filter, match.filterArgs, value);
            shown = &filtered;
        }
    }
    if (const QString *text = shown->text()) {
        output.append(*text);
    } else if (shown->isCollection()) {
        if (const std::optional<qsizetype> length = shown->jsonLength(true))
            shown->writeJson(output.extend(*length), true);
        else
            output.append(u"[]");
    } else {
        output.append(shown->toText());
    }
}

std::optional<QString>
MGTemplateEngine::processTemplateInFileAtPathWithVariables(const QString &path,
                                                           const MGTemplateMap &variables)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    QString text;
    if (const std::optional<QStringConverter::Encoding> bom = QStringConverter::encodingForData(bytes)) {
        QStringDecoder decoder(*bom);
        text = decoder.decode(bytes);
    } else {
        QStringDecoder utf8(QStringConverter::Utf8);
        text = utf8.decode(bytes);
        if (utf8.hasError())
            text = QString::fromLatin1(bytes);
    }
    return processTemplateWithVariables(text, variables);
}
