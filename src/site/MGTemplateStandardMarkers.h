#pragma once

#include "site/MGTemplateMarker.h"

#include <QStringView>

#include <map>
#include <utility>
#include <vector>

class MGTemplateEngine;

// The standard markers:
//
//   {% for x in list %} ... {% /for %}        each element, as x
//   {% for 1 to 5 [reversed] %} ... {% /for %} a count, read currentLoop.currentIndex
//   {% if a %}, {% if a op b %} ... {% else %} ... {% /if %}
//   {% section name %} ... {% /section %}      grouping only
//   {% comment %} ... {% /comment %}           output off
//   {% now %}                                  the present time, for a filter
//   {% load ClassName ... %}                   more markers or filters
//   {% cycle a b c %}                          the next value each time it is met
//   {% set name value %}                       a variable, with the text as written
//
// Inside a loop the map `currentLoop` holds "startIndex", "endIndex",
// "currentIndex", "reversed" and, in a nested loop, "parentLoop".
//
// Frames of open blocks and cycle states last for one run. Belongs to one
// engine (not owned: the engine owns this handler) and runs on its thread.
class MGTemplateStandardMarkers : public MGTemplateMarker
{
public:
    explicit MGTemplateStandardMarkers(MGTemplateEngine *engine);

    QStringList markers() const override;
    QStringList endMarkersForMarker(const QString &marker) const override;
    MGTemplateValue markerEncountered(MGTemplateMarkerCall &call) override;
    void engineFinishedProcessingTemplate() override;

    // A variable's truth: nothing is false, a number or boolean is true when
    // not zero, any other value (an empty text too) is true.
    bool argIsTrue(QStringView arg) const;
    // Whether `arg` reads as an integer, and which: a text beginning with
    // "0", or one whose leading integer isn't zero ("12abc" is 12); failing
    // that, with `checkVariables`, the text form of the variable of that name
    // when it is a number, boolean or text, read the same way.
    bool argIsNumericIntegerValueCheckVariables(QStringView arg, qint64 *value, bool checkVariables) const;

private:
    struct ForFrame {
        MGTemplateRange markerRange;
        MGTemplateRange remainingRange; // the scan's position behind the marker
        bool disabledOutput = false;    // a loop that never runs
        bool switchedOutputOff = false; // ... and it turned output off
        bool iterating = false;         // `for x in list`, else counting
        bool reversed = false;
        MGTemplateValue collection; // what an iterating loop walks (a list, or a map's keys)
        qsizetype taken = 0;        // elements handed out so far
        QString enumeratorVariable;
        qint64 startIndex = 0;
        qint64 endIndex = 0;
        qint64 currentIndex = 0;
    };
    struct SectionFrame {
        MGTemplateRange markerRange;
    };
    struct IfFrame {
        MGTemplateRange markerRange;
        bool argumentTrue = false;
        bool shouldDisableOutput = false; // output was on when the `if` came
        bool elseEncountered = false;
    };
    struct CommentFrame {
        MGTemplateRange markerRange;
        bool shouldDisableOutput = false;
    };
    struct CycleState {
        qsizetype lastIndex = 0;
        QStringList value;
    };

    MGTemplateValue forStarted(MGTemplateMarkerCall &call);
    MGTemplateValue forEnded(MGTemplateMarkerCall &call);
    void ifStarted(MGTemplateMarkerCall &call);
    bool condition(const QStringList &args) const;
    qint64 operandInteger(QStringView arg) const;
    MGTemplateValue elementAt(const ForFrame &frame, qsizetype taken) const;
    // `/if` and `/comment`: when the frame is the current block's, output
    // comes back on if the opening marker turned it off, and the frame goes;
    // the block ends in any case.
    template <typename Frame> static void endBlock(MGTemplateMarkerCall &call, std::vector<Frame> &stack)
    {
        if (currentBlockMatchesTopOfStack(call.currentBlockInfo, stack)) {
            if (stack.back().shouldDisableOutput)
                call.outputEnabled = true;
            stack.pop_back();
        }
        call.blockEnded = true;
    }
    template <typename Frame>
    static bool currentBlockMatchesTopOfStack(const MGTemplateBlock *block, const std::vector<Frame> &stack)
    {
        return block && !stack.empty() && stack.back().markerRange == block->startMarkerRange;
    }

    MGTemplateEngine *m_engine; // not owned
    std::vector<ForFrame> forStack;
    std::vector<SectionFrame> sectionStack;
    std::vector<IfFrame> ifStack;
    std::vector<CommentFrame> commentStack;
    // Keyed by the cycle marker's own range, so each cycle has its state.
    std::map<std::pair<qsizetype, qsizetype>, CycleState> cycles;
};
