#pragma once

#include <picojson.h>

#include "core/GraphLibrary.h"
#include "mat/LoadDiagnostic.h"

namespace mat {

struct LoadProgress;

// Fills `library` from the root array of a library file. A versioned file is
// [header, content] with "fileversion" in the header; any other root array is the
// content itself; a header without "fileversion" leaves the library empty.
// Throws InputFileParsingException or InvalidDataAccess for malformed content.
// `progress` tells which item was being read when an exception left; `diagnostic` learns
// of a header without "fileversion".
void readLibrary(GraphLibrary& library, const picojson::array& root, LoadProgress& progress,
                 LoadDiagnostic& diagnostic);

}  // namespace mat
