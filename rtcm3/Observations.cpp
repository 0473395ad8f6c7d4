#include "rtcm3/Observations.h"

namespace velagnss::rtcm3 {

unsigned int Follow(State& state, Rtcm3Observations& out) {
  out.msm == 0 ? FollowLegacyObservations(state, out) : FollowMsm(state, out);
  return eResultOk;
}

}  // namespace velagnss::rtcm3
