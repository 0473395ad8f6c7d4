#include "binproto/SatelliteList.h"

C_SatelliteList::C_SatelliteList() = default;
