#include "apps/velagnss/monitor/Sources.h"

#include <algorithm>
#include <utility>

namespace Host {

// Each input gets a run of its own, which ends with it: the models of many files stay, not their queues.
class C_Sources::C_Job : public C_StreamJob {
 public:
  explicit C_Job(C_Sources& sources) : m_sources(sources) {}

  void BeginInput(const std::string& name) override {
    const C_Lock lock(m_sources, C_Lock::eFor::Feeding);
    m_noFrame = std::make_unique<C_NoFrameWarning>(name);
    m_run = std::make_unique<C_RecordRun>(m_sources.m_options,
                                          std::vector<C_RecordConsumer*>{&m_sources.Begin(name), m_noFrame.get()});
    m_run->BeginInput(name);
  }

  void Feed(const S_Chunk& chunk) override {
    Do([&] { m_run->Feed(chunk); });
  }
  void OnQuiet() override {
    Do([&] { m_run->OnQuiet(); });
  }
  void OnLink(const S_LinkChange& change) override {
    Do([&] { m_run->OnLink(change); });
  }

  void EndInput() override {
    Do([this] {
      m_run->EndInput();
      m_run->Finish();
    });
    const bool isNothingFound = m_run->BytesRead() > 0 && m_run->FramesFound() == 0;
    m_sources.m_verdict = std::max({m_sources.m_verdict, m_run->Judge(), isNothingFound ? eExitData : eExitOk});
    m_run.reset();
  }

 private:
  template <class Call>
  void Do(const Call& call) {
    {
      const C_Lock lock(m_sources, C_Lock::eFor::Feeding);
      call();
    }
    m_sources.m_hasNews();
  }

  C_Sources& m_sources;
  std::unique_ptr<C_NoFrameWarning> m_noFrame;
  std::unique_ptr<C_RecordRun> m_run;
};

C_Sources::C_Lock::C_Lock(C_Sources& sources, eFor purpose) : m_sources(sources), m_looks(purpose == eFor::Looking) {
  if (m_looks) ++m_sources.m_lookers;
  m_lock = std::unique_lock(m_sources.m_mutex);
  if (!m_looks) m_sources.m_hasLooked.wait(m_lock, [&] { return m_sources.m_lookers == 0; });
}

C_Sources::C_Lock::~C_Lock() {
  if (!m_looks) return;
  --m_sources.m_lookers;
  m_sources.m_hasLooked.notify_all();
}

C_Sources::C_Sources(S_RunOptions options, std::function<void()> hasNews)
    : m_options(std::move(options)), m_hasNews(std::move(hasNews)) {}

C_Sources::~C_Sources() = default;

C_StreamJob& C_Sources::NextJob() { return m_jobs.emplace_back(*this); }

C_SourceModel& C_Sources::Begin(const std::string& name) {
  C_SourceModel& model = m_models.emplace_back(std::piecewise_construct, std::tuple(name), std::tuple(name)).second;
  model.SetFilter(m_filter);
  return model;
}

std::optional<std::string> C_Sources::SetFilter(std::string_view text) {
  const C_Lock lock(*this, C_Lock::eFor::Looking);
  for (auto& [name, model] : m_models)
    if (std::optional<std::string> error = model.SetFilter(text)) return error;
  m_filter = text;
  return std::nullopt;
}

std::vector<S_Tab> C_Sources::Tabs() {
  const C_Lock lock(*this, C_Lock::eFor::Looking);
  std::vector<S_Tab> tabs;
  for (const auto& [name, model] : m_models) tabs.push_back({name, model.State()});
  return tabs;
}

std::optional<S_SourceView> C_Sources::View(std::size_t number) {
  const C_Lock lock(*this, C_Lock::eFor::Looking);
  if (number >= m_models.size()) return std::nullopt;
  return m_models[number].second.Snapshot();
}

}  // namespace Host
