#pragma once

#include <picojson.h>

#include "core/GraphLibrary.h"

namespace mat {

// Fills `library` from the root array of a library file. A versioned file is
// [header, content] with "fileversion" in the header; any other root array is the
// content itself; a header without "fileversion" leaves the library empty.
// Throws InputFileParsingException or InvalidDataAccess for malformed content.
void readLibrary(GraphLibrary& library, const picojson::array& root);

}  // namespace mat
