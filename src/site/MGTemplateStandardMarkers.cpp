#include "site/MGTemplateStandardMarkers.h"

#include "site/MGTemplateEngine.h"
#include "site/MGTemplatePluginRegistry.h"
#include "site/templatetext.h"

#include <QDateTime>

namespace
{

using mgtemplate::sameText;

enum class Marker {
    Unknown,
    For,
    EndFor,
    Section,
    EndSection,
    If,
    Else,
    EndIf,
    Now,
    Comment,
    EndComment,
    Load,
    Cycle,
    Set
};

// Every marker passes here, so the names are told apart by length first
// rather than hashed.
Marker markerKind(QStringView name)
{
    switch (name.size()) {
    case 2:
        return sameText(name, u"if") ? Marker::If : Marker::Unknown;
    case 3:
        return sameText(name, u"for")   ? Marker::For
               : sameText(name, u"/if") ? Marker::EndIf
               : sameText(name, u"now") ? Marker::Now
               : sameText(name, u"set") ? Marker::Set
                                        : Marker::Unknown;
    case 4:
        return sameText(name, u"/for")   ? Marker::EndFor
               : sameText(name, u"else") ? Marker::Else
               : sameText(name, u"load") ? Marker::Load
                                         : Marker::Unknown;
    case 5:
        return sameText(name, u"cycle") ? Marker::Cycle : Marker::Unknown;
    case 7:
        return sameText(name, u"section")   ? Marker::Section
               : sameText(name, u"comment") ? Marker::Comment
                                            : Marker::Unknown;
    case 8:
        return sameText(name, u"/section")   ? Marker::EndSection
               : sameText(name, u"/comment") ? Marker::EndComment
                                             : Marker::Unknown;
    }
    return Marker::Unknown;
}

const QString kCurrentLoop = QStringLiteral("currentLoop");
const QString kCurrentIndex = QStringLiteral("currentIndex");

// Whether an `if` operator, in any case, is `lower`. Lower-casing the
// operator first would give the same answers for these ASCII names.
bool isOperator(QStringView op, const char *lower)
{
    qsizetype i = 0;
    for (; lower[i]; ++i) {
        if (i >= op.size())
            return false;
        char16_t c = op[i].unicode();
        if (c >= u'A' && c <= u'Z')
            c += u'a' - u'A';
        if (c != char16_t(lower[i]))
            return false;
    }
    return i == op.size();
}

} // namespace

MGTemplateStandardMarkers::MGTemplateStandardMarkers(MGTemplateEngine *engine) : m_engine(engine) {}

QStringList MGTemplateStandardMarkers::markers() const
{
    return {QStringLiteral("for"),      QStringLiteral("/for"), QStringLiteral("section"),
            QStringLiteral("/section"), QStringLiteral("if"),   QStringLiteral("else"),
            QStringLiteral("/if"),      QStringLiteral("now"),  QStringLiteral("comment"),
            QStringLiteral("/comment"), QStringLiteral("load"), QStringLiteral("cycle"),
            QStringLiteral("set")};
}

QStringList MGTemplateStandardMarkers::endMarkersForMarker(const QString &marker) const
{
    static const QStringList forEnd{QStringLiteral("/for")};
    static const QStringList sectionEnd{QStringLiteral("/section")};
    static const QStringList ifEnd{QStringLiteral("/if"), QStringLiteral("else")};
    static const QStringList commentEnd{QStringLiteral("/comment")};
    switch (markerKind(marker)) {
    case Marker::For:
        return forEnd;
    case Marker::Section:
        return sectionEnd;
    case Marker::If:
        return ifEnd;
    case Marker::Comment:
        return commentEnd;
    default:
        return {};
    }
}

void MGTemplateStandardMarkers::engineFinishedProcessingTemplate()
{
    forStack.clear();
    sectionStack.clear();
    ifStack.clear();
    commentStack.clear();
    cycles.clear();
}

