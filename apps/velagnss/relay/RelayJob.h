// From a source to the destinations: a run, and what it makes of the stream.
#ifndef VELAGNSS_APPS_RELAY_JOB_H
#define VELAGNSS_APPS_RELAY_JOB_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/velagnss/input/StreamJob.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/relay/Destinations.h"

namespace Host {

struct S_RelayOptions {
  S_RunOptions run;
  C_MessageFilter filter;
  bool namesInput = false;  // in lines of JSON
};

class C_RelayJob : public C_StreamJob {
 public:
  C_RelayJob(const S_RelayOptions& options, C_Destinations& destinations);

  void OnSource(const C_ByteSource& source) override { SetIdentity(source.Identity()); }
  void BeginInput(const std::string& name) override;
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;
  bool WantsMore() const override { return m_run.WantsMore() && m_destinations.WantsMore(); }
  bool WantsMoreInputs() const override { return m_destinations.WantsMore(); }
  void BeforeWait() override;
  int WakeDescriptor() const override { return m_destinations.WakeDescriptor(); }
  void OnQuiet() override;
  void OnLink(const S_LinkChange& change) override { m_run.OnLink(change); }
  void Finish() override;

  const C_RecordRun& Run() const { return m_run; }

 protected:
  void SetIdentity(std::string identity) { m_identity = std::move(identity); }

 private:
  using t_Makers = std::map<eUnits, std::unique_ptr<C_UnitMaker>>;

  static t_Makers MakersFor(const C_Destinations& destinations, const S_RelayOptions& options);
  static std::vector<C_RecordConsumer*> ConsumersOf(const t_Makers& makers);

  // Hands on what there is, if it is at least `size` bytes.
  void HandOn(std::size_t size = 1);

  C_Destinations& m_destinations;
  t_Makers m_makers;
  C_RecordRun m_run;
  std::string m_identity;  // of the input
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RELAY_JOB_H
