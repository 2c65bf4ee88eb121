#pragma once

#include "site/MGTemplateBlock.h"
#include "site/MGTemplateRange.h"
#include "site/MGTemplateValue.h"

#include <QString>
#include <QStringList>

// What the engine tells a marker handler about one marker it met, and what the
// handler answers. The engine fills it in; the handler changes the fields
// marked in-out.
struct MGTemplateMarkerCall {
    MGTemplateMarkerCall(const QString &name, const QStringList &args, MGTemplateRange where)
        : marker(name), arguments(args), range(where)
    {
    }

    // Valid for the call.
    const QString &marker;        // the marker's name
    const QStringList &arguments; // its arguments
    MGTemplateRange range;        // where it stands in the template

    // In-out: arrive false; set to start or end a block.
    bool blockStarted = false;
    bool blockEnded = false;
    // In-out: arrives true when output is on; change it to switch output.
    bool outputEnabled = true;
    // In-out: arrives as the range still to scan (from behind the marker to
    // the end); change it to make the scan jump.
    MGTemplateRange nextRange;
    // The innermost open block when that block was opened by a marker of this
    // same handler; null otherwise. Valid for the call only.
    const MGTemplateBlock *currentBlockInfo = nullptr;
    // Out: variables to set. When the marker starts a block they go into the
    // new block; otherwise they are assigned where they already live.
    MGTemplateMap newVariables;
};

// A marker handler: a plug-in that serves one or more marker names. Handlers
// live in the engine that loaded them and are called on the run's thread.
class MGTemplateMarker
{
public:
    virtual ~MGTemplateMarker() = default;

    // The marker names served.
    virtual QStringList markers() const = 0;
    // For a marker that starts blocks: the markers that may end its block.
    // Empty for any other name.
    virtual QStringList endMarkersForMarker(const QString &marker) const = 0;
    // Handles one marker. The result, when not null, is printed (through the
    // marker's filter, if any) while output is on.
    virtual MGTemplateValue markerEncountered(MGTemplateMarkerCall &call) = 0;
    // A run has ended (normally or not): per-run state is to be dropped.
    virtual void engineFinishedProcessingTemplate() = 0;
};
