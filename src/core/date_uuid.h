#pragma once

#include <QtGlobal>

// nowDateUUID: the id of a new document or category, and the stem of a
// document's file name. It is the present time in seconds since 1970 times
// 10000, rounded up, so an id is also its creation time to 0.1 ms.
//
// Within one process ids strictly increase: a call in the same tenth of a
// millisecond as the one before gets the next number, so two documents made
// in one burst never share an id. Thread-safe.
qint64 nowDateUUID();
