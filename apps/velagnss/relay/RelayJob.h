// Between the sources and a run: takes what the run makes to the destinations.
#ifndef VELAGNSS_APPS_RELAY_JOB_H
#define VELAGNSS_APPS_RELAY_JOB_H

#include "apps/velagnss/input/StreamJob.h"
#include "apps/velagnss/relay/Destinations.h"

namespace Host {

class C_RelayJob : public C_StreamJob {
 public:
  C_RelayJob(C_StreamJob& run, C_Destinations& destinations) : m_run(run), m_destinations(destinations) {}

  void BeginInput(const std::string& name) override { m_run.BeginInput(name); }
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override { m_run.EndInput(); }
  bool WantsMore() const override { return m_run.WantsMore() && m_destinations.WantsMore(); }
  void BeforeWait() override;
  void OnQuiet() override;
  void OnLink(const S_LinkChange& change) override { m_run.OnLink(change); }
  void Finish() override;

 private:
  C_StreamJob& m_run;
  C_Destinations& m_destinations;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RELAY_JOB_H