bool MGTemplateStandardMarkers::argIsTrue(QStringView arg) const
{
    const MGTemplateValue v = m_engine->resolveVariable(arg);
    if (v.isNull())
        return false;
    if (v.isNumber() || v.type() == MGTemplateValue::Type::Boolean)
        return v.numberIsNonZero();
    return true;
}

bool MGTemplateStandardMarkers::argIsNumericIntegerValueCheckVariables(QStringView arg, qint64 *value,
                                                                       bool checkVariables) const
{
    if (arg.isEmpty())
        return false;
    const qint64 integer = mgtemplate::integerValue(arg);
    if (arg[0] == u'0' || integer != 0) {
        if (value)
            *value = integer;
        return true;
    }
    if (checkVariables) {
        const MGTemplateValue v = m_engine->resolveVariable(arg);
        if (const std::optional<qint64> i = v.storedInteger()) {
            // What an integer's or boolean's text reads back as.
            if (value)
                *value = *i;
            return true;
        }
        if (const QString *text = v.text())
            return argIsNumericIntegerValueCheckVariables(*text, value, false);
        if (v.hasIntegerReading())
            return argIsNumericIntegerValueCheckVariables(v.toText(), value, false);
    }
    return false;
}

MGTemplateValue MGTemplateStandardMarkers::markerEncountered(MGTemplateMarkerCall &call)
{
    const QStringList &args = call.arguments;
    switch (markerKind(call.marker)) {
    case Marker::Unknown:
        return {};
    case Marker::For:
        return forStarted(call);
    case Marker::EndFor:
        return forEnded(call);
    case Marker::Section:
        if (args.size() == 1) {
            call.blockStarted = true;
            sectionStack.push_back({call.range});
        }
        return {};
    case Marker::EndSection:
        if (currentBlockMatchesTopOfStack(call.currentBlockInfo, sectionStack))
            sectionStack.pop_back();
        call.blockEnded = true;
        return {};
    case Marker::If:
        ifStarted(call);
        return {};
    case Marker::Else:
        if (currentBlockMatchesTopOfStack(call.currentBlockInfo, ifStack) &&
            !ifStack.back().elseEncountered) {
            IfFrame &frame = ifStack.back();
            if (frame.shouldDisableOutput)
                call.outputEnabled = !frame.argumentTrue;
            frame.elseEncountered = true;
        }
        return {};
    case Marker::EndIf:
        endBlock(call, ifStack);
        return {};
    case Marker::Now:
        return MGTemplateValue(MGTemplateValue::Date{QDateTime::currentMSecsSinceEpoch()});
    case Marker::Comment:
        if (args.isEmpty()) {
            call.blockStarted = true;
            commentStack.push_back({call.range, call.outputEnabled});
            call.outputEnabled = false;
        }
        return {};
    case Marker::EndComment:
        endBlock(call, commentStack);
        return {};
    case Marker::Load:
        if (const MGTemplatePluginRegistry *registry = m_engine->pluginRegistry()) {
            for (const QString &className : args) {
                if (std::shared_ptr<MGTemplateFilter> filter = registry->makeFilter(className))
                    m_engine->loadFilter(filter);
                else if (std::shared_ptr<MGTemplateMarker> marker = registry->makeMarker(className, m_engine))
                    m_engine->loadMarker(marker);
            }
        }
        return {};
    case Marker::Cycle: {
        if (args.isEmpty())
            return {};
        const auto key = std::make_pair(call.range.location, call.range.length);
        const auto state = cycles.find(key);
        if (state == cycles.end()) {
            cycles.emplace(key, CycleState{0, args});
            return MGTemplateValue(args.first());
        }
        CycleState &s = state->second;
        s.lastIndex = (s.lastIndex + 1) % s.value.size();
        return MGTemplateValue(s.value.at(s.lastIndex));
    }
    case Marker::Set:
        if (args.size() == 2 && call.outputEnabled)
            call.newVariables.insert(args.at(0), MGTemplateValue(args.at(1)));
        return {};
    }
    return {};
}

