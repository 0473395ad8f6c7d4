// Single-point positions of the antenna: whether ephemerides, observations, time and station coordinates of a stream
// fit together.
#ifndef VELAGNSS_APPS_POINT_REPORT_H
#define VELAGNSS_APPS_POINT_REPORT_H

#include <array>
#include <cmath>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/velagnss/account/EvenSample.h"
#include "apps/velagnss/account/PositionSummary.h"
#include "apps/velagnss/pipeline/Handover.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "positioning/PointSolver.h"

namespace Host {

// The sum of squares of some values, and how many they are.
struct S_MeanSquare {
  void Add(double value) {
    sum += value * value;
    ++count;
  }
  double Root() const { return count == 0 ? kNotKnown : std::sqrt(sum / static_cast<double>(count)); }

  double sum = 0;
  std::uint64_t count = 0;
};

// A satellite in all epochs.
struct S_PointSatellite {
  std::uint64_t epochs = 0;             // with ranges
  std::array<std::uint64_t, 9> uses{};  // of these, by `velagnss::PointUse`
  double azimuth = kNotKnown;           // rad, when it was seen last
  double elevation = kNotKnown;         // rad
  S_MeanSquare residuals;               // m

  std::uint64_t Used() const { return uses[0]; }
};

// A system in all epochs.
struct S_PointSystem {
  std::uint64_t epochs = 0;          // with used satellites
  std::uint64_t ionosphereFree = 0;  // of these, with two frequencies
  std::uint64_t satellites = 0;      // used ones of all epochs
  S_MeanSquare residuals;            // m

  double SatellitesPerEpoch() const { return static_cast<double>(satellites) / static_cast<double>(epochs); }
};

// The coordinates that a station sends of its antenna reference point.
struct S_PointStation {
  unsigned short number;
  C_Vector3 position;  // m, ECEF
  double latitude;     // rad
  double longitude;    // rad
  double height;       // m
};

// Distances of the positions from the station's own coordinates. Vertical ones are taken without their sign.
struct S_PointErrors {
  std::uint64_t epochs;
  double north;         // m, mean
  double east;          // m
  double up;            // m
  double horizontal50;  // m, half of the epochs are not farther away
  double horizontal95;  // m
  double vertical50;    // m
  double vertical95;    // m
};

// That of one position.
struct S_PointError {
  C_GnssTime time;              // GPS time, of its epoch
  C_Vector3 error;              // m: north, east, up
  velagnss::StreamClock clock;  // of the stream when it was solved, many epochs later
};

// Solves the epochs of the first station that is observed. In a stream ephemerides come one by one, and the station's
// coordinates now and then: each epoch waits for the 1024 epochs after it, or the end of the input, before it is
// solved. Memory is bounded: some 100 bytes for each satellite of an epoch that waits, four ephemerides of each
// satellite, and samples of the positions.
class C_PointReport : public C_RecordConsumer {
 public:
  // Gets the error of each position that is compared with the station's own coordinates, in the order of the epochs.
  using t_ErrorSink = C_Handover<S_PointError>;
  void SetErrorSink(t_ErrorSink& sink) { m_errorSink = &sink; }

  void BeginInput(const std::string& name) override;
  void OnFrame(const S_FrameRecord& record) override;
  void EndBlock() override;
  void EndInput(const S_InputEnd& end) override;

  std::uint64_t Epochs() const { return m_epochs; }
  std::uint64_t EpochsOf(velagnss::PointResult result) const { return m_results[static_cast<std::size_t>(result)]; }
  std::uint64_t OtherStations() const { return m_otherStations; }  // epochs that were left out

  const std::optional<S_PointStation>& Station() const { return m_station; }
  std::optional<S_PositionSummary> Positions() const { return m_positions.Summary(); }
  std::optional<S_PointErrors> Errors() const;
  const std::vector<C_Vector3>& SomeErrors() const { return m_errors.Kept(); }  // an even part: m, north, east, up

  double ResidualRms() const { return m_residuals.Root(); }
  double Pdop() const { return m_pdop.Root(); }  // root mean squares
  double Hdop() const { return m_hdop.Root(); }
  double Vdop() const { return m_vdop.Root(); }

  const std::map<unsigned int, S_PointSystem>& Systems() const { return m_systems; }  // by `ALGO::eGNSSSystem`
  const std::map<std::pair<unsigned int, unsigned int>, S_PointSatellite>& Satellites() const { return m_satellites; }

 private:
  struct S_Waiting {
    velagnss::PointEpoch epoch;
    std::vector<velagnss::PointRanges> satellites;
  };
  struct S_Engine {
    velagnss::PointEpochs epochs;
    velagnss::EphemerisStore ephemerides;
    velagnss::PointSolver solver;
  };

  void Note(const velagnss::Rtcm3Station& station);
  void Wait(const velagnss::PointEpoch* epoch);
  void SolveOldest();
  void NoteSolution(const C_GnssTime& time, const velagnss::PointSolution& solution);
  void NotePosition(const C_GnssTime& time, const C_Vector3& position);

  t_ErrorSink* m_errorSink = nullptr;
  std::uint64_t m_offset = 0;                      // of the frame, or the end, that is taken
  const velagnss::StreamClock* m_clock = nullptr;  // likewise
  std::unique_ptr<S_Engine> m_engine;
  std::deque<S_Waiting> m_waiting;
  std::optional<unsigned short> m_stationNumber;        // of the first epoch
  std::map<unsigned short, S_PointStation> m_stations;  // at most 4096
  std::optional<S_PointStation> m_station;
  std::uint64_t m_epochs = 0;
  std::uint64_t m_otherStations = 0;
  std::array<std::uint64_t, 5> m_results{};  // by `velagnss::PointResult`
  C_PositionSummary m_positions;
  C_EvenSample<C_Vector3> m_errors;  // m: north, east, up
  std::uint64_t m_errorCount = 0;
  C_Vector3 m_errorSum;
  S_MeanSquare m_residuals;
  S_MeanSquare m_pdop;
  S_MeanSquare m_hdop;
  S_MeanSquare m_vdop;
  std::map<unsigned int, S_PointSystem> m_systems;
  std::map<std::pair<unsigned int, unsigned int>, S_PointSatellite> m_satellites;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_POINT_REPORT_H
