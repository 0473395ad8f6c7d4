// How good the positions of a receiver were over time: fix, accuracy, DOPs.
#ifndef VELAGNSS_APPS_QUALITY_REPORT_H
#define VELAGNSS_APPS_QUALITY_REPORT_H

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/report/Moment.h"
#include "apps/velagnss/report/Series.h"

namespace Host {

// A kind of fix, the worst first.
inline constexpr std::string_view kFixKinds[] = {"none",       "unknown",      "simulator", "manual",    "estimated",
                                                 "autonomous", "differential", "precise",   "rtk float", "rtk"};

// In so many bins in a row.
struct S_FixPeriod {
  std::size_t from;
  std::size_t to;  // inclusive
  std::size_t kind;
};

// Epochs count that have a sentence with a position, with a fix or without one.
//
// A bin keeps each kind of fix that occurred in it, however short: of an hour with RTK and one epoch without a fix,
// both are shown. Periods of different kinds overlap therefore.
class C_QualityReport {
 public:
  void Add(const S_Epoch& epoch, const S_Moment& moment);

  std::uint64_t EpochsOf(std::size_t kind) const { return m_epochs[kind]; }
  std::uint64_t FixesOfType(char type) const;  // of GSA: '1' none, '2' 2D, '3' 3D

  // By kind, the best first: what is drawn later is worse.
  std::vector<S_FixPeriod> Periods(const C_TimeBins& axis) const;

  const C_Series& Horizontal() const { return m_horizontal; }  // m, from GST: standard deviation of the distance
  const C_Series& Vertical() const { return m_vertical; }      // m
  const C_Series& Pdop() const { return m_pdop; }
  const C_Series& Hdop() const { return m_hdop; }
  const C_Series& Vdop() const { return m_vdop; }

 private:
  static constexpr std::size_t kKinds = std::size(kFixKinds);

  std::array<std::uint64_t, kKinds> m_epochs{};
  std::array<C_Series, kKinds> m_kinds;  // epochs
  std::array<std::uint64_t, 3> m_types{};
  C_Series m_horizontal;
  C_Series m_vertical;
  C_Series m_pdop;
  C_Series m_hdop;
  C_Series m_vdop;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_QUALITY_REPORT_H
