#pragma once
// Every command of the sound tools in one include.

#include "render/tools/SoxChannels.h"
#include "render/tools/SoxCluster.h"
#include "render/tools/SoxConvert.h"
#include "render/tools/SoxEdit.h"
#include "render/tools/SoxFilters.h"
#include "render/tools/SoxLevels.h"
#include "render/tools/ToolPaths.h"
