// access/workspace.h - the one workspace of the program, Workspaces(0) of the engine.
#pragma once

#include "access/engine.h"

namespace velnor {

/// The workspace on the host's files; made at first use, and again when the host was replaced.
Workspace& workspace();

}  // namespace velnor
