#include "apps/velagnss/relay/Destinations.h"

#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/sinks/database/DatabaseSink.h"
#include "apps/velagnss/sinks/live/Casters.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using t_Clock = C_SinkThread::t_Clock;

constexpr auto kFinishAfterSignal = 2s;
constexpr auto kFinishWithoutProgress = 30s;

// Without a password.
std::string Shown(const std::string& where) {
  if (!IsAddress(where)) return where == "-" ? "standard output" : where;
  S_Address address;
  ReadAddress(where, address);
  return address.Shown();
}

// Whether `text` begins as a format does: a misspelled one must not become the name of a file.
bool HasWordAndColon(std::string_view text) {
  const std::size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-");
  return end != std::string_view::npos && end > 0 && text[end] == ':';
}

}  // namespace

C_Destinations::C_Destinations() = default;

// No call of the thread may find its sink gone.
C_Destinations::~C_Destinations() {
  if (m_thread != nullptr) m_thread->Stop();
}

std::string C_Destinations::Read(const std::vector<std::string>& texts, const S_RelaySource& source) {
  m_canWait = !source.isLive;
  m_isInOrder = source.isInOrder;
  m_credentials = source.credentials;
  for (const std::string& text : texts)
    if (std::string error = ReadOne(text, source); !error.empty()) return "--to " + error;
  return {};
}

std::string C_Destinations::ReadOne(const std::string& text, const S_RelaySource& source) {
  const std::size_t colon = text.find(':');
  std::optional<eUnits> units = FindUnits(std::string_view(text).substr(0, colon));
  const std::string where = !units ? text : colon == std::string::npos ? "-" : text.substr(colon + 1);
  if (where.empty()) return fmt::format("'{}' names no destination", text);
  if (!units && !IsAddress(where) && HasWordAndColon(where))
    return fmt::format("'{}' begins with an unknown format; known: {}; a file of this name is written ./{}", where,
                       UnitNames(), where);
  if (std::string error = CheckDestination(where); !error.empty()) return error;
  if (units == eUnits::Rows && (where == "-" || IsAddress(where)))
    return fmt::format("'{}' names no database file; write sqlite:FILE", text);
  const bool canBeRaw = source.isOne && !source.isSelected;
  const eRawUse rawUse = RawUseOf(where);
  if (units == eUnits::Raw && rawUse == eRawUse::Never)
    return fmt::format("{}: takes messages, which the raw stream does not have; write frames or json", Shown(where));
  if (units == eUnits::Raw && !canBeRaw)
    return fmt::format("raw: {}; write frames instead",
                       source.isOne ? "copies the source as it is, and so takes no filter" : "is for a single source");
  if (std::ranges::find(m_destinations, where, &S_Destination::where) != m_destinations.end())
    return fmt::format("{} is given twice", Shown(where));
  if (!units) units = canBeRaw && rawUse == eRawUse::Usual ? eUnits::Raw : eUnits::Frames;
  m_destinations.push_back({*units, where, nullptr});
  return {};
}

std::vector<std::string> C_Destinations::Files() const {
  std::vector<std::string> files;
  for (const S_Destination& destination : m_destinations)
    if (!IsAddress(destination.where)) files.push_back(destination.where);
  return files;
}

bool C_Destinations::Open() {
  m_thread = std::make_unique<C_SinkThread>();
  m_casters = std::make_unique<C_Casters>(*m_thread);
  for (S_Destination& destination : m_destinations) {
    destination.sink =
        destination.units == eUnits::Rows
            ? MakeDatabaseSink(destination.where, m_canWait, *m_thread)
            : MakeSink(destination.where, {m_canWait, *m_thread, *m_casters, m_credentials, m_isInOrder});
    if (!destination.sink->Open()) return false;
  }
  return true;
}

bool C_Destinations::WaitForClients(std::uint64_t count) {
  const auto haveCome = [this, count] {
    std::uint64_t come = 0;
    for (const S_SinkTotals& totals : Totals()) come += totals.accepted;
    return come >= count;
  };
  return m_thread->WaitFor(haveCome, t_Clock::time_point::max(), 0);
}

std::set<eUnits> C_Destinations::Units() const {
  std::set<eUnits> units;
  for (const S_Destination& destination : m_destinations) units.insert(destination.units);
  return units;
}

void C_Destinations::Put(eUnits units, const t_Piece& piece) {
  for (const S_Destination& destination : m_destinations)
    if (destination.units == units) destination.sink->Put(piece);
}

void C_Destinations::Settle() {
  const auto hasRoom = [this] {
    return std::none_of(m_destinations.begin(), m_destinations.end(),
                        [](const S_Destination& d) { return d.sink->IsFull() && !d.sink->HasEnded(); });
  };
  if (!hasRoom()) m_thread->WaitFor(hasRoom, t_Clock::time_point::max(), 0);
  m_thread->ShowMessages();
}

int C_Destinations::WakeDescriptor() const { return m_thread->Descriptor(); }

bool C_Destinations::WantsMore() const {
  return std::any_of(m_destinations.begin(), m_destinations.end(),
                     [](const S_Destination& destination) { return !destination.sink->HasEnded(); });
}

bool C_Destinations::AreFinished() const {
  return std::all_of(m_destinations.begin(), m_destinations.end(),
                     [](const S_Destination& d) { return d.sink->IsFinished() || d.sink->HasEnded(); });
}

std::vector<S_SinkTotals> C_Destinations::Totals() const {
  std::vector<S_SinkTotals> totals;
  for (const S_Destination& destination : m_destinations) totals.push_back(destination.sink->Totals());
  return totals;
}

std::uint64_t C_Destinations::BytesSent() const {
  std::uint64_t bytes = 0;
  for (const S_SinkTotals& totals : Totals()) bytes += totals.bytes;
  return bytes;
}

void C_Destinations::Finish() {
  for (const S_Destination& destination : m_destinations) destination.sink->Finish();
  const auto areFinished = [this] { return AreFinished(); };
  for (std::uint64_t before = BytesSent(); !m_isComplete; before = BytesSent()) {
    const int signal = SignalReceived();
    const bool isSignaled = signal != 0;
    m_isComplete = m_thread->WaitFor(
        areFinished, t_Clock::now() + (isSignaled ? kFinishAfterSignal : kFinishWithoutProgress), signal);
    const bool mayGoOn = SignalReceived() == 0 ? BytesSent() > before : !isSignaled;
    if (!mayGoOn) break;
  }
  m_thread->ShowMessages();
  m_thread->Stop();
  ReportTotals();
}

void C_Destinations::ReportTotals() const {
  for (const S_Destination& destination : m_destinations) {
    const S_SinkTotals totals = destination.sink->Totals();
    ReportDetail(fmt::format("{}: {}, {} and {} sent, {} dropped, {} unsent", destination.sink->Name(),
                             Counted(totals.accepted, "connection"), Counted(totals.units, "unit"),
                             Counted(totals.bytes, "byte"), Counted(totals.dropped, "unit"), totals.waiting));
  }
}

eExitCode C_Destinations::Judge() const {
  eExitCode code = eExitOk;
  for (const S_Destination& destination : m_destinations) {
    const bool isUnsent = m_canWait && SignalReceived() == 0 && !destination.sink->IsFinished();
    if (isUnsent) ReportError(destination.sink->Name() + ": not everything could be sent");
    if (isUnsent || destination.sink->HasFailed()) code = eExitOutput;
  }
  return code;
}

}  // namespace Host
