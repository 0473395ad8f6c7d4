#include "apps/velagnss/relay/RelayJob.h"

#include <algorithm>

namespace Host {
namespace {

// Large reads of a file become pieces of about this size, so that a queue can drop a little of it.
constexpr std::size_t kPieceSize = 1 << 13;

}  // namespace

C_RelayJob::C_RelayJob(const S_RelayOptions& options, C_Destinations& destinations)
    : m_destinations(destinations),
      m_makers(MakersFor(destinations, options)),
      m_run(options.run, ConsumersOf(m_makers)) {}

C_RelayJob::t_Makers C_RelayJob::MakersFor(const C_Destinations& destinations, const S_RelayOptions& options) {
  t_Makers makers;
  for (const eUnits units : destinations.Units()) makers[units] = MakeUnits(units, options.filter, options.namesInput);
  return makers;
}

std::vector<C_RecordConsumer*> C_RelayJob::ConsumersOf(const t_Makers& makers) {
  std::vector<C_RecordConsumer*> consumers;
  for (const auto& [units, maker] : makers) consumers.push_back(&maker->Consumer());
  return consumers;
}

void C_RelayJob::BeginInput(const std::string& name) {
  const auto input = std::make_shared<const S_InputOrigin>(S_InputOrigin{name, m_identity});
  for (const auto& [units, maker] : m_makers) maker->SetInput(input);
  m_run.BeginInput(name);
}

void C_RelayJob::Feed(const S_Chunk& chunk) {
  for (std::span<const unsigned char> rest = chunk.bytes; !rest.empty() && WantsMore();) {
    S_Chunk part = chunk;
    part.bytes = rest.first(std::min(rest.size(), kPieceSize));
    m_run.Feed(part);
    HandOn(kPieceSize);
    rest = rest.subspan(part.bytes.size());
  }
}

void C_RelayJob::EndInput() {
  m_run.EndInput();
  HandOn();
}

void C_RelayJob::BeforeWait() {
  m_run.BeforeWait();
  HandOn();
}

void C_RelayJob::OnQuiet() {
  m_run.OnQuiet();
  HandOn();
}

void C_RelayJob::Finish() {
  m_run.Finish();
  HandOn();
}

void C_RelayJob::HandOn(std::size_t size) {
  for (const auto& [units, maker] : m_makers) {
    const t_Piece piece = maker->Size() >= size ? maker->Take() : nullptr;
    if (piece != nullptr) m_destinations.Put(units, piece);
  }
  m_destinations.Settle();
}

}  // namespace Host