MGTemplateValue MGTemplateStandardMarkers::elementAt(const ForFrame &frame, qsizetype taken) const
{
    const qsizetype count =
        frame.collection.list() ? frame.collection.list()->size() : frame.collection.map()->size();
    const qsizetype index = frame.reversed ? count - 1 - taken : taken;
    if (const MGTemplateList *list = frame.collection.list())
        return list->at(index);
    return MGTemplateValue((frame.collection.map()->begin() + index)->first);
}

MGTemplateValue MGTemplateStandardMarkers::forStarted(MGTemplateMarkerCall &call)
{
    const QStringList &args = call.arguments;
    if (args.size() < 3)
        return {};

    ForFrame frame;
    frame.markerRange = call.range;
    frame.remainingRange = call.nextRange;
    frame.reversed = args.size() == 4 && sameText(args.at(3), u"reversed");
    frame.iterating = sameText(args.at(1), u"in");
    bool valid = false;
    if (frame.iterating) {
        frame.collection = m_engine->resolveVariable(args.at(2));
        const qsizetype count = frame.collection.list()  ? frame.collection.list()->size()
                                : frame.collection.map() ? frame.collection.map()->size()
                                                         : 0;
        valid = count >= 1;
        frame.startIndex = 0;
        frame.endIndex = count;
    } else {
        valid = argIsNumericIntegerValueCheckVariables(args.at(0), &frame.startIndex, true) &&
                argIsNumericIntegerValueCheckVariables(args.at(2), &frame.endIndex, true) &&
                frame.startIndex <= frame.endIndex;
    }

    call.blockStarted = true;
    if (!valid) {
        // The body is scanned in silence up to its /for. Only a loop that
        // turned output off turns it back on there, so that a loop that never
        // runs inside a false `if` leaves that `if` silent.
        frame.disabledOutput = true;
        frame.switchedOutputOff = call.outputEnabled;
        frame.collection = MGTemplateValue();
        call.outputEnabled = false;
        forStack.push_back(std::move(frame));
        return {};
    }

    frame.currentIndex = frame.reversed ? frame.endIndex : frame.startIndex;
    MGTemplateMap loop;
    loop.reserve(5);
    loop.insert(kCurrentIndex, MGTemplateValue::integer(frame.currentIndex));
    loop.insert(QStringLiteral("endIndex"), MGTemplateValue::integer(frame.endIndex));
    loop.insert(QStringLiteral("reversed"), MGTemplateValue::boolean(frame.reversed));
    loop.insert(QStringLiteral("startIndex"), MGTemplateValue::integer(frame.startIndex));
    if (call.currentBlockInfo) {
        const MGTemplateValue parent = m_engine->resolveVariable(kCurrentLoop);
        if (!parent.isNull())
            loop.insert(QStringLiteral("parentLoop"), parent);
    }
    call.newVariables.reserve(2);
    call.newVariables.insert(kCurrentLoop, std::move(loop));
    if (frame.iterating) {
        frame.enumeratorVariable = args.at(0);
        call.newVariables.insert(frame.enumeratorVariable, elementAt(frame, 0));
        frame.taken = 1;
    }
    forStack.push_back(std::move(frame));
    return {};
}

