// What the guided tour visits. A new window gets a chapter in a source of its own and a line in the
// table of Chapters.cpp; a chapter begins where the one before has left the windows.
#pragma once

#include "platform/qt/tour/Tour.h"

namespace dbkeeper::qt::tour {

// The steps of every chapter, in order.
Steps AllSteps();

// The chapters.
Steps ConnectSteps();     // from the start to the connected tree
Steps DatabaseSteps();    // the list of databases, its menu, its sort, its keys
Steps NodeSteps();        // every other node of the tree
Steps QuerySteps();       // the query window, and back
Steps EditSteps();        // rows written in the query window
Steps BrowserSteps();     // the table browser
Steps UpkeepSteps();      // a database made, backed up, restored under another name
Steps DisconnectSteps();  // back to the roots, and the end

}  // namespace dbkeeper::qt::tour
