// The satellites that a host wants observations of.
#ifndef VELAGNSS_BINPROTO_SATELLITE_LIST_H
#define VELAGNSS_BINPROTO_SATELLITE_LIST_H

#include "velagnss_export.h"

// `C_VelaBin_Decode` keeps a pointer to the list that it is given, so that the list must outlive the decoder, and never
// changes it. Observation messages are not decoded yet: nothing is looked up in the list, and it can only be empty.
class VELAGNSS_API C_SatelliteList {
 public:
  // An empty list.
  C_SatelliteList();
};

#endif  // VELAGNSS_BINPROTO_SATELLITE_LIST_H
