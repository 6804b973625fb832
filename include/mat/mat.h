#pragma once

/// @file
/// Everything a host needs: the shared value types, the exceptions, every interface and
/// the exported functions.

/// @mainpage matgraph
/// The public interface of matgraph, a library of node graphs and of the JSON files they
/// are stored in. A host includes <mat/mat.h> and links matgraph::matgraph (CMake) or
/// `pkg-config --libs matgraph`. Start with the exported functions in mat/Functions.h
/// and with mat::IGraphLibrary. The repository's docs/host-guide.md walks through
/// loading, querying, editing, resolving and saving; docs/file-format.md describes the
/// library file.

#include "mat/Common.h"
#include "mat/Exceptions.h"
#include "mat/Export.h"
#include "mat/Functions.h"
#include "mat/IAnnotation.h"
#include "mat/IGraph.h"
#include "mat/IGraphFactory.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphNode.h"
#include "mat/IGraphResolver.h"
#include "mat/INodeClass.h"
#include "mat/IParameter.h"
#include "mat/IPortPath.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"
#include "mat/IValue.h"
#include "mat/LoadDiagnostic.h"
#include "mat/Version.h"
