#pragma once

/// @file
/// Everything a host needs: the shared value types, the exceptions, every interface and
/// the exported functions.

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
