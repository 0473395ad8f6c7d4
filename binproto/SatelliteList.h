// The satellites that a host wants observations of.
#ifndef VELAGNSS_BINPROTO_SATELLITE_LIST_H
#define VELAGNSS_BINPROTO_SATELLITE_LIST_H

#include "velagnss_export.h"

// Given to `C_VelaBin_Decode`, which keeps a pointer to it and never changes it: it must outlive the decoder. As the
// observation messages are not decoded, nothing is looked up in it yet; it holds nothing and can only be empty.
class VELAGNSS_API C_SatelliteList {
 public:
  // An empty list.
  C_SatelliteList();
};

#endif  // VELAGNSS_BINPROTO_SATELLITE_LIST_H