MGTemplateValue MGTemplateStandardMarkers::forEnded(MGTemplateMarkerCall &call)
{
    call.blockEnded = true;
    if (!currentBlockMatchesTopOfStack(call.currentBlockInfo, forStack))
        return {}; // the engine reports what is wrong
    ForFrame &frame = forStack.back();
    if (frame.disabledOutput) {
        if (frame.switchedOutputOff)
            call.outputEnabled = true;
        forStack.pop_back();
        return {};
    }
    if (call.currentBlockInfo->vars.isEmpty()) {
        forStack.pop_back();
        return {};
    }

    // The loop counts in its frame, so that a template that assigns to
    // currentLoop can't keep a loop from ending.
    MGTemplateValue element;
    if (frame.iterating) {
        if (frame.taken >= frame.endIndex) {
            forStack.pop_back();
            return {};
        }
        element = elementAt(frame, frame.taken++);
    } else if (frame.reversed ? frame.currentIndex <= frame.startIndex
                              : frame.currentIndex >= frame.endIndex) {
        forStack.pop_back();
        return {};
    }

    call.blockEnded = false;
    call.nextRange = frame.remainingRange;
    frame.currentIndex += frame.reversed ? -1 : 1;
    // The new index and element go where the variables live. Changing them
    // in place is what assigning changed copies without force does, without
    // the copies.
    MGTemplateValue *loopValue = m_engine->mutableValueForVariable(kCurrentLoop);
    if (MGTemplateMap *loop = loopValue ? loopValue->mutableMap() : nullptr) {
        loop->insert(kCurrentIndex, MGTemplateValue::integer(frame.currentIndex));
    } else {
        // The template replaced currentLoop: give the loop a fresh one.
        MGTemplateMap fresh;
        fresh.insert(kCurrentIndex, MGTemplateValue::integer(frame.currentIndex));
        call.newVariables.insert(kCurrentLoop, std::move(fresh));
    }
    if (frame.iterating) {
        if (MGTemplateValue *variable = m_engine->mutableValueForVariable(frame.enumeratorVariable))
            *variable = std::move(element);
        else
            call.newVariables.insert(frame.enumeratorVariable, std::move(element));
    }
    return {};
}

qint64 MGTemplateStandardMarkers::operandInteger(QStringView arg) const
{
    qint64 value = 0;
    if (argIsNumericIntegerValueCheckVariables(arg, &value, true))
        return value;
    return m_engine->resolveVariable(arg).isNull() ? 0 : 1;
}

bool MGTemplateStandardMarkers::condition(const QStringList &args) const
{
    if (args.size() == 1)
        return argIsTrue(args.at(0));
    const QString &op = args.at(1);
    const QString &a = args.at(0);
    const QString &b = args.at(2);
    if (isOperator(op, "and") || isOperator(op, "&&"))
        return argIsTrue(a) && argIsTrue(b);
    if (isOperator(op, "or") || isOperator(op, "||"))
        return argIsTrue(a) || argIsTrue(b);
    if (isOperator(op, "equalsstring") || isOperator(op, "notequalsstring")) {
        const auto textOf = [this](const QString &arg) {
            const MGTemplateValue v = m_engine->resolveVariable(arg);
            return v.isNull() ? arg : v.toText();
        };
        return (textOf(a) == textOf(b)) == (isOperator(op, "equalsstring"));
    }
    const qint64 x = operandInteger(a);
    const qint64 y = operandInteger(b);
    if (isOperator(op, "=") || isOperator(op, "=="))
        return x == y;
    if (isOperator(op, "!=") || isOperator(op, "<>"))
        return x != y;
    if (isOperator(op, ">"))
        return x > y;
    if (isOperator(op, "<"))
        return x < y;
    if (isOperator(op, ">="))
        return x >= y;
    if (isOperator(op, "<="))
        return x <= y;
    if (isOperator(op, "%")) {
        // No remainder by zero: the condition is false. (The remainder by
        // -1 is 0, computed apart because INT64_MIN % -1 overflows.)
        if (y == 0 || y == -1)
            return false;
        return x % y > 0;
    }
    return false;
}

void MGTemplateStandardMarkers::ifStarted(MGTemplateMarkerCall &call)
{
    const qsizetype n = call.arguments.size();
    if (n != 1 && n != 3)
        return;
    IfFrame frame;
    frame.markerRange = call.range;
    frame.argumentTrue = condition(call.arguments);
    frame.shouldDisableOutput = call.outputEnabled;
    if (!frame.argumentTrue && call.outputEnabled)
        call.outputEnabled = false;
    call.blockStarted = true;
    ifStack.push_back(frame);
}
