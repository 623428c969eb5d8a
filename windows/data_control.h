// windows/data_control.h - the Data control as the windows use it: no more than the engine's own. DataStrip is
// its face.
#pragma once

#include "access/data_control.h"
